// Replays a fuzz target's corpus without libFuzzer, after the empty input. Each file is named
// before it is run: the last name is that of an input that fails. Directories and files are read by
// the C library, whose calls MemorySanitizer knows.
//   NAME_fuzz CORPUS    CORPUS: a directory or one file
#include <dirent.h>
#include <sys/stat.h>

#include <cstdio>
#include <string>
#include <vector>

#include "fuzz.h"

namespace {

void replay(const std::string& file) {
  std::puts(file.c_str());
  std::fflush(stdout);
  std::vector<std::uint8_t> bytes;
  if (std::FILE* in = std::fopen(file.c_str(), "rb")) {
    for (int byte = 0; (byte = std::getc(in)) != EOF;)
      bytes.push_back(static_cast<std::uint8_t>(byte));
    std::fclose(in);
  }
  bytes.shrink_to_fit();  // so that a sanitizer sees any byte read after them
  LLVMFuzzerTestOneInput(bytes.data(), bytes.size());
}

int is_input(const dirent* entry) {
  return entry->d_name[0] != '.';
}

}  // namespace

int main(int argc, char** argv) {
  struct stat facts {};
  if (argc != 2 || stat(argv[1], &facts) != 0) {
    std::fprintf(stderr, "usage: %s CORPUS\n", argv[0]);
    return 2;
  }
  LLVMFuzzerTestOneInput(nullptr, 0);
  if (!S_ISDIR(facts.st_mode)) {
    replay(argv[1]);
    return 0;
  }
  dirent** entries = nullptr;
  const int count = scandir(argv[1], &entries, is_input, alphasort);
  for (int i = 0; i < count; ++i) {
    replay(std::string(argv[1]) + '/' + entries[i]->d_name);
    std::free(entries[i]);
  }
  std::free(entries);
  return count > 0 ? 0 : 1;
}
