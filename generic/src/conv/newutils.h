// Finishing of character and binary destinations, shared by all conversion families. Internal to
// the library, with C linkage so that the padding rules can be tested by themselves.
#pragma once

#include "comnlib/convert.h"

extern "C" {

// Finishes a character destination after `length` bytes of text have been produced; *resultlen
// already counts the bytes written. Fills with NULs or blanks or terminates, as destfmt->format
// asks, and adds what it writes to *resultlen. CS_SUCCEED; CS_CVT_FORMAT when both paddings are
// asked for; CS_CVT_OVERFLOW when the text, with its NUL where one is asked for, is longer than
// maxlength (the last byte is then made NUL where one is asked for). A negative length or maxlength
// stops the process.
CS_RETCODE comn__padchar(CS_INT length, const CS_DATAFMT* destfmt, CS_VOID* dest,
                         CS_INT* resultlen);

// Finishes a binary destination of `length` bytes: with the NUL-padding bit the rest up to
// maxlength becomes zero and is counted. Always CS_SUCCEED. Negative lengths stop the process.
CS_RETCODE comn__padbin(CS_INT length, const CS_DATAFMT* destfmt, CS_VOID* dest, CS_INT* resultlen);

// The two-byte-unit counterpart of comn__padchar: blanks and terminators are whole UTF-16 code
// units in host byte order. Blanks leave an odd byte at the end of the buffer unchanged; NULs fill
// it.
CS_RETCODE comn__padunichar(CS_INT length, const CS_DATAFMT* destfmt, CS_VOID* dest,
                            CS_INT* resultlen);
}
