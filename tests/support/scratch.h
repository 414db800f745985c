// Scratch files and environment variables that last as long as a test.
#pragma once

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <optional>
#include <sstream>
#include <string>
#include <string_view>

namespace scratch {

inline std::string read(const std::filesystem::path& file) {
  std::ostringstream text;
  text << std::ifstream(file, std::ios::binary).rdbuf();
  return text.str();
}

// An empty directory of its own below the system's temporary one.
class Directory {
 public:
  Directory() {
    std::string name = (std::filesystem::temp_directory_path() / "comnlib-XXXXXX").string();
    path_ = mkdtemp(name.data());
  }
  ~Directory() { std::filesystem::remove_all(path_); }
  Directory(const Directory&) = delete;
  Directory& operator=(const Directory&) = delete;

  const std::filesystem::path& path() const { return path_; }

  // Writes a file below the directory and returns its path. One of that name goes first: file
  // systems write what replaces a cut file to the disk at once.
  std::string write(const std::filesystem::path& name, std::string_view text) const {
    const auto file = path_ / name;
    std::filesystem::create_directories(file.parent_path());
    std::filesystem::remove(file);
    std::ofstream(file, std::ios::binary) << text;
    return file.string();
  }

 private:
  std::filesystem::path path_;
};

// One that is the process's working directory too.
class WorkingDirectory : public Directory {
 public:
  WorkingDirectory() { std::filesystem::current_path(path()); }
  ~WorkingDirectory() { std::filesystem::current_path(before_); }

 private:
  std::filesystem::path before_ = std::filesystem::current_path();
};

// Sets or, with null, unsets an environment variable and restores it at the end.
class Variable {
 public:
  Variable(const char* name, const char* value) : name_(name) {
    if (const char* before = std::getenv(name)) before_ = before;
    set(value);
  }
  ~Variable() { set(before_ ? before_->c_str() : nullptr); }
  Variable(const Variable&) = delete;
  Variable& operator=(const Variable&) = delete;

  void set(const char* value) const {
    if (value == nullptr) {
      unsetenv(name_.c_str());
    } else {
      setenv(name_.c_str(), value, 1);
    }
  }

 private:
  std::string name_;
  std::optional<std::string> before_;
};

}  // namespace scratch
