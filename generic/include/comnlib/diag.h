/**
 * @file
 * Diagnostics: the error trace, debug output, and the stops for broken preconditions.
 *
 * The trace level and the debug output file are process-wide; both may be changed and used from any
 * thread, and in a child of fork. A null text, format or file name stops the process.
 */
#ifndef COMNLIB_DIAG_H
#define COMNLIB_DIAG_H

#include <stdarg.h>

#include "result.h"
#include "types.h"

#ifdef __cplusplus
extern "C" {
#endif

/** Trace levels of com_errset. */
enum {
  COM_TRACE_NONE = 1,   /**< the initial level: nothing is printed */
  COM_TRACE_FAULTS = 2, /**< every code but those that are part of normal work */
  COM_TRACE_ALL = 3     /**< every code */
};

/**
 * Prints `code` with the place it was returned from, as the trace level asks, and returns it
 * unchanged. Only the part of `file` after its last "/" is printed. The line is "(NAME) file F,
 * line N" with the name of a general code and "(number) file F, line N" otherwise. COM_TRACE_FAULTS
 * leaves out CS_SUCCEED, CS_PENDING, CS_INTERRUPT, CS_END_DATA, CS_END_RESULTS and CS_END_ITEM.
 */
COMN_API CS_RETCODE com_errtrace(CS_RETCODE code, const CS_CHAR* file, CS_INT line);

/**
 * The name of a result code, such as "CS_CVT_OVERFLOW": of every code of result.h, and of
 * LM_NOTFOUND. Static text; "" for any other number.
 */
COMN_API const CS_CHAR* comn_result_name(CS_RETCODE code);

/** Sets the trace level. Any level but 1, 2 and 3 stops the process. */
COMN_API CS_VOID com_errset(CS_INT level);

/**
 * Sends trace and debug output to the file `path`, created or emptied, when `on` is true. With `on`
 * false or a null path it closes the open file, and output goes to standard output again. A file
 * that is open is closed first. `handle` is not used and may be null. The file is opened without
 * following a link and without waiting, and is closed by exec. CS_SUCCEED; CS_FAIL when the file
 * cannot be opened: output then goes to standard output.
 */
COMN_API CS_RETCODE comn_debug_setfile(CS_VOID* handle, const CS_CHAR* path, CS_BOOL on);

/**
 * comn_debug_print, comn_debug_vprint: write printf-formatted text to the debug output, at once and
 * in one piece, even while other threads write.
 */
/**@{*/
COMN_API CS_VOID comn_debug_print(const CS_CHAR* format, ...) __attribute__((format(printf, 1, 2)));
COMN_API CS_VOID comn_debug_vprint(const CS_CHAR* format, va_list args)
    __attribute__((format(printf, 1, 0)));
/**@}*/

/**
 * Returns for any non-null pointer, which it never reads through; for a null pointer it writes the
 * place to standard error and aborts.
 */
COMN_API CS_VOID com_chkptr(const CS_VOID* pointer, const CS_CHAR* file, CS_INT line);

/** Writes the place to standard error, closes standard error and aborts. */
COMN_API COMN_NORETURN CS_VOID com_bomb(const CS_CHAR* file, CS_INT line);

/**
 * Writes "\nINTERNAL ERROR: unrecoverable error: TEXT\n" to standard error and exits with status
 * -1, which a shell shows as 255.
 */
COMN_API COMN_NORETURN CS_VOID com_panic(const CS_CHAR* text);

/**
 * Writes `text` as it is to standard error and appends it to the file "tlvinit.err" in the current
 * directory, unless that is a link or cannot be written.
 */
COMN_API CS_VOID com_perr(const CS_CHAR* text);

/**
 * One line of "/"-separated fields: library, version, patch level, platform, threading model, build
 * and its date. Static text; never null.
 */
COMN_API const CS_CHAR* com_version(void);

#ifdef __cplusplus
}
#endif

#endif
