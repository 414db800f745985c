// What fuzz targets share: the entry point's declaration, a check that stops the run, and a reader
// that takes typed values off the input, zeros once it is used up.
#pragma once

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <source_location>
#include <span>
#include <string_view>
#include <type_traits>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace fuzz {

inline void check(bool holds, std::source_location place = std::source_location::current()) {
  if (holds) return;
  std::fprintf(stderr, "%s:%u: check failed\n", place.file_name(),
               static_cast<unsigned>(place.line()));
  std::abort();
}

class Input {
 public:
  Input(const std::uint8_t* data, std::size_t size) : rest_(data, size) {}

  template <class T>
  T take() {
    static_assert(std::is_trivially_copyable_v<T>);
    T value{};
    const std::span bytes = take_bytes(sizeof value);
    if (!bytes.empty()) std::memcpy(&value, bytes.data(), bytes.size());
    return value;
  }

  // A value of 0 to `most`.
  unsigned take_upto(unsigned most) { return take<std::uint16_t>() % (most + 1); }

  std::span<const std::uint8_t> take_bytes(std::size_t count) {
    const std::span bytes = rest_.first(count < rest_.size() ? count : rest_.size());
    rest_ = rest_.subspan(bytes.size());
    return bytes;
  }

  std::span<const std::uint8_t> rest() const { return rest_; }
  std::string_view text() const {
    return {reinterpret_cast<const char*>(rest_.data()), rest_.size()};
  }

 private:
  std::span<const std::uint8_t> rest_;
};

}  // namespace fuzz
