/**
 * @file
 * Configuration files: the scanner, the parser, and the store of a context's configuration.
 *
 *     ; a comment: nothing but blanks may stand before the ";"
 *     [section]
 *     name = value
 *     other = "quoted, with "" and line ends" and.more\
 *             pieces
 *     include "other.cfg"
 *
 * docs/file-formats.md has the grammar.
 */
#ifndef COMNLIB_CONFIG_H
#define COMNLIB_CONFIG_H

#include "context.h"
#include "result.h"
#include "types.h"

#ifdef __cplusplus
extern "C" {
#endif

/** Tokens of cfg__lex. */
enum {
  CFG_END = 0,             /**< the file's end, or where it could not be read on */
  CFG_INCLUDE = 257,       /**< the word include in any case */
  CFG_CONTINUATION = 258,  /**< a backslash and a line end */
  CFG_EQUALS = 259,        /**< = */
  CFG_ESCAPED_QUOTE = 260, /**< two quotes inside a string: one quote of its text */
  CFG_IDENT = 261,         /**< a letter, then letters, digits and # . / _ */
  CFG_OPEN = 262,          /**< [ */
  CFG_NEWLINE = 263,       /**< LF or CR LF */
  CFG_CLOSE = 264,         /**< ] */
  CFG_STRING_VALUE = 265,  /**< a run of a string's text */
  CFG_STRING_END = 266,    /**< the closing quote */
  CFG_STRING_START = 267,  /**< an opening quote */
  CFG_UNKNOWN = 268,       /**< a lone CR or backslash */
  CFG_VALUE = 269,         /**< a run of other characters */
  CFG_SPACE = 270          /**< blanks, or a comment: a line's blanks, ";" and all but its end */
};

/**
 * Limits: files may include files that include files, and so on, to this depth below the first, and
 * one load reads this many files at most, each as often as it is included.
 */
enum { CFG_MAX_DEPTH = 16, CFG_MAX_FILES = 1000 };

/** A parse over one file. Serves one thread at a time. */
typedef struct _cfgparseinfo CfgParseInfo;

/**
 * When not 0, cfg__lex prints each token as `cfg__lex: %s >%s<\n` to the debug output. Not to be
 * changed while another thread scans.
 */
COMN_API extern CS_INT cfg__debug;

/**
 * Opens the file and prepares a parse over it, which cfg__clean_parse releases. CS_SUCCEED; CS_FAIL
 * when it cannot be opened, reported, the companion library's status in ctxintlerr; CS_MEM_ERROR.
 */
COMN_API CS_RETCODE cfg__open_parse(CS_CONTEXT* context, const CS_CHAR* path, CfgParseInfo** parse);

/** The next token. The longest match counts; of equal ones the lower code. */
COMN_API CS_INT cfg__lex(CfgParseInfo* parse);

/**
 * The bytes that the last token matched, valid until the next cfg__lex, and their number. Not
 * terminated.
 */
COMN_API const CS_CHAR* cfg__toktext(CfgParseInfo* parse, CS_INT* length);

/**
 * Parses the rest of the file and the files that it includes; over a parse of cfg__open_parse it
 * only checks them.
 * CS_SUCCEED; CS_FAIL for an error in a file or in reading it, CS_MEM_ERROR. Both are reported by
 * com_perr with file, line and what was expected.
 */
COMN_API CS_RETCODE cfg__parse(CfgParseInfo* parse);

/** Closes the file and releases the parse. CS_SUCCEED; CS_FAIL when the file did not close. */
COMN_API CS_RETCODE cfg__clean_parse(CfgParseInfo* parse);

/**
 * Loads a file and what it includes as the context's configuration; null names the file "nuv.cfg"
 * below config/ of the localization home, or of its subdirectory that the environment variable
 * TALVEN_NUV names. Where one is loaded already, the same path shares it. Sections of one name are
 * one section, and of several entries of one name the last counts. CS_SUCCEED; CS_FAIL when another
 * path is loaded, when com_path_cfgfile finds the default one too long for 1,025 bytes, and as
 * cfg__parse and cfg__open_parse; CS_INTL_LIBERR when there is no home, the status in ctxintlerr;
 * CS_MEM_ERROR. Nothing of the file is kept then. The host serialises loading and dropping.
 */
COMN_API CS_RETCODE comn_init_cfg(CS_CONTEXT* context, const CS_CHAR* path);

/**
 * The value of an entry. Names are exact and NUL-terminated. Copies the value, with a NUL behind it
 * when there is room, and stores its length, which does not count the NUL. CS_SUCCEED; CS_FAIL when
 * there is no such entry, the length then 0, and when `buflen` is below the length, which is stored
 * and nothing copied. `buffer` may be null when `buflen` is 0. Any number of threads may look up
 * while none loads or drops.
 */
COMN_API CS_RETCODE comn_get_cfg(CS_CONTEXT* context, const CS_CHAR* section, const CS_CHAR* entry,
                                 CS_CHAR* buffer, CS_INT buflen, CS_INT* outlen);

/** Frees the context's configuration, if there is one. CS_SUCCEED. */
COMN_API CS_RETCODE comn_drop_cfg(CS_CONTEXT* context);

#ifdef __cplusplus
}
#endif

#endif
