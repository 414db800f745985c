/**
 * @file
 * Conversion of whole columns: one call for many values of one datatype, by the same routines as
 * single values (convert.h) and with the same results.
 */
#ifndef COMNLIB_COLUMN_H
#define COMNLIB_COLUMN_H

#include "context.h"
#include "types.h"

#ifdef __cplusplus
extern "C" {
#endif

/** What a null of the source becomes. */
enum {
  COMN_NULLS_AS_VALUES = 0, /**< the null value of the destination's datatype (com_null_get) */
  COMN_NULLS_AS_NULLS = 1   /**< a null: nothing is written, and the length is -1 */
};

/**
 * The values of a source. Value i is at `values` + i * `stride` or, where `offsets` is not null, at
 * `values` + `offsets[i]`. Each may be at any address.
 */
typedef struct CsColumnSource {
  const CS_DATAFMT* format; /**< of every value; maxlength is used where a value has no length */
  const CS_VOID* values;    /**< the first value, or the text that the offsets belong to */
  CS_INT stride;            /**< bytes from one value to the next; 0 takes one value for all */
  const CS_INT* offsets;    /**< null, or where each value begins, and then where the last one
                                 ends: one more than there are values, never decreasing */
  const CS_INT* lengths;    /**< null, or the length of each value, negative for a null; it
                                 overrides the difference of two offsets */
  const CS_BYTE* valid;     /**< null, or a bit for each value, the least significant one of a byte
                                 first: 1 for a value, 0 for a null */
} CsColumnSource;

/** The values of a destination, found as those of a source. */
typedef struct CsColumnDest {
  const CS_DATAFMT* format; /**< of every value; maxlength is the room of one */
  CS_VOID* values;          /**< the first value, or the text that the offsets belong to */
  CS_INT stride;            /**< bytes from one value to the next, at least the room of one */
  CS_INT* offsets;          /**< null, or for variable-length types: offsets[0] says where the
                                 first value begins; where each ends is stored, and the next begins
                                 there */
  CS_INT* lengths;          /**< null, or receives the length of each value */
  CS_BYTE* valid;           /**< null, or receives a bit for each value as in a source */
  CS_INT nulls;             /**< COMN_NULLS_AS_VALUES or COMN_NULLS_AS_NULLS */
} CsColumnDest;

/**
 * Converts `count` values by the context's routine for the two formats' datatypes, user conversions
 * included.
 * - Each result code goes to `codes`, which may be null. `*faults` is the number of codes other
 *   than CS_SUCCEED. A value at fault does not stop the column: the next one is converted.
 * - Codes, lengths and bytes are those that the routine gives when it is called for each value. An
 *   empty value of character data, which a single call refuses, is converted as an empty CS_VARCHAR
 *   is; a user conversion is called for it with a maxlength of 0.
 * - The preconditions of convert.h are checked once. The process stops, too, if `count`, a stride
 *   or an offset is negative, if offsets decrease, if the values of a destination overlap, if a
 *   destination of fixed length has offsets or its last offset could exceed 2^31 - 1, and if nulls
 *   are to stay nulls and the destination has neither lengths nor bits.
 * - A destination with offsets has room for `maxlength` bytes at the beginning of each value, and
 *   for one byte more where nulls become the null value of a user type: see com_null_get.
 * - Source and destination do not overlap. Bits of `valid` after the last value are not changed.
 * - Nothing is allocated, except what is read when it is first needed: the table of a character
 *   set, and date conventions that locales.dat names.
 *
 * Returns CS_SUCCEED whatever the codes of the values are, or CS_FAIL, with nothing written, when
 * the pair is not supported.
 */
COMN_API CS_RETCODE comn_conv_column(CS_CONTEXT* context, const CsColumnSource* source,
                                     const CsColumnDest* destination, CS_INT count,
                                     CS_RETCODE* codes, CS_INT* faults);

COMN_STATIC_ASSERT(sizeof(CsColumnSource) == COMN_BY_HOST(24, 48));
COMN_STATIC_ASSERT(sizeof(CsColumnDest) == COMN_BY_HOST(28, 56));

#ifdef __cplusplus
}
#endif

#endif
