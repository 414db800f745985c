// A companion library for one fuzz target: every file that is opened holds the input.
#pragma once

#include <cstring>
#include <new>
#include <span>

#include "comnlib/memory.h"
#include "fuzz.h"
#include "intl.h"
#include "reader.h"

namespace fuzz {

inline std::span<const std::uint8_t> file;
inline int open_files = 0;

}  // namespace fuzz

CS_INT intl_home(CS_CHAR* buffer, CS_INT buflen) {
  fuzz::check(buflen > 1);
  std::memcpy(buffer, "/", 2);
  return 1;
}

CS_INT intl_open(const CS_CHAR*, INTL_HANDLE* handle) {
  using namespace comnlib::companion;
  auto* block = static_cast<char*>(comn_malloc(sizeof(SectionedText) + fuzz::file.size() + 1));
  char* text = block + sizeof(SectionedText);
  if (!fuzz::file.empty()) std::memcpy(text, fuzz::file.data(), fuzz::file.size());
  *handle = new (block) SectionedText(text, fuzz::file.size());
  ++fuzz::open_files;
  return 0;
}

CS_INT intl_close(INTL_HANDLE handle) {
  comnlib::companion::close_sectioned(static_cast<comnlib::companion::SectionedText*>(handle));
  --fuzz::open_files;
  return 0;
}
