// Replays a fuzz target's corpus without libFuzzer, after the empty input. Each file is named
// before it is run: the last name is that of an input that fails.
//   NAME_fuzz CORPUS    CORPUS: a directory or one file
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <set>
#include <vector>

#include "fuzz.h"

int main(int argc, char** argv) {
  if (argc != 2 || !std::filesystem::exists(argv[1])) {
    std::fprintf(stderr, "usage: %s CORPUS\n", argv[0]);
    return 2;
  }
  std::set<std::filesystem::path> files;
  if (std::filesystem::is_directory(argv[1])) {
    const std::filesystem::directory_iterator entries(argv[1]);
    files.insert(begin(entries), end(entries));
  } else {
    files.insert(argv[1]);
  }
  LLVMFuzzerTestOneInput(nullptr, 0);
  for (const auto& file : files) {
    std::puts(file.c_str());
    std::fflush(stdout);
    std::ifstream in(file, std::ios::binary);
    const std::vector<char> bytes{std::istreambuf_iterator<char>(in), {}};
    LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size());
  }
  return 0;
}
