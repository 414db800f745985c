// Loading of character sets into a context's list of descriptors. The caller holds the context's
// mutex.
#pragma once

#include "comnlib/locale.h"
#include "intl.h"
#include "runtime/hostmemory.h"

extern "C" {

// Points the cache entry's locchardesc at the descriptor of the character set that it names, loaded
// on first use. On failure locchardesc is null and the context's list as it was.
CS_RETCODE comn__intl_load_charset(CS_CONTEXT* ctx, CsOid oid, CsLocCache* cache_entry,
                                   CS_CHAR* errbuf, CS_INT errlen);

// Reads charset.loc into new attributes of the entry's descriptor, which keeps them on failure too.
CS_RETCODE comn__get_charset(CS_CONTEXT* ctx, CsLocCache* cache_entry, CS_CHAR* errbuf,
                             CS_INT errlen);

// Read the image of a class 1 or class 2 character set of `image_size` bytes, whose first
// "definition" entry has just been taken from the file. The maps are the attributes' own.
CS_RETCODE comn__load_charset1(CS_CONTEXT* ctx, char_attrib* attrib, CS_LONG image_size,
                               INTL_HANDLE handle);
CS_RETCODE comn__load_charset2(CS_CONTEXT* ctx, char_attrib* attrib, CS_LONG image_size,
                               INTL_HANDLE handle);

// Reads `size` bytes of image from hexadecimal "definition" entries. With `need_entry` the first of
// them is yet to be taken. The text may break between entries anywhere, but ends with the image.
CS_RETCODE comn__get_image(CS_CONTEXT* ctx, CS_BYTE* dst, CS_INT size, INTL_HANDLE handle,
                           CS_BOOL need_entry);

// Frees a descriptor with its attributes, their maps, and its conversion configuration.
CS_RETCODE comn__chardesc_drop(CsCharDesc* desc);
}

template <>
inline void comnlib::DropRecord::operator()(CsCharDesc* desc) const {
  static_cast<void>(comn__chardesc_drop(desc));
}
