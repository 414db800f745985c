// A growing array of plain records from the host's allocator: what the readers collect in.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <span>
#include <string_view>
#include <type_traits>

#include "comnlib/memory.h"

namespace comnlib {

// Plain memory itself, so that records which hold one are made by zero-filling. Freed by clear().
template <class T>
struct PodVector {
  static_assert(std::is_trivially_copyable_v<T>);
  T* items;
  std::size_t count;
  std::size_t capacity;

  // Makes room for `more` items; false when memory is out.
  bool reserve(std::size_t more) {
    if (more <= capacity - count) return true;
    const std::size_t wanted = std::max(count + more, capacity * 2);
    auto* moved = static_cast<T*>(comn_realloc(items, wanted * sizeof(T)));
    if (moved == nullptr) return false;
    items = moved;
    capacity = wanted;
    return true;
  }
  bool push(const T& item) {
    if (!reserve(1)) return false;
    items[count++] = item;
    return true;
  }
  void clear() {
    comn_free(items);
    *this = {};
  }
  std::span<const T> view() const { return {items, count}; }
};

// Texts one behind the other, each with its NUL, named by where they begin.
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

}  // namespace comnlib
