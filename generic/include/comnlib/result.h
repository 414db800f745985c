/**
 * @file
 * Result codes (CS_RETCODE). Zero and the negative codes are failures; CS_SUCCEED is success. The
 * numeric values cross the boundary and never change.
 */
#ifndef COMNLIB_RESULT_H
#define COMNLIB_RESULT_H

/**
 * Result codes. comn_result_name gives their names. The error trace prints the general ones, down
 * to CS_TRYING, by name and every other by number. Of the general codes this library returns
 * CS_SUCCEED, CS_FAIL, CS_MEM_ERROR, CS_BUSY, CS_END_DATA and CS_TIMED_OUT; the others belong to
 * the layers above it.
 */
enum {
  CS_SUCCEED = 1,    /**< done */
  CS_FAIL = 0,       /**< not done; the routine says why */
  CS_MEM_ERROR = -1, /**< an allocation failed */
  CS_PENDING = -2,
  CS_QUIET = -3,
  CS_BUSY = -4, /**< in use */
  CS_INTERRUPT = -5,
  CS_CANCELED = -202,
  CS_ROW_FAIL = -203,
  CS_END_DATA = -204, /**< a walk is at its end */
  CS_END_RESULTS = -205,
  CS_END_ITEM = -206,
  CS_NOMSG = -207,
  CS_TIMED_OUT = -208, /**< the time is over */
  CS_PASSTHRU_EOM = -210,
  CS_PASSTHRU_MORE = -211,
  CS_TRYING = -213,

  /* Conversion codes, of the conversion routines and exact arithmetic; -109..-112 are not used. */
  CS_CVT_OVERFLOW = -101,    /**< does not fit the destination; integers are clamped */
  CS_CVT_UNDERFLOW = -102,   /**< text names a floating value too small to represent */
  CS_CVT_PRECISION = -103,   /**< numeric precision outside 1..77 */
  CS_CVT_SCALE = -104,       /**< numeric scale outside 0..77 */
  CS_CVT_SYNTAX = -105,      /**< text is not a literal of the destination type; length 0 */
  CS_CVT_FORMAT = -106,      /**< NUL padding and blank padding asked for at once */
  CS_CVT_DOMAIN = -107,      /**< the source value lies outside its own type's domain */
  CS_CVT_DIVZERO = -108,     /**< division by zero */
  CS_CVT_TRUNCATED = -113,   /**< the data were cut */
  CS_CVT_STYLE = -114,       /**< a date could not be formatted in the locale's style */
  CS_CVT_BADXLATE = -115,    /**< a character could not be converted to or from Unicode */
  CS_CVT_NOXLATE = -116,     /**< no translation exists between the two character sets */
  CS_CVT_SUBSTITUTED = -117, /**< finished, with replacement characters for missing ones */

  /* Localization codes. */
  CS_INTL_LIBERR = -301, /**< a call of the companion library failed; its status is in ctxintlerr */
  CS_INTL_NOFILE = -414  /**< a localization file could not be opened; status in ctxintlerr */
};

#endif
