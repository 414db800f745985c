/**
 * @file
 * Scalar types, datatype codes, value records and the data format: the vocabulary that every other
 * header shares. Records without pointers are the same in 32-bit and 64-bit hosts; those with
 * pointers have the natural layout of each. Both layouts are checked at compile time at the end of
 * each header.
 */
#ifndef COMNLIB_TYPES_H
#define COMNLIB_TYPES_H

#include <stddef.h>
#include <stdint.h>

/*
 * There is one library for 32-bit hosts and one for 64-bit hosts, and a host must not be compiled
 * for the other one. An installed tree therefore has a mark (for_i386.h, for_x86_64.h) for each
 * library that it holds, and both packages define which one they are for.
 */
#if defined(__i386__)
#if !__has_include("comnlib/for_i386.h") || defined(COMNLIB_FOR_X86_64)
#error "comnlib: this package is for 64-bit hosts; compile with -m64 or install the i386 library"
#endif
#elif defined(__x86_64__) && defined(__LP64__)
#if !__has_include("comnlib/for_x86_64.h") || defined(COMNLIB_FOR_I386)
#error "comnlib: this package is for 32-bit hosts; compile with -m32 or install the x86_64 library"
#endif
#else
#error "comnlib: hosts are for i386 or x86_64"
#endif

/** COMN_API marks what the shared object exports; tools/exports scans the headers for it. */
#ifndef COMN_API
#define COMN_API __attribute__((visibility("default")))
#endif
/** Marks what does not return. */
#define COMN_NORETURN __attribute__((noreturn))

#ifdef __cplusplus
extern "C" {
/** Checks a condition when the header is compiled. */
#define COMN_STATIC_ASSERT(condition) static_assert(condition, #condition)
#else
/** Checks a condition when the header is compiled. */
#define COMN_STATIC_ASSERT(condition) _Static_assert(condition, #condition)
#endif

/** A size or an offset in a record with pointers: for 32-bit hosts and for 64-bit hosts. */
#define COMN_BY_HOST(bits32, bits64) (sizeof(void*) == 4 ? (bits32) : (bits64))

typedef char CS_CHAR;                /**< a byte of text in the locale's character set */
typedef unsigned char CS_BYTE;       /**< a byte */
typedef unsigned char CS_BINARY;     /**< a byte of binary data */
typedef unsigned char CS_LONGCHAR;   /**< a byte of text */
typedef unsigned char CS_LONGBINARY; /**< a byte of binary data */
typedef unsigned char CS_TEXT;       /**< a byte of text */
typedef unsigned char CS_IMAGE;      /**< a byte of binary data */
typedef unsigned char CS_BIT;        /**< 0 or 1 */
typedef unsigned char CS_TINYINT;    /**< 0 to 255 */
typedef int16_t CS_SMALLINT;         /**< a 16-bit integer */
typedef uint16_t CS_USHORT;          /**< an unsigned 16-bit integer */
typedef uint16_t CS_UNICHAR;         /**< one UTF-16 code unit, in the processor's byte order */
typedef int32_t CS_INT;              /**< a 32-bit integer; the type of arguments and lengths */
typedef int32_t CS_LONG;             /**< a 32-bit integer */
typedef int32_t CS_RETCODE;          /**< a result code (result.h) */
typedef int32_t CS_BOOL;             /**< 0 is false */
typedef uint32_t CS_UINT;            /**< an unsigned 32-bit integer */
typedef float CS_REAL;               /**< an IEEE single */
typedef double CS_FLOAT;             /**< an IEEE double */
typedef void CS_VOID;                /**< no value, or untyped memory */

/**
 * Datatype codes, as they travel in CS_DATAFMT.datatype. Codes from CS_USER_TYPE on are the host's.
 */
enum {
  CS_CHAR_TYPE = 0,         /**< text of maxlength bytes */
  CS_BINARY_TYPE = 1,       /**< maxlength bytes */
  CS_LONGCHAR_TYPE = 2,     /**< as CS_CHAR_TYPE */
  CS_LONGBINARY_TYPE = 3,   /**< as CS_BINARY_TYPE */
  CS_TEXT_TYPE = 4,         /**< as CS_CHAR_TYPE */
  CS_IMAGE_TYPE = 5,        /**< as CS_BINARY_TYPE */
  CS_TINYINT_TYPE = 6,      /**< CS_TINYINT */
  CS_SMALLINT_TYPE = 7,     /**< CS_SMALLINT */
  CS_INT_TYPE = 8,          /**< CS_INT */
  CS_REAL_TYPE = 9,         /**< CS_REAL */
  CS_FLOAT_TYPE = 10,       /**< CS_FLOAT */
  CS_BIT_TYPE = 11,         /**< CS_BIT */
  CS_DATETIME_TYPE = 12,    /**< CS_DATETIME */
  CS_DATETIME4_TYPE = 13,   /**< CS_DATETIME4 */
  CS_MONEY_TYPE = 14,       /**< CS_MONEY */
  CS_MONEY4_TYPE = 15,      /**< CS_MONEY4 */
  CS_NUMERIC_TYPE = 16,     /**< CS_NUMERIC */
  CS_DECIMAL_TYPE = 17,     /**< CS_DECIMAL */
  CS_VARCHAR_TYPE = 18,     /**< CS_VARCHAR */
  CS_VARBINARY_TYPE = 19,   /**< CS_VARBINARY */
  CS_LONG_TYPE = 20,        /**< eight bytes where a routine converts to it */
  CS_SENSITIVITY_TYPE = 21, /**< as CS_CHAR_TYPE */
  CS_BOUNDARY_TYPE = 22,    /**< as CS_CHAR_TYPE */
  CS_VOID_TYPE = 23,        /**< no value: as a source, the null value of the destination */
  CS_USHORT_TYPE = 24,      /**< CS_USHORT; nothing but a null value converts to it */
  CS_UNICHAR_TYPE = 25,     /**< UTF-16 text of maxlength bytes, in the processor's byte order */
  CS_USER_TYPE = 26         /**< the first code of a host's own types */
};

/** Sizes and limits. */
enum {
  CS_BUILTIN_TYPES = 26, /**< dimension of the conversion matrix and of the null-value table */
  CS_MAX_NAME = 132,     /**< bytes of CS_DATAFMT.name */
  CS_MAX_CHAR = 256,     /**< bytes of a varchar or varbinary value */
  CS_MAX_PREC = 77,      /**< decimal digits of an exact numeric */
  CS_MAX_SCALE = 77,     /**< most decimals of an exact numeric */
  CS_MAX_NUMLEN = 33     /**< sign byte and magnitude of an exact numeric */
};

/** Argument values shared by all services. */
enum {
  CS_GET = 33,            /**< action: read a property */
  CS_SET = 34,            /**< action: change a property */
  CS_CLEAR = 35,          /**< action: set a property back */
  CS_UNUSED = -99999,     /**< no value, where a routine allows it */
  CS_NULLTERM = -9,       /**< a length: the text, shorter than 2^31 bytes, ends at its NUL */
  CS_USE_SRCVALUE = -2562 /**< in a destination's precision or scale: take the source value's */
};

/** Bits of CS_DATAFMT.format: how a character destination is finished. */
enum {
  CS_DFMT_NULLTERM = 0x1, /**< a NUL after the text, which must fit in maxlength too */
  CS_DFMT_PADNULL = 0x2,  /**< fill up to maxlength with NUL bytes */
  CS_DFMT_PADBLANK = 0x4, /**< fill up with blanks; with NULLTERM the last byte is NUL */
  CS_DFMT_ESCQUOTE = 0x20 /**< character to character: double every single quote */
};

/** Text of up to 256 bytes. */
typedef struct _cs_varychar {
  CS_SMALLINT len;          /**< bytes used */
  CS_CHAR str[CS_MAX_CHAR]; /**< the text, without a NUL of its own */
} CS_VARCHAR;

/** Binary data of up to 256 bytes. */
typedef struct _cs_varybin {
  CS_SMALLINT len;            /**< bytes used */
  CS_BYTE array[CS_MAX_CHAR]; /**< the bytes */
} CS_VARBINARY;

/**
 * Exact numeric: array[0] is the sign (0 positive, 1 negative), the big-endian magnitude follows.
 */
typedef struct _cs_numeric {
  CS_BYTE precision;            /**< 1..77 */
  CS_BYTE scale;                /**< 0..77 */
  CS_BYTE array[CS_MAX_NUMLEN]; /**< sign and magnitude; comn_num_getlen gives how many are used */
} CS_NUMERIC;
typedef CS_NUMERIC CS_DECIMAL; /**< the same record under its other name */

/** Money: (mnyhigh * 2^32 + mnylow) ten-thousandths; the high half comes first in memory. */
typedef struct _cs_money {
  CS_INT mnyhigh; /**< high half, with the sign */
  CS_UINT mnylow; /**< low half */
} CS_MONEY;

/** Small money. */
typedef struct _cs_money4 {
  CS_INT mny4; /**< ten-thousandths */
} CS_MONEY4;

/** A date and time of day. */
typedef struct _cs_datetime {
  CS_INT dtdays; /**< days since 1 January 1900 */
  CS_INT dttime; /**< ticks of 1/300 second since midnight */
} CS_DATETIME;

/** A date and time of day in the small form. */
typedef struct _cs_datetime4 {
  CS_USHORT days;    /**< days since 1 January 1900 */
  CS_USHORT minutes; /**< minutes since midnight */
} CS_DATETIME4;

/** A date and time of day broken down. */
typedef struct _cs_daterec {
  CS_INT dateyear;    /**< 1753..9999 */
  CS_INT datemonth;   /**< 0 (January) to 11 */
  CS_INT datedmonth;  /**< day of the month, from 1 */
  CS_INT datedyear;   /**< day of the year, from 1 */
  CS_INT datedweek;   /**< 0 (Sunday) to 6 */
  CS_INT datehour;    /**< 0..23 */
  CS_INT dateminute;  /**< 0..59 */
  CS_INT datesecond;  /**< 0..59 */
  CS_INT datemsecond; /**< 0..999 */
  CS_INT datetzone;   /**< not set by com_datecrack and com_timecrack */
} CS_DATEREC;

typedef struct _cslocale CS_LOCALE;
typedef CS_LOCALE CsLocale; /**< the same record under its other name */

/**
 * Describes one value that a conversion reads or writes. Conversions never change it, so one format
 * may serve several threads.
 */
typedef struct _cs_datafmt {
  CS_CHAR name[CS_MAX_NAME]; /**< column or parameter name; not read here */
  CS_INT namelen;            /**< bytes of the name; not read here */
  CS_INT datatype;           /**< a datatype code */
  CS_INT format;             /**< CS_DFMT_ bits, for character destinations */
  CS_INT maxlength;  /**< bytes: room of the destination, or length of a variable-length source */
  CS_INT scale;      /**< 0..77 or CS_USE_SRCVALUE */
  CS_INT precision;  /**< 1..77 or CS_USE_SRCVALUE */
  CS_INT status;     /**< the caller's; not read here */
  CS_INT count;      /**< the caller's; not read here */
  CS_INT usertype;   /**< the caller's; not read here */
  CS_LOCALE* locale; /**< conventions of this value; null takes the context's */
} CS_DATAFMT;

/**
 * The number of bytes that a value of `datatype` occupies. Returns the fixed length (1, 2, 4, 8, 35
 * or 258) for codes 6..19 and 25, and `length` unchanged for every other code, codes outside 0..25
 * included. Reentrant.
 */
COMN_API CS_INT comn_typelen(CS_INT datatype, CS_INT length);

COMN_STATIC_ASSERT((char)-1 < 0);
COMN_STATIC_ASSERT(sizeof(CS_REAL) == 4);
COMN_STATIC_ASSERT(sizeof(CS_FLOAT) == 8);
COMN_STATIC_ASSERT(sizeof(CS_VARCHAR) == 258);
COMN_STATIC_ASSERT(sizeof(CS_VARBINARY) == 258);
COMN_STATIC_ASSERT(offsetof(CS_VARCHAR, str) == 2);
COMN_STATIC_ASSERT(offsetof(CS_VARBINARY, array) == 2);
COMN_STATIC_ASSERT(sizeof(CS_NUMERIC) == 35);
COMN_STATIC_ASSERT(offsetof(CS_NUMERIC, array) == 2);
COMN_STATIC_ASSERT(sizeof(CS_MONEY) == 8);
COMN_STATIC_ASSERT(offsetof(CS_MONEY, mnylow) == 4);
COMN_STATIC_ASSERT(sizeof(CS_MONEY4) == 4);
COMN_STATIC_ASSERT(sizeof(CS_DATETIME) == 8);
COMN_STATIC_ASSERT(offsetof(CS_DATETIME, dttime) == 4);
COMN_STATIC_ASSERT(sizeof(CS_DATETIME4) == 4);
COMN_STATIC_ASSERT(offsetof(CS_DATETIME4, minutes) == 2);
COMN_STATIC_ASSERT(sizeof(CS_DATEREC) == 40);
COMN_STATIC_ASSERT(sizeof(CS_DATAFMT) == COMN_BY_HOST(172, 176));
COMN_STATIC_ASSERT(offsetof(CS_DATAFMT, namelen) == 132);
COMN_STATIC_ASSERT(offsetof(CS_DATAFMT, datatype) == 136);
COMN_STATIC_ASSERT(offsetof(CS_DATAFMT, format) == 140);
COMN_STATIC_ASSERT(offsetof(CS_DATAFMT, maxlength) == 144);
COMN_STATIC_ASSERT(offsetof(CS_DATAFMT, scale) == 148);
COMN_STATIC_ASSERT(offsetof(CS_DATAFMT, precision) == 152);
COMN_STATIC_ASSERT(offsetof(CS_DATAFMT, status) == 156);
COMN_STATIC_ASSERT(offsetof(CS_DATAFMT, count) == 160);
COMN_STATIC_ASSERT(offsetof(CS_DATAFMT, usertype) == 164);
COMN_STATIC_ASSERT(offsetof(CS_DATAFMT, locale) == 168);

#ifdef __cplusplus
}
#endif

#endif
