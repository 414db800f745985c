// How both readers open files. A home may hold anything, by mistake or by malice: a FIFO would
// block its reader for ever, and a device may never end.
#pragma once

#include <cstddef>

#include "intl.h"

namespace comnlib::companion {

// The most bytes that a file may have.
inline constexpr std::size_t kMaxFile = std::size_t{256} << 20;

// Opens a regular file for reading, without waiting for anything. Stores its size, which is 0 for
// files that are made as they are read. A negative status on failure.
int open_file(const char* path, std::size_t& size);

// Reads up to `room` bytes, fewer only at the end of the file. A negative status on failure.
CS_INT read_up_to(int file, void* to, std::size_t room);

// 0 when a file that has been read to its end was read whole, else a negative status.
CS_INT check_end(int file);

}  // namespace comnlib::companion
