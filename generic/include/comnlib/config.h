/**
 * @file
 * Configuration files: the scanner, the parser, and the store of a context's configuration.
 *
 *     ; a comment: only blanks may come before the ";"
 *     [section]
 *     name = value
 *     other = "quoted, with "" and line ends" and.more\
 *             pieces
 *     include "other.cfg"
 *
 * docs/file-formats.md has the grammar. A null pointer stops the process unless the routine says
 * that it may be null; so does a negative length. intl_errstr of intl.h, which is installed beside
 * this header, gives the words of a status in ctxintlerr.
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
  CFG_END = 0,             /**< the end of the file, or where reading it failed */
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
  CFG_SPACE = 270 /**< blanks, or a comment with the blanks before it, up to the line end */
};

/** Limits of one load. */
enum {
  CFG_MAX_DEPTH = 16,  /**< files that include files, this deep below the first */
  CFG_MAX_FILES = 1000 /**< files read, each as often as it is included */
};

/** A parse over one file. Serves one thread at a time. */
typedef struct _cfgparseinfo CfgParseInfo;

/**
 * When not 0, cfg__lex prints each token as `cfg__lex: %s >%s<\n` to the debug output. Not to be
 * changed while another thread scans.
 */
COMN_API extern CS_INT cfg__debug;

/**
 * Opens the file and prepares a parse over it, which cfg__clean_parse releases. CS_SUCCEED; CS_FAIL
 * when it cannot be opened, which com_perr reports, the companion library's status in ctxintlerr;
 * CS_MEM_ERROR. `*parse` is set on success only.
 */
COMN_API CS_RETCODE cfg__open_parse(CS_CONTEXT* context, const CS_CHAR* path, CfgParseInfo** parse);

/**
 * The next token. When several tokens match, the longest wins; among equally long ones the one with
 * the lower code, but at the beginning of a line a comment wins over a value.
 */
COMN_API CS_INT cfg__lex(CfgParseInfo* parse);

/**
 * The bytes that the last token matched, valid until the next cfg__lex, and their number. Not
 * terminated.
 */
COMN_API const CS_CHAR* cfg__toktext(CfgParseInfo* parse, CS_INT* length);

/**
 * Checks the syntax of the rest of the file. Lines that include files are checked too, but no other
 * file is opened.
 * CS_SUCCEED; CS_FAIL for an error in the file or in reading it; CS_MEM_ERROR. Both are reported by
 * com_perr with file, line and what was expected. A file of more than 256 MB is an error.
 */
COMN_API CS_RETCODE cfg__parse(CfgParseInfo* parse);

/** Closes the file and releases the parse. CS_SUCCEED; CS_FAIL when the file did not close. */
COMN_API CS_RETCODE cfg__clean_parse(CfgParseInfo* parse);

/**
 * Loads a file and what it includes as the context's configuration. A null path means
 * config/nuv.cfg below the localization home, or VALUE/config/nuv.cfg below it when the environment
 * variable TALVEN_NUV has a VALUE. Sections with the same name are one section; of several entries
 * with the same name the last counts. Entries before the first section header belong to the section
 * of the empty name; in an included file, to the section of the include line. That section
 * continues after the line.
 *
 * When a configuration is loaded already, loading the same path again succeeds at once; paths are
 * compared as texts.
 *
 * CS_SUCCEED; CS_FAIL when another path is loaded, when the default one is too long
 * (com_path_cfgfile, 1,025 bytes), and as cfg__parse and cfg__open_parse; CS_INTL_LIBERR, without a
 * report, when there is no home, the status in ctxintlerr; CS_MEM_ERROR. Nothing of the file is
 * kept then. A home of more than 1,025 bytes stops the process. The host serialises loading and
 * dropping. The calling thread is not cancelled meanwhile.
 */
COMN_API CS_RETCODE comn_init_cfg(CS_CONTEXT* context, const CS_CHAR* path);

/**
 * The value of an entry. Names are exact and NUL-terminated. Copies the value, with a NUL after it
 * when there is room, and stores its length, which does not count the NUL. Returns CS_FAIL (a) when
 * there is no such entry: the stored length is 0; (b) when the value is longer than `buflen`: its
 * length is stored, nothing is copied. `buffer` may be null when `buflen` is 0. Any number of
 * threads may look up entries while no thread loads or drops the configuration.
 */
COMN_API CS_RETCODE comn_get_cfg(CS_CONTEXT* context, const CS_CHAR* section, const CS_CHAR* entry,
                                 CS_CHAR* buffer, CS_INT buflen, CS_INT* outlen);

/** An entry of a loaded configuration. The texts stay until it is dropped. */
typedef struct _cscfgentry {
  const CS_CHAR* name;  /**< NUL-terminated */
  const CS_CHAR* value; /**< with a NUL after it */
  CS_INT valuelen;      /**< bytes of the value, which may hold NULs; the last one does not count */
  const CS_CHAR* file;  /**< path of the file that the value comes from, NUL-terminated */
  CS_INT line;          /**< where the entry begins in that file */
} CS_CFGENTRY;

/**
 * comn_next_cfg_section, comn_next_cfg_entry: walk the loaded configuration: its sections, and the
 * entries of the section with that name, in the order in which their names first appear in the
 * files. `*position` is where the walk is: 0 before the first call, then what the previous call
 * stored. As with look-ups, any number of walks may go on at once.
 *
 *     CS_INT at = 0;
 *     const CS_CHAR* section;
 *     while (comn_next_cfg_section(&context, &at, &section) == CS_SUCCEED) {
 *       CS_INT within = 0;
 *       CS_CFGENTRY entry;
 *       while (comn_next_cfg_entry(&context, section, &within, &entry) == CS_SUCCEED)
 *         printf("%s.%s = %s\n", section, entry.name, entry.value);
 *     }
 *
 * CS_SUCCEED; CS_END_DATA after the last one; CS_FAIL when nothing is loaded or there is no such
 * section. Nothing is stored without CS_SUCCEED. A position of another walk stops the process.
 */
/**@{*/
COMN_API CS_RETCODE comn_next_cfg_section(CS_CONTEXT* context, CS_INT* position,
                                          const CS_CHAR** name);
COMN_API CS_RETCODE comn_next_cfg_entry(CS_CONTEXT* context, const CS_CHAR* section,
                                        CS_INT* position, CS_CFGENTRY* entry);
/**@}*/

/** Frees the context's configuration, if there is one. CS_SUCCEED. */
COMN_API CS_RETCODE comn_drop_cfg(CS_CONTEXT* context);

COMN_STATIC_ASSERT(sizeof(CS_CFGENTRY) == COMN_BY_HOST(20, 40));
COMN_STATIC_ASSERT(offsetof(CS_CFGENTRY, line) == COMN_BY_HOST(16, 32));

#ifdef __cplusplus
}
#endif

#endif
