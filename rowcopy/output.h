// The files that a run writes. A file appears under its name, and replaces an earlier one, only
// when it is whole: until then it has no name, or a temporary one, which only SIGKILL can leave
// there.
#pragma once

#include <memory>
#include <span>
#include <string>
#include <vector>

namespace rowcopy {

class Output {
 public:
  // "-" is standard output. A name that ends in ".gz" asks for a packed file. Failures are Fatal.
  explicit Output(const std::string& path);
  ~Output();
  Output(const Output&) = delete;
  Output& operator=(const Output&) = delete;

  void write(std::span<const char> bytes);
  // Everything has reached the disk when it returns.
  void flush_to_disk();

 private:
  friend void publish(std::span<Output* const> outputs);
  class Packer;

  void open_unnamed();
  void open_named();
  void write_raw(std::span<const char> bytes);
  void give_name();
  [[noreturn]] void fail(const char* action) const;

  std::string path_;    // links followed
  std::string hidden_;  // the name of an unfinished file; empty: it has none
  int descriptor_ = -1;
  bool replaces_ = false;  // gets its name in the end, unlike standard output and devices
  std::unique_ptr<Packer> packer_;
};

// Gives finished outputs their names.
void publish(std::span<Output* const> outputs);

}  // namespace rowcopy
