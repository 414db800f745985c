// What differs between the processors that the library is built for. Every other file follows from
// these few types and sizes, and asks for no processor itself.
#pragma once

#include <cstddef>
#include <cstdint>

namespace comnlib {

// Bytes of a pointer. Records with links, and the blocks of pools, are laid out in such words.
inline constexpr std::size_t kWordSize = sizeof(void*);
using Word = std::uintptr_t;

// A digit of the exact kernel, as long as the processor's multiplication and division take at once,
// the type that holds the product of two, and the suffix of the instructions on one.
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
