// What differs between the processors that the library is built for. All other files use these few
// types and sizes and never ask which processor it is.
#pragma once

#include <cstddef>
#include <cstdint>

namespace comnlib {

// Bytes of a pointer. Records with links, and the blocks of pools, are laid out in such words.
inline constexpr std::size_t kWordSize = sizeof(void*);
using Word = std::uintptr_t;

// A limb, the digit of the exact kernel, is as long as the processor multiplies and divides at
// once. Wide holds the product of two; the suffix is that of the instructions on one limb.
#if defined(__x86_64__)
using Limb = std::uint64_t;
__extension__ using Wide = unsigned __int128;
#define COMNLIB_LIMB_SUFFIX "q"
#elif defined(__i386__)
using Limb = std::uint32_t;
using Wide = std::uint64_t;
#define COMNLIB_LIMB_SUFFIX "l"
#else
#error "the library is built for i386 or x86_64"
#endif
static_assert(sizeof(Limb) == kWordSize && sizeof(Wide) == 2 * sizeof(Limb));

}  // namespace comnlib
