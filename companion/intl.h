/**
 * @file
 * The companion localization-file library: where the localization home is, the reader of sectioned
 * files, the plain file reader, and the environment.
 *
 * Every routine is a weak default in a module of its own: a host that defines one of them gets its
 * own instead, in the static archive and in the shared object alike. A host that replaces the
 * sectioned reader replaces all five of its routines, and likewise the three of the plain reader.
 *
 * A status is negative for a failure and carries what failed and in which line; intl_errstr gives
 * its words at any later time. A handle serves one thread at a time; different handles are
 * independent. A null pointer argument and a negative length stop the process.
 *
 * Sectioned files
 *
 *     ; a comment: blanks may come before the ";"
 *     [section]
 *     key = value, another value, " a value with, blanks "" and quotes "
 *
 * Blanks (spaces and tabs) around names and unquoted values do not count. n commas separate n + 1
 * values, any of which may be empty. Lines end in LF or CR LF and have any length. A quoted value
 * ends on its line.
 */
#ifndef COMNLIB_INTL_H
#define COMNLIB_INTL_H

#include "comnlib/types.h"

#ifdef __cplusplus
extern "C" {
#endif

/** An open file, of either reader. */
typedef CS_VOID* INTL_HANDLE;

/**
 * The one status with a meaning to callers: there is no memory. The library returns CS_MEM_ERROR
 * for it, also when it comes from a host's own reader.
 */
#define INTL_NO_MEMORY (-2147483647 - 1)

/**
 * The localization home: the value of the environment variable TALVEN when it is set and not empty,
 * else the home directory of the user "talven", else the home that was installed with the library:
 * share/comnlib/home below the prefix of the shared object or, in a program that is linked with the
 * archive, below the prefix of the program. Writes what fits into the `buflen` bytes at `buffer`,
 * with a NUL when there is room. Returns the length of the whole name, or a negative status.
 */
COMN_API CS_INT intl_home(CS_CHAR* buffer, CS_INT buflen);

/**
 * The value of an environment variable, with its NUL, into the `dstlen` bytes at `dst`. Returns its
 * length; 0 when it is unset or empty (`dst` is then unchanged); a negative status when it does not
 * fit. Do not call it while another thread changes the environment.
 */
COMN_API CS_INT intlgetenv(CS_CHAR* dst, CS_INT dstlen, const CS_CHAR* name);

/**
 * Opens a sectioned file and reads it whole. Stores a handle for intl_close and returns 0, or
 * stores null and returns a negative status. Only regular files of at most 256 MB are opened; a
 * file that ends before or after its size says is refused, since it is being written.
 */
COMN_API CS_INT intl_open(const CS_CHAR* path, INTL_HANDLE* handle);

/** @name The sectioned reader's steps
 * Each returns a NUL-terminated text that stays until intl_close, with `status` 0; null with
 * `status` 0 at the end of the file, section or entry; null with a negative `status` for a
 * malformed line, after which reading may continue. Lines and values that are skipped are not
 * checked. A host's own reader may keep a text for less long: the library does not use it after its
 * next call for the same file. */
/**@{*/
/** The name of the next section, past the rest of the current one. */
COMN_API const CS_CHAR* intl_nextsection(INTL_HANDLE handle, CS_INT* status);

/** The key of the next entry of the current section. */
COMN_API const CS_CHAR* intl_nextentry(INTL_HANDLE handle, CS_INT* status);

/** The next value of the current entry. */
COMN_API const CS_CHAR* intl_nextvalue(INTL_HANDLE handle, CS_INT* status);
/**@}*/

/** Closes the file and frees what intl_open allocated. 0 or a negative status. */
COMN_API CS_INT intl_close(INTL_HANDLE handle);

/**
 * The words of a negative status, such as "line 12: the entry has no '='", cut to `buflen` - 1
 * bytes and NUL-terminated. Returns the length of the whole text.
 */
COMN_API CS_INT intl_errstr(CS_INT status, CS_CHAR* buffer, CS_INT buflen);

/** @name The plain reader */
/**@{*/
/** Opens a regular file of at most 256 MB; stores and returns as intl_open. */
COMN_API CS_INT intl_iocsfopen(const CS_CHAR* path, INTL_HANDLE* handle);

/**
 * Reads up to `buflen` next bytes; returns how many, 0 at the end of the file, or a negative
 * status, also when the file ends before or after its size says.
 */
COMN_API CS_INT intl_iocsfread(INTL_HANDLE handle, CS_BYTE* buffer, CS_INT buflen);

/** Closes the file. 0 or a negative status; the handle is not valid afterwards in either case. */
COMN_API CS_INT intl_iocsfclose(INTL_HANDLE handle);
/**@}*/

#ifdef __cplusplus
}
#endif

#endif
