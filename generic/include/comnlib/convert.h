/**
 * @file
 * Conversion of values: the context's matrix of routines, null values, and the routines themselves.
 *
 * Calling rules of every conversion routine (type CS_CONV_FUNC):
 * - The process stops, naming the routine's file and line, if one of the six pointers is null, if
 *   the routine does not serve the source's or the destination's datatype, if a length is negative,
 *   or if the source is character data with a maxlength of 0.
 * - The length of a character, binary or Unicode-character source is srcfmt->maxlength; a varchar
 *   or varbinary carries its own; every other source has its type's fixed length.
 * - At most destfmt->maxlength bytes are written to a variable-length destination, and the fixed
 *   length to any other. The length stored through `destlen` is the number of bytes written, except
 *   where a routine's text says otherwise.
 * - The result is CS_SUCCEED or a CS_CVT_ code of result.h. After a failure code a clamped or cut
 *   value may have been written.
 * - Formats are only read. A routine keeps no state: calls on different destinations may run in
 *   several threads at once.
 * - `dest` may be `src`, except for text into CS_VARBINARY and between character sets: there the
 *   routine may overwrite text that it has not read yet. No other overlap is allowed.
 *
 * The tables belong to one context and are not locked: the host serialises changes to them.
 */
#ifndef COMNLIB_CONVERT_H
#define COMNLIB_CONVERT_H

#include "context.h"
#include "result.h"
#include "types.h"

#ifdef __cplusplus
extern "C" {
#endif

/** Padding kinds of CsDefVal.dvpadtype. */
enum { CS_PAD_CHAR = 1, CS_PAD_BINARY = 2, CS_PAD_NONE = 3, CS_PAD_UNICHAR = 4 };

/**
 * Gives the context its copy of the default matrix (26 by 26, in memory from comn_malloc) and an
 * empty list of user conversions. CS_SUCCEED or CS_MEM_ERROR.
 */
COMN_API CS_RETCODE com_conv_init(CS_CONTEXT* context);

/** Releases the matrix and the list; safe on a context whose init failed. CS_SUCCEED. */
COMN_API CS_RETCODE com_conv_free(CS_CONTEXT* context);

/**
 * The routine for a pair of datatypes, or null when the pair is not supported or a code is
 * negative. Pairs with a code of 26 or above are looked up among the user conversions.
 */
COMN_API CS_CONV_FUNC com_conv_func(const CS_CONTEXT* context, CS_INT srctype, CS_INT desttype);

/**
 * Makes `func` the routine of a pair; null makes the pair unsupported. Codes must not be negative
 * (they are not checked). CS_SUCCEED, or CS_MEM_ERROR when a user conversion cannot be recorded.
 */
COMN_API CS_RETCODE com_conv_install(CS_CONTEXT* context, CS_INT srctype, CS_INT desttype,
                                     CS_CONV_FUNC func);

/**
 * Restores the default routine of a pair; a user pair keeps its node, with no routine. A negative
 * code stops the process. CS_SUCCEED.
 */
COMN_API CS_RETCODE com_conv_default(CS_CONTEXT* context, CS_INT srctype, CS_INT desttype);

/**
 * Gives the context the default null value of each built-in type. CS_SUCCEED; CS_MEM_ERROR:
 * com_null_free then frees what has been built.
 */
COMN_API CS_RETCODE com_null_init(CS_CONTEXT* context);

/**
 * Releases the table and the user nodes. The value buffers of user null values are not released:
 * com_null_set with length 0 or com_null_reinstall does that beforehand. CS_SUCCEED.
 */
COMN_API CS_RETCODE com_null_free(CS_CONTEXT* context);

/**
 * Stores the null value of destfmt->datatype into `dest`, which has room for `destlen` bytes, and
 * the number of bytes through `resultlen`; then pads as destfmt asks, up to destfmt->maxlength. A
 * numeric gets the destination's precision and scale and, when the precision is in 1..77, the
 * length of that precision. For a user type (26 and above) as much of the value as fits is stored,
 * then one NUL, which counts. When the value fills the room the NUL is written to dest[destlen], so
 * `dest` must have destlen + 1 bytes. A user type without a null value gives length 0. A negative
 * type or `destlen` stops the process. Returns CS_SUCCEED or the padding's code.
 */
COMN_API CS_RETCODE com_null_get(const CS_CONTEXT* context, const CS_DATAFMT* destfmt,
                                 CS_VOID* dest, CS_INT destlen, CS_INT* resultlen);

/**
 * Makes a copy of the `length` bytes at `value` the null value of `datatype`. Codes up to 24 are
 * built-in; CS_UNICHAR_TYPE and above are kept with the user types, but com_null_get of
 * CS_UNICHAR_TYPE still returns the built-in value. A length of 0 removes the value; even then
 * `value` must not be null. A negative type or length stops the process. CS_SUCCEED, or
 * CS_MEM_ERROR with the old value still in place.
 */
COMN_API CS_RETCODE com_null_set(CS_CONTEXT* context, CS_INT datatype, const CS_VOID* value,
                                 CS_INT length);

/**
 * Gives a built-in type (up to 24) its default null value back, and removes the null value of a
 * user type (25 and above). The list holds the newest user type first; removing its second entry
 * drops the first one too. A negative type, or a built-in one whose value was set to length 0,
 * stops the process. CS_SUCCEED, or CS_MEM_ERROR when there is no memory for a default that is
 * longer than the stored value.
 */
COMN_API CS_RETCODE com_null_reinstall(CS_CONTEXT* context, CS_INT datatype);

/** Declares a conversion routine, a function of type CS_CONV_FUNC. */
#define COMN_CONVERSION(routine)                                                                 \
  COMN_API CS_RETCODE routine(CS_CONTEXT* context, const CS_DATAFMT* srcfmt, const CS_VOID* src, \
                              const CS_DATAFMT* destfmt, CS_VOID* dest, CS_INT* destlen)

/**
 * From CS_VOID: comn_voidtoany stores the null value of any destination type; comn_voidtovoid
 * succeeds and touches nothing, not even its arguments.
 */
/**@{*/
COMN_CONVERSION(comn_voidtoany);
COMN_CONVERSION(comn_voidtovoid);
/**@}*/

/** @name Raw bytes
 * The bytes of a fixed-length value of `size` bytes into a binary or varbinary destination. */
/**@{*/
/**
 * To a binary destination: cut with CS_CVT_TRUNCATED when destfmt->maxlength is smaller, else
 * padded.
 */
COMN_API CS_RETCODE comn_fixedtobin(CS_CONTEXT* context, const CS_DATAFMT* srcfmt,
                                    const CS_VOID* src, const CS_DATAFMT* destfmt, CS_VOID* dest,
                                    CS_INT* destlen, CS_INT size);

/** To a varbinary destination: at most 256 bytes, with CS_CVT_OVERFLOW for more. Length 258. */
COMN_API CS_RETCODE comn_fixedtovarbin(CS_CONTEXT* context, const CS_DATAFMT* srcfmt,
                                       const CS_VOID* src, const CS_DATAFMT* destfmt, CS_VOID* dest,
                                       CS_INT* destlen, CS_INT size);
/**@}*/

/** @name From integers, floats and bits
 * From CS_TINYINT (i1), CS_SMALLINT (i2), CS_INT (i4), CS_REAL (flt4), CS_FLOAT (flt8) and CS_BIT
 * (bit). A CS_BIT that holds neither 0 nor 1 gives CS_CVT_DOMAIN and writes no value; a valid one
 * converts as that integer. The length is the destination's fixed length, 258 for a varchar or
 * varbinary, and the number of bytes written for character and binary data.
 *
 * - toi1, toi2, toi4: A value outside the destination's range stores the limit that it passed, with
 *   CS_CVT_OVERFLOW. A floating value is compared before it is truncated towards zero: 255.5 does
 *   not fit a CS_TINYINT. A NaN is not recognised; it stores what the processor's truncation gives
 *   (-2147483648, cut to the destination).
 * - toflt4, toflt8: Copied, widened, or rounded to the nearest single. From flt8, a value beyond
 *   the largest single, infinities included, stores that single with its sign, with
 *   CS_CVT_OVERFLOW.
 * - tobit: 1 for every value but zero, 1 for a NaN.
 * - tochar, tovarchar: Integers in decimal. Floating values with up to 17 significant digits in the
 *   general format of printf, whatever the process's locale, with two changes: a leading "0." loses
 *   its zero (.25, but -0.25), and text without a point or an exponent gets ".0" (3.0, 0.0 for
 *   either zero, inf.0). A single shows its exact value: .10000000149011612. Text that does not fit
 *   maxlength, with its NUL where CS_DFMT_NULLTERM asks for one, becomes "*" when there are two
 *   bytes of room; the result is CS_CVT_OVERFLOW. bittochar has no "*": it writes its digit when
 *   there is room for it and always counts it. CS_CVT_FORMAT when both paddings are asked for.
 * - tobin, tovarbin: The value's bytes in host order; cut with CS_CVT_TRUNCATED when maxlength is
 *   smaller.
 * - tonum: The value at the destination format's precision (CS_CVT_PRECISION outside 1..77, the
 *   marker CS_USE_SRCVALUE included) and scale (CS_CVT_SCALE outside 0..77). Floating values go
 *   through their 17 significant digits and are rounded at the scale, halves away from zero.
 *   CS_CVT_OVERFLOW stores zero, and so does an infinity or NaN with CS_CVT_SYNTAX. The length is
 *   35, and all 35 bytes are written, those after the magnitude as zero, unless the precision or
 *   the scale is not valid: then nothing is written.
 * - tomoney, tomny4: Exact for integers. A floating value is multiplied by 10000 as a double and
 *   rounded to a unit, halves away from zero. A value out of range stores the limit that it passed,
 *   with CS_CVT_OVERFLOW; a NaN stores zero, with the same. Not from CS_BIT.
 * - toi8, and bittomoney and bittomny4: These convert nothing: with valid pointers and source
 *   datatype each stops the process. They are in no matrix. */
/**@{*/
/** A conversion from an integer, a float or a bit. */
COMN_CONVERSION(comn_i1tobit);
COMN_CONVERSION(comn_i1toi1);
COMN_CONVERSION(comn_i1toi2);
COMN_CONVERSION(comn_i1toi4);
COMN_CONVERSION(comn_i1toflt4);
COMN_CONVERSION(comn_i1toflt8);
COMN_CONVERSION(comn_i1tonum);
COMN_CONVERSION(comn_i1tomoney);
COMN_CONVERSION(comn_i1tomny4);
COMN_CONVERSION(comn_i1tochar);
COMN_CONVERSION(comn_i1tobin);
COMN_CONVERSION(comn_i1tovarchar);
COMN_CONVERSION(comn_i1tovarbin);
COMN_CONVERSION(comn_i1toi8);

COMN_CONVERSION(comn_i2tobit);
COMN_CONVERSION(comn_i2toi1);
COMN_CONVERSION(comn_i2toi2);
COMN_CONVERSION(comn_i2toi4);
COMN_CONVERSION(comn_i2toflt4);
COMN_CONVERSION(comn_i2toflt8);
COMN_CONVERSION(comn_i2tonum);
COMN_CONVERSION(comn_i2tomoney);
COMN_CONVERSION(comn_i2tomny4);
COMN_CONVERSION(comn_i2tochar);
COMN_CONVERSION(comn_i2tobin);
COMN_CONVERSION(comn_i2tovarchar);
COMN_CONVERSION(comn_i2tovarbin);
COMN_CONVERSION(comn_i2toi8);

COMN_CONVERSION(comn_i4tobit);
COMN_CONVERSION(comn_i4toi1);
COMN_CONVERSION(comn_i4toi2);
COMN_CONVERSION(comn_i4toi4);
COMN_CONVERSION(comn_i4toflt4);
COMN_CONVERSION(comn_i4toflt8);
COMN_CONVERSION(comn_i4tonum);
COMN_CONVERSION(comn_i4tomoney);
COMN_CONVERSION(comn_i4tomny4);
COMN_CONVERSION(comn_i4tochar);
COMN_CONVERSION(comn_i4tobin);
COMN_CONVERSION(comn_i4tovarchar);
COMN_CONVERSION(comn_i4tovarbin);
COMN_CONVERSION(comn_i4toi8);

COMN_CONVERSION(comn_flt4tobit);
COMN_CONVERSION(comn_flt4toi1);
COMN_CONVERSION(comn_flt4toi2);
COMN_CONVERSION(comn_flt4toi4);
COMN_CONVERSION(comn_flt4toflt4);
COMN_CONVERSION(comn_flt4toflt8);
COMN_CONVERSION(comn_flt4tonum);
COMN_CONVERSION(comn_flt4tomoney);
COMN_CONVERSION(comn_flt4tomny4);
COMN_CONVERSION(comn_flt4tochar);
COMN_CONVERSION(comn_flt4tobin);
COMN_CONVERSION(comn_flt4tovarchar);
COMN_CONVERSION(comn_flt4tovarbin);
COMN_CONVERSION(comn_flt4toi8);

COMN_CONVERSION(comn_flt8tobit);
COMN_CONVERSION(comn_flt8toi1);
COMN_CONVERSION(comn_flt8toi2);
COMN_CONVERSION(comn_flt8toi4);
COMN_CONVERSION(comn_flt8toflt4);
COMN_CONVERSION(comn_flt8toflt8);
COMN_CONVERSION(comn_flt8tonum);
COMN_CONVERSION(comn_flt8tomoney);
COMN_CONVERSION(comn_flt8tomny4);
COMN_CONVERSION(comn_flt8tochar);
COMN_CONVERSION(comn_flt8tobin);
COMN_CONVERSION(comn_flt8tovarchar);
COMN_CONVERSION(comn_flt8tovarbin);
COMN_CONVERSION(comn_flt8toi8);

COMN_CONVERSION(comn_bittobit);
COMN_CONVERSION(comn_bittoi1);
COMN_CONVERSION(comn_bittoi2);
COMN_CONVERSION(comn_bittoi4);
COMN_CONVERSION(comn_bittoflt4);
COMN_CONVERSION(comn_bittoflt8);
COMN_CONVERSION(comn_bittonum);
COMN_CONVERSION(comn_bittochar);
COMN_CONVERSION(comn_bittobin);
COMN_CONVERSION(comn_bittovarchar);
COMN_CONVERSION(comn_bittovarbin);
COMN_CONVERSION(comn_bittoi8);
COMN_CONVERSION(comn_bittomoney);
COMN_CONVERSION(comn_bittomny4);
/**@}*/

/** @name From numerics
 * From CS_NUMERIC and CS_DECIMAL. A precision outside 1..77 or a scale above 77 gives CS_CVT_DOMAIN
 * before anything else. The length is the destination's fixed length, 258 for a varchar or
 * varbinary, and the number of bytes written for character, binary and numeric data.
 *
 * - toi1, toi2, toi4, toi8: A value outside the destination's range stores the limit that it
 *   passed, with CS_CVT_OVERFLOW. toi1, toi2 and toi4 compare and truncate the nearest double,
 *   which may be the next integer (6.99999999999999999999 becomes 7); toi8 the exact value. Both
 *   compare before they truncate towards zero: 255.5 does not fit a CS_TINYINT. toi8 stores eight
 *   bytes for a destination of CS_LONG_TYPE; it is in no matrix.
 * - tobit: 1 for every value but zero.
 * - toflt4, toflt8: The nearest double, rounded once more for toflt4. A value beyond the largest
 *   single stores that single with its sign, with CS_CVT_OVERFLOW.
 * - tonum: To the precision (CS_CVT_PRECISION outside 1..77) and scale (CS_CVT_SCALE outside 0..77)
 *   of the destination format; CS_USE_SRCVALUE takes the source's. The digits must fit the bytes of
 *   the precision before they are scaled: 1.00000000 of (10,8) overflows (2,0). CS_CVT_OVERFLOW
 *   stores zero; dropped decimals that are not zero give CS_CVT_TRUNCATED with the cut value
 *   stored. The length is comn_num_getlen of the precision plus 2.
 * - tomoney, tomny4: Further decimals are dropped. A value out of range stores the limit that it
 *   passed, with CS_CVT_OVERFLOW.
 * - tochar, tovarchar: A "-" for the negative sign, that of a zero included, at least one digit,
 *   and for a scale above 0 a point and that many decimals. Text that does not fit becomes "*" as
 *   from integers.
 * - tobin, tovarbin: The 35 bytes of the record; cut with CS_CVT_TRUNCATED when maxlength is
 *   smaller. */
/**@{*/
/** A conversion from CS_NUMERIC or CS_DECIMAL. */
COMN_CONVERSION(comn_numtobit);
COMN_CONVERSION(comn_numtoi1);
COMN_CONVERSION(comn_numtoi2);
COMN_CONVERSION(comn_numtoi4);
COMN_CONVERSION(comn_numtoi8);
COMN_CONVERSION(comn_numtoflt4);
COMN_CONVERSION(comn_numtoflt8);
COMN_CONVERSION(comn_numtonum);
COMN_CONVERSION(comn_numtomoney);
COMN_CONVERSION(comn_numtomny4);
COMN_CONVERSION(comn_numtochar);
COMN_CONVERSION(comn_numtobin);
COMN_CONVERSION(comn_numtovarchar);
COMN_CONVERSION(comn_numtovarbin);
/**@}*/

/** @name From money
 * From CS_MONEY and CS_MONEY4. The length is the destination's fixed length, 258 for a varchar or
 * varbinary, comn_num_getlen of the precision plus 2 for a numeric, and the number of bytes written
 * for character and binary data.
 *
 * - toi1, toi2, toi4, toi8: Towards zero, but -0.5 to -0.9999 become -1. A value out of range
 *   stores the limit that it passed, with CS_CVT_OVERFLOW. toi8 stores eight bytes for a
 *   destination of CS_LONG_TYPE; it is in no matrix.
 * - toflt4, toflt8: `mnyhigh * 429496.7296 + mnylow / 10000` in doubles, for small money
 *   `mny4 / 10000`; toflt4 rounds that to a single.
 * - tobit: 1 for every value but zero.
 * - tonum: To the precision and scale of the destination format; CS_USE_SRCVALUE means 19 and 4.
 *   CS_CVT_PRECISION, CS_CVT_SCALE; CS_CVT_OVERFLOW; dropped decimals that are not zero give
 *   CS_CVT_TRUNCATED with the cut value stored.
 * - tomoney, tomny4: A value beyond the range of CS_MONEY4 stores the limit that it passed, with
 *   CS_CVT_OVERFLOW.
 * - tochar, tovarchar: With as many decimals as the destination's precision says: 0 and negative
 *   numbers mean 2, more than 4 mean 4; rounded, halves away from zero. There is no grouping. Text
 *   that does not fit maxlength is cut, with CS_CVT_OVERFLOW.
 * - tobin, tovarbin: The record's bytes; cut with CS_CVT_TRUNCATED when maxlength is smaller. */
/**@{*/
/** A conversion from CS_MONEY or CS_MONEY4. */
COMN_CONVERSION(comn_moneytobit);
COMN_CONVERSION(comn_moneytoi1);
COMN_CONVERSION(comn_moneytoi2);
COMN_CONVERSION(comn_moneytoi4);
COMN_CONVERSION(comn_moneytoi8);
COMN_CONVERSION(comn_moneytoflt4);
COMN_CONVERSION(comn_moneytoflt8);
COMN_CONVERSION(comn_moneytonum);
COMN_CONVERSION(comn_moneytomoney);
COMN_CONVERSION(comn_moneytomny4);
COMN_CONVERSION(comn_moneytochar);
COMN_CONVERSION(comn_moneytobin);
COMN_CONVERSION(comn_moneytovarchar);
COMN_CONVERSION(comn_moneytovarbin);

COMN_CONVERSION(comn_mny4tobit);
COMN_CONVERSION(comn_mny4toi1);
COMN_CONVERSION(comn_mny4toi2);
COMN_CONVERSION(comn_mny4toi4);
COMN_CONVERSION(comn_mny4toi8);
COMN_CONVERSION(comn_mny4toflt4);
COMN_CONVERSION(comn_mny4toflt8);
COMN_CONVERSION(comn_mny4tonum);
COMN_CONVERSION(comn_mny4tomoney);
COMN_CONVERSION(comn_mny4tomny4);
COMN_CONVERSION(comn_mny4tochar);
COMN_CONVERSION(comn_mny4tobin);
COMN_CONVERSION(comn_mny4tovarchar);
COMN_CONVERSION(comn_mny4tovarbin);
/**@}*/

/** @name From binary data
 * From the binary family (bin; image is one of it) and CS_VARBINARY (varbin). A varbinary whose
 * `len` is outside 0..256 gives CS_CVT_DOMAIN, with length 0.
 *
 * - tochar, tovarchar, tounichar: Two hexadecimal digits a byte, upper-case letters, no prefix.
 *   What does not fit is cut to whole bytes, with CS_CVT_TRUNCATED.
 * - tobin, tovarbin: Copied; cut with CS_CVT_TRUNCATED when the destination is smaller.
 * - all others: The bytes are the value's stored bytes. Missing ones are zero. Surplus bytes that
 *   are not zero give CS_CVT_OVERFLOW, the leading ones stored. A bit other than 0 and 1 and an
 *   invalid numeric give CS_CVT_DOMAIN, with length 0. */
/**@{*/
/** A conversion from binary data. */
COMN_CONVERSION(comn_bintobit);
COMN_CONVERSION(comn_bintoi1);
COMN_CONVERSION(comn_bintoi2);
COMN_CONVERSION(comn_bintoi4);
COMN_CONVERSION(comn_bintoflt4);
COMN_CONVERSION(comn_bintoflt8);
COMN_CONVERSION(comn_bintonum);
COMN_CONVERSION(comn_bintomny4);
COMN_CONVERSION(comn_bintomoney);
COMN_CONVERSION(comn_bintodatetime);
COMN_CONVERSION(comn_bintodate4);
COMN_CONVERSION(comn_bintochar);
COMN_CONVERSION(comn_bintobin);
COMN_CONVERSION(comn_bintovarchar);
COMN_CONVERSION(comn_bintovarbin);
COMN_CONVERSION(comn_bintounichar);
COMN_CONVERSION(comn_imagetounichar);

COMN_CONVERSION(comn_varbintobit);
COMN_CONVERSION(comn_varbintoi1);
COMN_CONVERSION(comn_varbintoi2);
COMN_CONVERSION(comn_varbintoi4);
COMN_CONVERSION(comn_varbintoflt4);
COMN_CONVERSION(comn_varbintoflt8);
COMN_CONVERSION(comn_varbintonum);
COMN_CONVERSION(comn_varbintomny4);
COMN_CONVERSION(comn_varbintomoney);
COMN_CONVERSION(comn_varbintodatetime);
COMN_CONVERSION(comn_varbintodate4);
COMN_CONVERSION(comn_varbintochar);
COMN_CONVERSION(comn_varbintobin);
COMN_CONVERSION(comn_varbintovarchar);
COMN_CONVERSION(comn_varbintovarbin);
COMN_CONVERSION(comn_varbintounichar);
/**@}*/

/** @name From text
 * From the character family (char), CS_VARCHAR (varchar) and CS_UNICHAR (unichar). Character data
 * is in the character set of the source format's locale, else of the context's; with neither, every
 * byte is a character. Two character-set descriptors with the same object id, 0 aside, are one
 * character set. A character source has a maxlength of at least 1. A varchar whose `len` is outside
 * 0..256 gives CS_CVT_DOMAIN with length 0. UTF-16 of odd length or with an unpaired surrogate
 * gives CS_CVT_BADXLATE: with length 0, or with what was converted up to there where the
 * destination is text. Only a CS_UNICHAR destination takes it as it is. Text that is not a literal
 * of the destination's type gives CS_CVT_SYNTAX with length 0, and nothing is written. Digits,
 * signs and points are recognised by their ASCII form, full-width ones included. Blanks may
 * surround every literal but binary's.
 *
 * - toi1, toi2, toi4, toi8: A sign, then digits. A value outside the range stores the limit that it
 *   passed, with CS_CVT_OVERFLOW. Only unichartoi8 converts, to eight bytes; chartoi8 and
 *   varchartoi8 stop the process.
 * - tobit: As toi4; 1 for every value but zero.
 * - toflt4, toflt8: A decimal literal with optional point and exponent, or inf or nan; a NUL ends
 *   the text. CS_CVT_OVERFLOW stores the largest value of the sign. A literal other than zero below
 *   the smallest normal double gives CS_CVT_UNDERFLOW and stores the nearest double, a denormal
 *   number or zero, which toflt4 rounds to a single.
 * - tonum: To the destination's precision and scale, either of which may be CS_USE_SRCVALUE: what
 *   the text needs. Further decimals are cut, with CS_CVT_TRUNCATED when one of them is not zero.
 *   With CS_DFMT_NULLTERM in the source format a NUL ends the text. The length is comn_num_getlen
 *   of the precision plus 2. CS_CVT_PRECISION, CS_CVT_SCALE; CS_CVT_OVERFLOW stores zero, or
 *   nothing, with length 0, when the precision or scale was to be taken from the text. A literal of
 *   more than 1,024 characters, blanks around it not counted, gives CS_CVT_SYNTAX.
 * - tomoney, tomny4: docs/money.md shows the text that is read. A value out of range stores the
 *   limit that it passed, with CS_CVT_OVERFLOW.
 * - todatetime, todate4: docs/datetime.md shows the text that is read. CS_CVT_OVERFLOW for a date
 *   that does not exist or leaves the range, with length 0; CS_MEM_ERROR, from CS_UNICHAR, as
 *   between character sets.
 * - tobin, tovarbin: An optional "0x", then hexadecimal digits, an odd count meaning a leading
 *   zero. Cut with CS_CVT_TRUNCATED.
 * - tochar, tounichar: Within one character set a text that fits maxlength is copied as it is,
 *   every byte, even where its end cuts a character or it is malformed. Where the sets differ the
 *   text is converted. A text that does not fit is cut after its last whole character that does,
 *   with CS_CVT_TRUNCATED. Text that fills maxlength to the last byte loses that byte to a NUL
 *   where CS_DFMT_NULLTERM asks for one, with CS_CVT_TRUNCATED. With CS_DFMT_ESCQUOTE tochar
 *   doubles single quotes; a NUL then ends the text of a CS_DFMT_NULLTERM destination. Where the
 *   doubling does not fit, the text is cut as above and neither padded nor terminated, unless it
 *   fills maxlength: its last byte is then the NUL. Between character sets: CS_CVT_SUBSTITUTED,
 *   CS_CVT_BADXLATE, CS_CVT_NOXLATE and, when a set's table is first needed, CS_MEM_ERROR.
 *   CS_CVT_FORMAT when both paddings are asked for: nothing is written after the text then.
 * - tovarchar: The same into 256 bytes, without padding or quotes. Length 258. */
/**@{*/
/** A conversion from text. */
COMN_CONVERSION(comn_chartobit);
COMN_CONVERSION(comn_chartoi1);
COMN_CONVERSION(comn_chartoi2);
COMN_CONVERSION(comn_chartoi4);
COMN_CONVERSION(comn_chartoflt4);
COMN_CONVERSION(comn_chartoflt8);
COMN_CONVERSION(comn_chartonum);
COMN_CONVERSION(comn_chartomny4);
COMN_CONVERSION(comn_chartomoney);
COMN_CONVERSION(comn_chartodatetime);
COMN_CONVERSION(comn_chartodate4);
COMN_CONVERSION(comn_chartochar);
COMN_CONVERSION(comn_chartobin);
COMN_CONVERSION(comn_chartovarchar);
COMN_CONVERSION(comn_chartovarbin);
COMN_CONVERSION(comn_chartounichar);
COMN_CONVERSION(comn_chartoi8);
COMN_CONVERSION(comn_texttounichar);

COMN_CONVERSION(comn_varchartobit);
COMN_CONVERSION(comn_varchartoi1);
COMN_CONVERSION(comn_varchartoi2);
COMN_CONVERSION(comn_varchartoi4);
COMN_CONVERSION(comn_varchartoflt4);
COMN_CONVERSION(comn_varchartoflt8);
COMN_CONVERSION(comn_varchartonum);
COMN_CONVERSION(comn_varchartomny4);
COMN_CONVERSION(comn_varchartomoney);
COMN_CONVERSION(comn_varchartodatetime);
COMN_CONVERSION(comn_varchartodate4);
COMN_CONVERSION(comn_varchartochar);
COMN_CONVERSION(comn_varchartobin);
COMN_CONVERSION(comn_varchartovarchar);
COMN_CONVERSION(comn_varchartovarbin);
COMN_CONVERSION(comn_varchartounichar);
COMN_CONVERSION(comn_varchartoi8);

COMN_CONVERSION(comn_unichartobit);
COMN_CONVERSION(comn_unichartoi1);
COMN_CONVERSION(comn_unichartoi2);
COMN_CONVERSION(comn_unichartoi4);
COMN_CONVERSION(comn_unichartoflt4);
COMN_CONVERSION(comn_unichartoflt8);
COMN_CONVERSION(comn_unichartonum);
COMN_CONVERSION(comn_unichartomny4);
COMN_CONVERSION(comn_unichartomoney);
COMN_CONVERSION(comn_unichartodatetime);
COMN_CONVERSION(comn_unichartodate4);
COMN_CONVERSION(comn_unichartochar);
COMN_CONVERSION(comn_unichartobin);
COMN_CONVERSION(comn_unichartovarchar);
COMN_CONVERSION(comn_unichartovarbin);
COMN_CONVERSION(comn_unichartounichar);
COMN_CONVERSION(comn_unichartoi8);
COMN_CONVERSION(comn_unichartotext);
COMN_CONVERSION(comn_unichartoimage);
/**@}*/

/** @name Into Unicode characters
 * Into CS_UNICHAR from the other types: the text that tochar gives, in UTF-16 and placed by the
 * same rule. Month names come out of the character set of their locale: CS_CVT_BADXLATE,
 * CS_CVT_NOXLATE and CS_MEM_ERROR, with length 0. */
/**@{*/
/** A conversion into CS_UNICHAR. */
COMN_CONVERSION(comn_i1tounichar);
COMN_CONVERSION(comn_i2tounichar);
COMN_CONVERSION(comn_i4tounichar);
COMN_CONVERSION(comn_flt4tounichar);
COMN_CONVERSION(comn_flt8tounichar);
COMN_CONVERSION(comn_bittounichar);
COMN_CONVERSION(comn_datetimetounichar);
COMN_CONVERSION(comn_date4tounichar);
COMN_CONVERSION(comn_moneytounichar);
COMN_CONVERSION(comn_mny4tounichar);
COMN_CONVERSION(comn_numtounichar);
/**@}*/

#ifdef __cplusplus
}
#endif

#endif
