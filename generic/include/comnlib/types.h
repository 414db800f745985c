/*
 * Scalar types, datatype codes, value records and the data format: the vocabulary that every other
 * header shares. All widths and offsets are those of the 32-bit x86 target and are checked at
 * compile time at the end of this file.
 */
#ifndef COMNLIB_TYPES_H
#define COMNLIB_TYPES_H

#include <stddef.h>
#include <stdint.h>

/* COMN_API marks what the shared object exports; tools/exports scans the headers for it. */
#ifndef COMN_API
#define COMN_API __attribute__((visibility("default")))
#endif
#define COMN_NORETURN __attribute__((noreturn))

#ifdef __cplusplus
extern "C" {
#define COMN_STATIC_ASSERT(condition) static_assert(condition, #condition)
#else
#define COMN_STATIC_ASSERT(condition) _Static_assert(condition, #condition)
#endif

typedef char CS_CHAR;
typedef unsigned char CS_BYTE;
typedef unsigned char CS_BINARY;
typedef unsigned char CS_LONGCHAR;
typedef unsigned char CS_LONGBINARY;
typedef unsigned char CS_TEXT;
typedef unsigned char CS_IMAGE;
typedef unsigned char CS_BIT;
typedef unsigned char CS_TINYINT;
typedef int16_t CS_SMALLINT;
typedef uint16_t CS_USHORT;
typedef uint16_t CS_UNICHAR; /* one UTF-16 code unit */
typedef int32_t CS_INT;
typedef int32_t CS_LONG;
typedef int32_t CS_RETCODE;
typedef int32_t CS_BOOL;
typedef uint32_t CS_UINT;
typedef float CS_REAL;
typedef double CS_FLOAT;
typedef void CS_VOID;

/* Datatype codes, as they travel in CS_DATAFMT.datatype. Codes from CS_USER_TYPE on are the host's.
 */
enum {
  CS_CHAR_TYPE = 0,
  CS_BINARY_TYPE = 1,
  CS_LONGCHAR_TYPE = 2,
  CS_LONGBINARY_TYPE = 3,
  CS_TEXT_TYPE = 4,
  CS_IMAGE_TYPE = 5,
  CS_TINYINT_TYPE = 6,
  CS_SMALLINT_TYPE = 7,
  CS_INT_TYPE = 8,
  CS_REAL_TYPE = 9,
  CS_FLOAT_TYPE = 10,
  CS_BIT_TYPE = 11,
  CS_DATETIME_TYPE = 12,
  CS_DATETIME4_TYPE = 13,
  CS_MONEY_TYPE = 14,
  CS_MONEY4_TYPE = 15,
  CS_NUMERIC_TYPE = 16,
  CS_DECIMAL_TYPE = 17,
  CS_VARCHAR_TYPE = 18,
  CS_VARBINARY_TYPE = 19,
  CS_LONG_TYPE = 20,
  CS_SENSITIVITY_TYPE = 21,
  CS_BOUNDARY_TYPE = 22,
  CS_VOID_TYPE = 23,
  CS_USHORT_TYPE = 24,
  CS_UNICHAR_TYPE = 25,
  CS_USER_TYPE = 26
};

/* Sizes of the contract. */
enum {
  CS_BUILTIN_TYPES = 26, /* dimension of the conversion matrix and of the null-value table */
  CS_MAX_NAME = 132,     /* bytes of CS_DATAFMT.name */
  CS_MAX_CHAR = 256,     /* bytes of a varchar or varbinary value */
  CS_MAX_PREC = 77,      /* decimal digits of an exact numeric */
  CS_MAX_SCALE = 77,
  CS_MAX_NUMLEN = 33 /* sign byte and magnitude of an exact numeric */
};

/* Argument values shared by all services. */
enum {
  CS_GET = 33,
  CS_SET = 34,
  CS_CLEAR = 35,
  CS_UNUSED = -99999,
  CS_NULLTERM = -9,       /* a length: the text ends at its NUL */
  CS_USE_SRCVALUE = -2562 /* in a destination's precision or scale: take the source value's */
};

/* Bits of CS_DATAFMT.format: how a character destination is finished. */
enum {
  CS_DFMT_NULLTERM = 0x1, /* a NUL behind the text, which must fit in maxlength too */
  CS_DFMT_PADNULL = 0x2,  /* fill up to maxlength with NUL bytes */
  CS_DFMT_PADBLANK = 0x4, /* fill up to maxlength with blanks; with NULLTERM the last byte is NUL */
  CS_DFMT_ESCQUOTE = 0x20 /* character to character: double every single quote */
};

/* Value records. `len` counts the bytes used. */
typedef struct _cs_varychar {
  CS_SMALLINT len;
  CS_CHAR str[CS_MAX_CHAR];
} CS_VARCHAR;

typedef struct _cs_varybin {
  CS_SMALLINT len;
  CS_BYTE array[CS_MAX_CHAR];
} CS_VARBINARY;

/* Exact numeric: array[0] is the sign (0 positive, 1 negative), the big-endian magnitude follows.
 */
typedef struct _cs_numeric {
  CS_BYTE precision; /* 1..77 */
  CS_BYTE scale;     /* 0..77 */
  CS_BYTE array[CS_MAX_NUMLEN];
} CS_NUMERIC;
typedef CS_NUMERIC CS_DECIMAL;

/* Money: (mnyhigh * 2^32 + mnylow) ten-thousandths; the high half stands first in memory. */
typedef struct _cs_money {
  CS_INT mnyhigh;
  CS_UINT mnylow;
} CS_MONEY;

typedef struct _cs_money4 {
  CS_INT mny4; /* ten-thousandths */
} CS_MONEY4;

typedef struct _cs_datetime {
  CS_INT dtdays; /* days since 1 January 1900 */
  CS_INT dttime; /* ticks of 1/300 second since midnight */
} CS_DATETIME;

typedef struct _cs_datetime4 {
  CS_USHORT days;    /* days since 1 January 1900 */
  CS_USHORT minutes; /* minutes since midnight */
} CS_DATETIME4;

typedef struct _cs_daterec {
  CS_INT dateyear;    /* 1753..9999 */
  CS_INT datemonth;   /* 0 (January) to 11 */
  CS_INT datedmonth;  /* day of the month, from 1 */
  CS_INT datedyear;   /* day of the year, from 1 */
  CS_INT datedweek;   /* 0 (Sunday) to 6 */
  CS_INT datehour;    /* 0..23 */
  CS_INT dateminute;  /* 0..59 */
  CS_INT datesecond;  /* 0..59 */
  CS_INT datemsecond; /* 0..999 */
  CS_INT datetzone;   /* not set by cracking */
} CS_DATEREC;

typedef struct _cslocale CS_LOCALE;

/* Describes one value that a conversion reads or writes. Conversions never change it, so one format
   may serve several threads. */
typedef struct _cs_datafmt {
  CS_CHAR name[CS_MAX_NAME]; /* column or parameter name; not read here */
  CS_INT namelen;
  CS_INT datatype;
  CS_INT format;    /* CS_DFMT_ bits, for character destinations */
  CS_INT maxlength; /* bytes: room of the destination, or length of a variable-length source */
  CS_INT scale;     /* 0..77 or CS_USE_SRCVALUE */
  CS_INT precision; /* 1..77 or CS_USE_SRCVALUE */
  CS_INT status;    /* the caller's; not read here, as are count and usertype */
  CS_INT count;
  CS_INT usertype;
  CS_LOCALE* locale; /* conventions of this value; null takes the context's */
} CS_DATAFMT;

/*
 * comn_typelen: the number of bytes that a value of `datatype` occupies.
 * Returns the fixed length (1, 2, 4, 8, 35 or 258) for codes 6..19 and 25, and `length` unchanged
 * for every other code, codes outside 0..25 included. Reentrant.
 */
COMN_API CS_INT comn_typelen(CS_INT datatype, CS_INT length);

COMN_STATIC_ASSERT(sizeof(void*) == 4);
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
COMN_STATIC_ASSERT(sizeof(CS_DATAFMT) == 172);
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
