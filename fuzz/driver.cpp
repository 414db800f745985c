// Runs a fuzz target without libFuzzer: every file of a corpus, then mutations of them. The
// sequence of mutations is the same in every run; only where it ends depends on the machine's
// speed. When the target fails, the input is printed as hexadecimal text.
//   NAME_fuzz CORPUS [SECONDS]    CORPUS: a directory or one file; 0 seconds: no mutations
#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <vector>

#include <unistd.h>

#include "fuzz.h"

// Present in sanitizer builds only.
extern "C" __attribute__((weak)) void __sanitizer_set_death_callback(void (*callback)(void));

namespace {

using Bytes = std::vector<std::uint8_t>;
using Clock = std::chrono::steady_clock;

constexpr std::size_t kLongestInput = 4096;
constexpr int kMostMutations = 1'000'000;

const Bytes* current = nullptr;
// The library closes standard error before it stops the process.
int report = STDERR_FILENO;

// Only what a signal handler may call.
void print_input() {
  constexpr char kDigits[] = "0123456789abcdef";
  constexpr char kHead[] = "\ninput (hex): ";
  if (current == nullptr) return;
  bool written = write(report, kHead, sizeof kHead - 1) > 0;
  for (const std::uint8_t byte : *current) {
    const char digits[] = {kDigits[byte >> 4], kDigits[byte & 15]};
    written = written && write(report, digits, sizeof digits) > 0;
  }
  written = written && write(report, "\n", 1) > 0;
  current = nullptr;
}

void on_signal(int signal_number) {
  print_input();
  std::signal(signal_number, SIG_DFL);
  std::raise(signal_number);
}

void run(const Bytes& input) {
  current = &input;
  LLVMFuzzerTestOneInput(input.data(), input.size());
  current = nullptr;
}

Bytes read_file(const std::filesystem::path& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

// The corpus in the order of its file names; the empty input always belongs to it.
std::vector<Bytes> read_corpus(const std::filesystem::path& path) {
  std::vector<std::filesystem::path> files;
  if (std::filesystem::is_directory(path)) {
    for (const auto& entry : std::filesystem::directory_iterator(path)) {
      if (entry.is_regular_file()) files.push_back(entry.path());
    }
    std::sort(files.begin(), files.end());
  } else if (std::filesystem::exists(path)) {
    files.push_back(path);
  }
  std::vector<Bytes> inputs{Bytes{}};
  for (const auto& file : files) inputs.push_back(read_file(file));
  return inputs;
}

class Mutator {
 public:
  explicit Mutator(const std::vector<Bytes>& corpus) : corpus_(corpus) {}

  // Every other input goes on from the one before, so that changes add up.
  const Bytes& next() {
    if (below(2) == 0) input_ = pick_input();
    for (std::size_t steps = 1 + below(6); steps != 0; --steps) mutate(input_);
    if (input_.size() > kLongestInput) input_.resize(kLongestInput);
    return input_;
  }

 private:
  std::size_t below(std::size_t bound) { return random_() % bound; }

  const Bytes& pick_input() { return corpus_[below(corpus_.size())]; }

  std::uint8_t pick_byte() {
    constexpr std::uint8_t kTelling[] = {0x00, 0x01, 0x7F, 0x80, 0xFF, ' ', '+', '-', '.', ',',
                                         '$',  '\\', '\'', '"',  '\n', '0', '5', '9', 'e', '['};
    return below(2) == 0 ? kTelling[below(std::size(kTelling))]
                         : static_cast<std::uint8_t>(below(256));
  }

  void mutate(Bytes& input) {
    const auto at = static_cast<Bytes::difference_type>(below(input.size() + 1));
    const std::size_t behind = input.size() - static_cast<std::size_t>(at);
    const std::size_t run_length = below(std::min<std::size_t>(behind, 16) + 1);
    const auto first = input.begin() + at;
    const auto last = first + static_cast<Bytes::difference_type>(run_length);
    switch (below(6)) {
      case 0:
        if (behind != 0) *first ^= static_cast<std::uint8_t>(1U << below(8));
        break;
      case 1:
        if (behind != 0) *first = pick_byte();
        break;
      case 2:
        input.insert(first, pick_byte());
        break;
      case 3:
        input.erase(first, last);
        break;
      case 4: {
        const Bytes piece(first, last);
        input.insert(first, piece.begin(), piece.end());
        break;
      }
      default: {
        const Bytes& other = pick_input();
        const auto tail = static_cast<Bytes::difference_type>(below(other.size() + 1));
        input.erase(first, input.end());
        input.insert(input.end(), other.begin() + tail, other.end());
      }
    }
  }

  const std::vector<Bytes>& corpus_;
  Bytes input_;
  std::minstd_rand random_{20260101};
};

}  // namespace

int main(int argc, char** argv) {
  if (argc < 2) {
    std::fprintf(stderr, "usage: %s CORPUS [SECONDS]\n", argv[0]);
    return 2;
  }
  const std::chrono::duration<double> budget(argc > 2 ? std::atof(argv[2]) : 2.0);
  if (const int copy = dup(STDERR_FILENO); copy >= 0) report = copy;
  if (__sanitizer_set_death_callback != nullptr) {
    __sanitizer_set_death_callback(print_input);
  } else {
    std::signal(SIGSEGV, on_signal);
  }
  for (const int signal_number : {SIGABRT, SIGILL, SIGTRAP, SIGFPE}) {
    std::signal(signal_number, on_signal);
  }

  const std::vector<Bytes> corpus = read_corpus(argv[1]);
  for (const Bytes& input : corpus) run(input);

  Mutator mutator(corpus);
  const auto end = Clock::now() + budget;
  int count = 0;
  for (; count < kMostMutations && Clock::now() < end; ++count) run(mutator.next());
  std::printf("%zu inputs of the corpus, %d mutations\n", corpus.size(), count);
  return 0;
}
