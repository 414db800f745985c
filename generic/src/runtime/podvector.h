// A growing array of plain records in the host's memory. The readers of files collect in such
// arrays.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <span>
#include <string_view>
#include <type_traits>

#include "runtime/hostmemory.h"

namespace comnlib {

// Zero-filled memory is an empty array, so that records which hold arrays are made by zero-filling.
// Freed by clear().
template <class T>
struct PodVector {
  static_assert(std::is_trivially_copyable_v<T>);
  T* items;
  std::size_t count;
  std::size_t capacity;

  // Makes room for `more` items; false, with all as it was, when memory is out.
  bool reserve(std::size_t more) { return more <= capacity - count || grow(more); }
  bool push(const T& item) {
    if (!reserve(1)) return false;
    items[count++] = item;
    return true;
  }
  void clear() {
    release(items);
    *this = {};
  }
  std::span<const T> view() const { return {items, count}; }

 private:
  [[gnu::noinline]] bool grow(std::size_t more) {
    constexpr std::size_t kFirst = std::max<std::size_t>(256 / sizeof(T), 1);
    constexpr std::size_t kMost = PTRDIFF_MAX / sizeof(T);
    if (more > kMost - count) return false;
    const std::size_t wanted = std::max({count + more, std::min(2 * capacity, kMost), kFirst});
    const std::size_t size = wanted * sizeof(T);
    void* moved = items == nullptr ? comn_malloc(size) : comn_realloc(items, size);
    if (moved == nullptr) return false;
    items = static_cast<T*>(moved);
    capacity = wanted;
    return true;
  }
};

// Texts one after the other, each with a NUL after it, and known by the offset at which they begin.
struct TextPool : PodVector<CS_CHAR> {
  bool keep(std::string_view text, std::size_t& offset) {
    if (!reserve(text.size() + 1)) return false;
    offset = count;
    text.copy(items + count, text.size());
    items[count + text.size()] = '\0';
    count += text.size() + 1;
    return true;
  }
  const CS_CHAR* at(std::size_t offset) const { return items + offset; }
};

// An array that is freed with the record that holds it.
template <class Vector>
struct Owned : Vector {
  Owned() : Vector{} {}
  ~Owned() { this->clear(); }
  Owned(const Owned&) = delete;
  Owned& operator=(const Owned&) = delete;
};

}  // namespace comnlib
