/**
 * @file
 * Datetime values: calendar dates with a time of day, in two sizes (CS_DATETIME, CS_DATETIME4),
 * their broken-down form (CS_DATEREC), and the conversions whose source they are.
 *
 * A valid CS_DATETIME has dtdays in COM_DTDAYS_MIN..COM_DTDAYS_MAX and dttime in 0..COM_DTTIME_MAX;
 * a valid CS_DATETIME4 has minutes in 0..1439. Values outside these ranges are never undefined
 * behaviour: each routine says how it treats them.
 *
 * All routines are reentrant, keep no state and touch only their arguments and constant tables. A
 * null pointer stops the process unless the routine says that it may be null.
 */
#ifndef COMNLIB_DATETIME_H
#define COMNLIB_DATETIME_H

#include "convert.h"
#include "result.h"
#include "types.h"

#ifdef __cplusplus
extern "C" {
#endif

/** The range of a valid CS_DATETIME. */
enum {
  COM_DTDAYS_MIN = -53690,  /**< 1 January 1753 */
  COM_DTDAYS_MAX = 2958463, /**< 31 December 9999 */
  COM_DTTIME_MAX = 25919999 /**< the last tick of a day */
};

/**
 * Parts of a date. In additions and differences the day of week, the day of year and the ISO
 * weekday act as days, the ISO week as week, and the week-numbering year as year.
 */
enum {
  COM_PART_YEAR = 0,
  COM_PART_QUARTER = 1,     /**< 1..4 */
  COM_PART_MONTH = 2,       /**< 1..12 */
  COM_PART_WEEKDAY = 3,     /**< 1..7, counted from the first day of the week */
  COM_PART_DAY = 4,         /**< of the month */
  COM_PART_DAYOFYEAR = 5,   /**< from 1 */
  COM_PART_HOUR = 6,        /**< 0..23 */
  COM_PART_MINUTE = 7,      /**< 0..59 */
  COM_PART_SECOND = 8,      /**< 0..59 */
  COM_PART_MILLISECOND = 9, /**< 0..999 */
  COM_PART_WEEK = 10,       /**< week 1, Sunday to Saturday, holds 1 January */
  COM_PART_ISOYEAR = 11,    /**< year of the ISO 8601 week that holds the day */
  COM_PART_ISOWEEK = 12,    /**< ISO 8601 week number */
  COM_PART_ISOWEEKDAY = 13  /**< 1 (Monday) to 7 (Sunday) */
};

/** Styles of datetime text; shown for 4 July 2026, 15:05:09.250. */
enum {
  COM_DATESTYLE_DEFAULT = 0, /**< "Jul  4 2026  3:05PM" */
  COM_DATESTYLE_LONG = 1,    /**< "Jul  4 2026  3:05:09:250PM" */
  COM_DATESTYLE_ISO = 2      /**< "2026-07-04T15:05:09.250" */
};

/** Bytes that com_datename may write. */
enum { COM_DATENAME_SIZE = 30 };

/**
 * Fills dateyear, datemonth, datedmonth, datedyear and datedweek from dt->dtdays, and leaves the
 * other fields as they are. Days after COM_DTDAYS_MAX continue the same calendar; every year before
 * 1753 is taken as 365 days long. Always CS_SUCCEED.
 */
COMN_API CS_RETCODE com_datecrack(const CS_DATETIME* dt, CS_DATEREC* rec);

/**
 * Fills datehour, dateminute, datesecond and datemsecond from the low 25 bits of dt->dttime, and
 * leaves the other fields as they are. Ticks above COM_DTTIME_MAX give hours 24 to 31. Always
 * CS_SUCCEED.
 */
COMN_API CS_RETCODE com_timecrack(const CS_DATETIME* dt, CS_DATEREC* rec);

/**
 * The part `part` (COM_PART_) of a datetime. Only COM_PART_WEEKDAY reads `firstday`, the day of the
 * week that is numbered 1: 0 for Sunday, 1 for Monday, and so on to 6. It is not checked, and any
 * other number gives weekdays outside 1..7. A code outside COM_PART_YEAR..COM_PART_ISOWEEKDAY stops
 * the process.
 */
COMN_API CS_INT com_datepart(CS_INT part, const CS_DATETIME* dt, CS_INT firstday);

/**
 * A part as text. `months` lists twelve names from January on, `days` seven from Sunday on, each
 * ending in a NUL; either list, and any name in it, may be null. COM_PART_MONTH gives the name of
 * the month, COM_PART_WEEKDAY and COM_PART_ISOWEEKDAY the name of the weekday, and every other part
 * its number in decimal. `text` has room for COM_DATENAME_SIZE bytes; longer names are cut, shorter
 * text is followed by a NUL. Returns the number of characters without the NUL; 0, with nothing
 * written, for a missing name and for a code that is not a part.
 */
COMN_API CS_INT com_datename(CS_INT part, const CS_DATETIME* dt, CS_CHAR* text,
                             const CS_CHAR* const* months, const CS_CHAR* const* days);

/**
 * com_datecmp, com_date4cmp: -1, 0 or 1 as `a` is before, equal to or after `b`: the days decide
 * (signed; unsigned in the small form), then the time.
 */
/**@{*/
COMN_API CS_INT com_datecmp(const CS_DATETIME* a, const CS_DATETIME* b);
COMN_API CS_INT com_date4cmp(const CS_DATETIME4* a, const CS_DATETIME4* b);
/**@}*/

/** com_datezero, com_date4zero: store midnight of 1 January 1900. Always CS_SUCCEED. */
/**@{*/
COMN_API CS_RETCODE com_datezero(CS_DATETIME* dt);
COMN_API CS_RETCODE com_date4zero(CS_DATETIME4* dt4);
/**@}*/

/** Stores both fields unchecked. Always CS_SUCCEED. */
COMN_API CS_RETCODE com_setdatetime(CS_DATETIME* dt, CS_INT days, CS_INT ticks);

/** @name Between the sizes
 * Calling rules in convert.h; lengths 8 and 4.
 *
 * To the same size the record is copied as it is. comn_date4todate multiplies. comn_datetodate4
 * rounds to the nearest minute, 30 seconds up, and carries into the next day if necessary. Ticks
 * outside 0..COM_DTTIME_MAX are not refused as such: ticks above it are carried into the next day
 * too, and ticks less than a minute and a half below 0 count as midnight. A day outside the small
 * form's range, before or after rounding, and ticks further out give CS_CVT_OVERFLOW with nothing
 * written and length 0. */
/**@{*/
/** Between the sizes. */
COMN_CONVERSION(comn_datetodate);
COMN_CONVERSION(comn_datetodate4);
COMN_CONVERSION(comn_date4todate);
COMN_CONVERSION(comn_date4todate4);
/**@}*/

/** @name Datetimes to text
 * Calling rules in convert.h. Style, names, order of month, day and year, and the AM/PM texts come
 * from destfmt->locale, else from the context's locale (category COM_LC_TIME), else they are US
 * English in the default style. Conventions that locales.dat names are read when they are first
 * needed: CS_CVT_STYLE when they cannot be. A small datetime is formatted as the datetime of equal
 * value. docs/datetime.md shows every form. Text that does not fit becomes "*" by the rule of the
 * number conversions, with CS_CVT_OVERFLOW; other results are those of padding. CS_CVT_STYLE when
 * the style is not one of COM_DATESTYLE_, or a name it needs is empty or too long (a locale without
 * an AM or PM text cannot write such times in the default and long styles); CS_CVT_DOMAIN when the
 * value is not a valid datetime. In both cases nothing is written and the length is 0 (for a
 * varchar the length is 258 and `len` is 0). */
/**@{*/
/** From a datetime to text. */
COMN_CONVERSION(comn_datetochar);
COMN_CONVERSION(comn_datetovarchar);
COMN_CONVERSION(comn_date4tochar);
COMN_CONVERSION(comn_date4tovarchar);
/**@}*/

/**
 * Stores the style (COM_DATESTYLE_) that converting a srcfmt value (either size) to destfmt
 * (character, varchar or Unicode character) would use, as a CS_INT at `dest` whatever
 * destfmt->maxlength says; the length is 4. The value itself is not read. CS_SUCCEED, or
 * CS_CVT_STYLE when the number stored is not one of COM_DATESTYLE_; it is -1 when the locale's
 * conventions cannot be read.
 */
COMN_CONVERSION(comn_get_datetochar_fmt);

/** @name Text whatever the locale
 * For files and protocols, whose dates must not change with the locale or its home. Names are US
 * English. */
/**@{*/
/**
 * Writes a datetime in a style (COM_DATESTYLE_) to the `room` bytes at `buffer`, with a NUL when
 * there is room for it, and its length without the NUL to `length`. CS_SUCCEED; CS_CVT_STYLE for
 * another style, CS_CVT_DOMAIN for a value that is not a valid datetime, CS_CVT_OVERFLOW when the
 * text is longer than `room`: nothing is written then and the length is 0. COM_DATESTYLE_ISO is
 * ISO 8601 with every part, 23 bytes.
 */
COMN_API CS_RETCODE comn_datetime_text(const CS_DATETIME* value, CS_INT style, CS_CHAR* buffer,
                                       CS_INT room, CS_INT* length);

/**
 * Reads the `length` bytes of a text (CS_NULLTERM: up to its NUL) in any form that docs/datetime.md
 * names, as month, day and year where an order is needed. CS_SUCCEED; CS_CVT_SYNTAX when it has
 * none of the forms, CS_CVT_OVERFLOW when it names no date or time that exists: the value is then
 * zero.
 */
COMN_API CS_RETCODE comn_datetime_parse(const CS_CHAR* text, CS_INT length, CS_DATETIME* value);
/**@}*/

/** @name Datetimes to binary data
 * The bytes of the record, by the rules of comn_fixedtobin and comn_fixedtovarbin. The default
 * matrix holds the varbinary routines only. */
/**@{*/
/** From a datetime to binary data. */
COMN_CONVERSION(comn_datetobin);
COMN_CONVERSION(comn_datetovarbin);
COMN_CONVERSION(comn_date4tobin);
COMN_CONVERSION(comn_date4tovarbin);
/**@}*/

#ifdef __cplusplus
}
#endif

#endif
