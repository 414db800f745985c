/**
 * @file
 * Localization: the files below the localization home, the locales of a context, and the records
 * that describe them.
 *
 * Set-up of a context: the host sets ctxglobals to a zero-filled CsCtxGlobals with a mutex in
 * cmg_mtx, calls comn_intl_init, without which no load succeeds, loads a locale with
 * comn_intl_load, and points the categories of a CS_LOCALE at the entry. At the end it calls
 * comn_loc_drop_all, com_intl_loccache_drop, com_intl_chardesc_drop, comn_lm_exit, and deletes the
 * mutex. The globals are zero-filled again before a second set-up: CsCtxGlobals.lm, for one, still
 * points at the closed list manager.
 *
 * Results are CS_SUCCEED, CS_FAIL, CS_MEM_ERROR, CS_INTL_LIBERR (a call of the companion library
 * failed; its status is in ctxintlerr) and CS_INTL_NOFILE (a file could not be opened; the status
 * is in ctxintlerr). A reader that finds no memory gives CS_MEM_ERROR.
 *
 * An error buffer (`errbuf`, `errlen` bytes; null for none) receives the path of the file that was
 * opened last, cut to fit and NUL-terminated, on success too. A call that opens no file, such as
 * the load of a locale that is loaded already, does not change it: set it to "" first.
 *
 * A character set that cannot be loaded is also reported through com_perr, that is on standard
 * error and in tlvinit.err.
 *
 * A null pointer stops the process unless its routine says otherwise, and so do a buffer length
 * below 1, a category, level, kind or item out of range, and in comn_intl_init and the loads a home
 * of more than 1,025 bytes. Lengths of names are bytes without a NUL; CS_NULLTERM means up to their
 * NUL.
 *
 * Loading and the routines on locale records hold the context's cmg_mtx, through the context's
 * thread table when it has one; they may be called from several threads. A thread that is cancelled
 * during set-up or while it holds the mutex finishes that first. The path builders keep no state.
 * Set-up and end are one thread's work. Records that were handed out are only read.
 */
#ifndef COMNLIB_LOCALE_H
#define COMNLIB_LOCALE_H

#include "charset.h"
#include "context.h"
#include "list.h"
#include "result.h"
#include "types.h"

#ifdef __cplusplus
extern "C" {
#endif

/** Categories of a locale, in the order of its pointers. */
enum {
  COM_LC_COLLATE = 1,
  COM_LC_CTYPE = 2,
  COM_LC_MESSAGE = 3,
  COM_LC_MONETARY = 4,
  COM_LC_NUMERIC = 5,
  COM_LC_TIME = 6,
  COM_LC_ALL = 7 /**< for com_intl_envloc only */
};

/** Items of com_intl_getstr. */
enum {
  COM_LOC_CHARSET = 1,
  COM_LOC_LANGUAGE = 2,
  COM_LOC_SORTORDER = 3,
  COM_LOC_LANGCHARSET = 4 /**< language "." character set */
};

/** Levels of com_intl_loccmp. */
enum { COM_LOCCMP_CHARSET = 1, COM_LOCCMP_MESSAGE = 2, COM_LOCCMP_SORTORDER = 3 };

/** Sizes in bytes. */
enum {
  COM_LOC_NAMESIZE = 256, /**< a value of locales.dat with its NUL */
  COM_NUV_ROOM = 513      /**< bytes that com_path_cfgfile may need beyond its buffer length */
};

typedef CS_INT CsOid;                    /**< global object identifier, from config/objectid.dat */
typedef struct _cssortorder CsSortOrder; /**< a sort order; opaque, like those below */
typedef struct _csmessage CsMessage;     /**< the messages of a language */
typedef struct _csdateinfo CsDateInfo;   /**< date and time conventions */
typedef struct _csnuminfo CsNumInfo;     /**< number conventions */
typedef struct _csmoninfo CsMonInfo;     /**< money conventions */
typedef struct _csconvconfig CsConvConfig; /**< the conversions of a character set */

/** A character set that the context has loaded. */
typedef struct _cschardesc {
  CsOid oid;                       /**< key of the list */
  struct char_attrib* char_attrib; /**< owned, with its maps */
  CsSortOrder* sort_order;         /**< shared, or null */
  CsConvConfig* conv_config;       /**< owned */
  struct _cschardesc* charnext;    /**< in the context's list */
} CsCharDesc;

/**
 * What was loaded under one locale name. The names are owned copies that end in a NUL; everything
 * else is shared and stays until the context's drop routines.
 */
typedef struct _csloccache {
  CS_CHAR* locname;            /**< locale name */
  CS_INT locnamelen;           /**< its length */
  CS_CHAR* charname;           /**< character set */
  CS_INT charnamelen;          /**< length of its name */
  CsCharDesc* locchardesc;     /**< the character set */
  CS_CHAR* sortname;           /**< sort order */
  CS_INT sortnamelen;          /**< length of its name */
  CsSortOrder* locsortorder;   /**< the sort order, or null */
  CS_CHAR* langname;           /**< language */
  CS_INT langnamelen;          /**< length of its name */
  CsMessage* locmessage;       /**< its messages */
  CS_CHAR* com__datename;      /**< date/time conventions, or null */
  CS_INT datenamelen;          /**< length of their name */
  CsDateInfo* locdateinfo;     /**< the conventions; null when locales.dat names them */
  CS_CHAR* numname;            /**< number conventions, or null */
  CS_INT numnamelen;           /**< length of their name */
  CsNumInfo* locnuminfo;       /**< the conventions; null as locdateinfo; see comn_loc_digits */
  CS_CHAR* monname;            /**< money conventions, or null */
  CS_INT monnamelen;           /**< length of their name */
  CsMonInfo* locmoninfo;       /**< the conventions, or null */
  struct _csloccache* locnext; /**< in the context's list */
} CsLocCache;

/** A locale: a cache entry for each category. It owns none of them; null: no entry. */
struct _cslocale {
  CsLocCache* collateptr;  /**< category COM_LC_COLLATE */
  CsLocCache* ctypeptr;    /**< category COM_LC_CTYPE */
  CsLocCache* messageptr;  /**< category COM_LC_MESSAGE */
  CsLocCache* monetaryptr; /**< category COM_LC_MONETARY */
  CsLocCache* numericptr;  /**< category COM_LC_NUMERIC */
  CsLocCache* timeptr;     /**< category COM_LC_TIME */
  CS_LOCALE* next;         /**< in the context's list */
};

/** The entry of a locale in locales.dat: NUL-terminated values; length 0: not given. */
typedef struct _cslocnames {
  CS_CHAR charset[COM_LOC_NAMESIZE];   /**< character set */
  CS_INT charsetlen;                   /**< its length */
  CS_CHAR lang[COM_LOC_NAMESIZE];      /**< language */
  CS_INT langlen;                      /**< its length */
  CS_CHAR sortorder[COM_LOC_NAMESIZE]; /**< sort order */
  CS_INT sortorderlen;                 /**< its length */
  CS_CHAR datetime[COM_LOC_NAMESIZE];  /**< date/time conventions */
  CS_INT datetimelen;                  /**< their name's length */
  CS_CHAR numeric[COM_LOC_NAMESIZE];   /**< number conventions */
  CS_INT numericlen;                   /**< their name's length */
  CS_CHAR money[COM_LOC_NAMESIZE];     /**< money conventions */
  CS_INT moneylen;                     /**< their name's length */
} CsLocNames;

/**
 * The localization globals of a context. The host makes the record zero-filled and sets cmg_mtx;
 * all other fields are the library's.
 */
struct _csctxglobals {
  CsLocCache* cmg_lcache; /**< loaded locales, newest first; guarded by cmg_mtx */
  CS_LOCALE* cmg_locale;  /**< allocated locale records; guarded by cmg_mtx */
  COMN_MUTEX* cmg_mtx;    /**< the host's: made before comn_intl_init, deleted after comn_lm_exit */
  CsCharDesc* utf8_charset; /**< not null once comn_intl_init has succeeded */
  LM_CONTEXT* lm;           /**< the library's lists of this context */
  CsOid ucs2_oid;           /**< identifier of the character set ucs2 */
  CS_INT cmg_count;         /**< the host's */
  CsCharDesc* cmg_chardesc; /**< loaded character sets */
  CsDateInfo* cmg_datetime; /**< loaded date and time conventions */
  CsMonInfo* cmg_money;     /**< loaded money conventions */
  CsNumInfo* cmg_numeric;   /**< loaded number conventions */
  CsMessage* cmg_message;   /**< loaded messages */
  CS_VOID* mnem_db;         /**< not used */
  CS_INT max_mnem_strlen;   /**< not used */
  CS_VOID* ctxoids;         /**< object identifiers, sort orders and conversion tables */
};

/** @name Paths below the localization home
 * Each path begins with the home as intl_home gives it; a home longer than `buflen` stops the
 * process. CS_FAIL when the path is longer than `buflen`; the buffer then holds its beginning. A
 * path of exactly `buflen` bytes is stored without a NUL, so give one byte more. CS_INTL_LIBERR
 * when there is no home. */
/**@{*/
/** HOME/name. */
COMN_API CS_RETCODE com_path_anyfile(CS_CONTEXT* ctx, CS_CHAR* buf, CS_INT buflen,
                                     const CS_CHAR* name, CS_INT namelen);

/** HOME/interfaces. */
COMN_API CS_RETCODE com_path_ifile(CS_CONTEXT* ctx, CS_CHAR* buf, CS_INT buflen);

/**
 * HOME/config/name; with `use_nuv` HOME/VALUE/config/name, where VALUE is the value of the
 * environment variable TALVEN_NUV, left out when it is unset or longer than 512 bytes. "/VALUE" is
 * not counted: `buf` must have COM_NUV_ROOM bytes more than `buflen`.
 */
COMN_API CS_RETCODE com_path_cfgfile(CS_CONTEXT* ctx, const CS_CHAR* name, CS_CHAR* buf,
                                     CS_INT buflen, CS_BOOL use_nuv);
/**@}*/

/**
 * The locale name in the environment, NUL-terminated. Reads one variable: for category 1
 * LC_COLLATE, 2 LC_CTYPE, 3 LC_MESSAGE (not LC_MESSAGES), 4 LC_MONETARY, 5 LC_NUMERIC, 6 LC_TIME,
 * 7 LC_ALL. When it is unset or empty, LANG; then "default", cut to fit. LC_ALL does not override
 * the others. CS_INTL_LIBERR when a value does not fit.
 */
COMN_API CS_RETCODE com_intl_envloc(CS_CONTEXT* ctx, CS_INT category, CS_CHAR* dst, CS_INT dstlen);

/**
 * Loads what every context needs: the character set utf8, the sort order binary, the identifier of
 * ucs2, the list manager and the table of built-in conversion algorithms. A context that has them
 * succeeds at once; one whose call failed may call again.
 */
COMN_API CS_RETCODE comn_intl_init(CS_CONTEXT* ctx, CS_CHAR* errbuf, CS_INT errlen);

/**
 * The cache entry of a locale name, loaded on first use. A failed load leaves the cache and `entry`
 * as they were. CS_FAIL also when locales.dat does not have the name.
 */
COMN_API CS_RETCODE comn_intl_load(CS_CONTEXT* ctx, const CS_CHAR* locname, CS_INT locnamelen,
                                   CsLocCache** entry, CS_CHAR* errbuf, CS_INT errlen);

/**
 * comn_intl_load with character set, language and sort order given by the caller and the
 * conventions of their common.loc. Hands back a loaded entry when all four names agree with it; a
 * second entry of one locale name never takes the place of the first in comn_intl_load. All four
 * names must be given: an empty sort order is CS_FAIL.
 */
COMN_API CS_RETCODE comn_intl_load_tlvtypes(CS_CONTEXT* ctx, const CS_CHAR* locname,
                                            CS_INT locnamelen, const CS_CHAR* charname,
                                            CS_INT charnamelen, const CS_CHAR* langname,
                                            CS_INT langnamelen, const CS_CHAR* sortname,
                                            CS_INT sortnamelen, CsLocCache** entry, CS_CHAR* errbuf,
                                            CS_INT errlen);

/**
 * Copies a name (COM_LOC_ item) of the entry that serves a category (1 to 6) to `buf`, without a
 * NUL, and its length to `outlen`. CS_FAIL, with nothing stored, when `buflen` is below the length.
 * A category without an entry stops the process.
 */
COMN_API CS_RETCODE com_intl_getstr(const CS_LOCALE* locale, CS_INT category, CS_INT item,
                                    CS_CHAR* buf, CS_INT buflen, CS_INT* outlen);

/**
 * 0 when two locales agree for a category (1 to 6), else 1. They agree when they are one record,
 * name one entry, or share what the level (COM_LOCCMP_) compares.
 */
COMN_API CS_INT com_intl_loccmp(CS_INT category, CS_INT level, const CS_LOCALE* locale1,
                                const CS_LOCALE* locale2);

/**
 * Compares two texts by the locale's sort order: below 0, 0 or above 0. Without a sort order the
 * bytes are compared. Negative lengths stop the process, CS_NULLTERM too.
 */
COMN_API CS_INT com_intl_compare(const CS_LOCALE* locale, const CS_BYTE* text1, CS_INT length1,
                                 const CS_BYTE* text2, CS_INT length2);

/**
 * How a locale writes the digits of numbers, or of money. The texts have no NUL, are in the
 * locale's character set, never null, and stay until com_intl_loccache_drop. All groups have the
 * same size; for a language with groups of different sizes it is that of the last group (3 in
 * India, where people write 12,34,567).
 */
typedef struct com_digits {
  const CS_CHAR* decimal;   /**< the decimal mark */
  CS_INT decimallen;        /**< its length */
  const CS_CHAR* separator; /**< between groups of digits */
  CS_INT separatorlen;      /**< its length; 0: no groups */
  CS_INT grouping;          /**< digits of each group; 0: no groups */
  const CS_CHAR* symbol;    /**< the currency symbol; for money only */
  CS_INT symbollen;         /**< its length */
  CS_INT symbolafter;       /**< 1: the symbol comes after the amount, else 0 */
} com_digits;

/**
 * How the locale (null: the context's) writes numbers (`category` COM_LC_NUMERIC) or money
 * (COM_LC_MONETARY). It is for hosts that show values to people; conversions write a point and no
 * groups in every locale. Conventions that locales.dat names are read when they are first asked
 * for, under the context's cmg_mtx. Where the locale has no conventions, or there is no locale, the
 * answer is a point, no groups and no symbol. When the file cannot be read: CS_FAIL,
 * CS_INTL_NOFILE, CS_INTL_LIBERR or CS_MEM_ERROR, with nothing stored; the next call tries again.
 * Another category stops the process.
 */
COMN_API CS_RETCODE comn_loc_digits(CS_CONTEXT* ctx, const CS_LOCALE* locale, CS_INT category,
                                    com_digits* digits);

/** Compares two NUL-terminated texts by their bytes: below 0, 0 or above 0. */
COMN_API CS_INT com_unsignstrcmp(const CS_BYTE* string1, const CS_BYTE* string2);

/**
 * Converts a UTF-8 name to the character set of the locale (null: the context's). Characters that
 * the set lacks become its replacement character. CS_FAIL, with `outlen` unchanged, when `buflen`
 * is too short, the name is not UTF-8, the character set has no conversion, or neither locale has
 * one. An empty name has length 0.
 */
COMN_API CS_RETCODE com_intl_get_locname(CS_CONTEXT* ctx, const CS_LOCALE* locale,
                                         const CS_CHAR* utf8name, CS_INT utf8len, CS_CHAR* buf,
                                         CS_INT buflen, CS_INT* outlen);

/** The attributes of the locale's character set; null when it has none, or for a null locale. */
COMN_API const char_attrib* com_intl_charattr(const CS_LOCALE* locale);

/**
 * The identifier of `name` in a class ("charset", "natlang", "collate", "datetime", "numeric",
 * "money") of config/objectid.dat. CS_FAIL when it is not there.
 */
COMN_API CS_RETCODE comn_globalid(CS_CONTEXT* ctx, const CS_CHAR* oidclass, const CS_CHAR* name,
                                  CS_INT namelen, CsOid* oid);

/** @name Locale records */
/**@{*/
/**
 * Makes a record with the categories of the context's current locale, or with none when it has no
 * locale, and adds it to the context's list.
 */
COMN_API CS_RETCODE comn_loc_alloc(CS_CONTEXT* ctx, CS_LOCALE** locale);

/**
 * Takes a record out of the list and frees it; the context's ctxlocale and ctxdeflocale are cleared
 * when they are that record. A record that is in no list stops the process.
 */
COMN_API CS_RETCODE comn_loc_drop(CS_CONTEXT* ctx, CS_LOCALE* locale);

/**
 * Frees all records and the context's default locale, which is one of them or a record of the
 * host's own from comn_malloc. Clears ctxlocale and ctxdeflocale.
 */
COMN_API CS_RETCODE comn_loc_drop_all(CS_CONTEXT* ctx);

/** CS_SUCCEED when the record is in the list, else CS_FAIL. It may be any pointer but null. */
COMN_API CS_RETCODE comn_loc_validate(CS_CONTEXT* ctx, const CS_LOCALE* locale);

/** Copies the six categories of `src` into `dst`. CS_SUCCEED. */
COMN_API CS_RETCODE comn_loc_copy(CS_LOCALE* dst, const CS_LOCALE* src);
/**@}*/

/** @name The end of a context's localization */
/**@{*/
/** Frees all cache entries with their messages and conventions. */
COMN_API CS_RETCODE com_intl_loccache_drop(CS_CONTEXT* ctx);

/** Frees all character sets, sort orders and identifiers. */
COMN_API CS_RETCODE com_intl_chardesc_drop(CS_CONTEXT* ctx);

/** Closes the list manager that comn_intl_init opened (CsCtxGlobals.lm). */
COMN_API CS_RETCODE comn_lm_exit(LM_CONTEXT* lm);
/**@}*/

/**
 * Whether message file `file` of the locale's language can be read: CS_SUCCEED or CS_FAIL, with its
 * path in `pathbuf` ("*" when it does not fit). The locale must have a message category, and a home
 * longer than `pathlen` stops the process.
 */
COMN_API CS_RETCODE com_intl_verify_a_msgfile(CS_CONTEXT* ctx, const CS_LOCALE* locale,
                                              const CS_CHAR* file, CS_CHAR* pathbuf,
                                              CS_INT pathlen);

/**
 * Explains a set-up that has failed: prints, through com_perr, that it failed, the home, the locale
 * that the environment names, and each file of it that cannot be read. It does not check whether
 * anything failed. Changes nothing in the context.
 */
COMN_API CS_VOID com_intl_verify_ctxloc(CS_CONTEXT* ctx);

COMN_STATIC_ASSERT(sizeof(CsCharDesc) == COMN_BY_HOST(20, 40));
COMN_STATIC_ASSERT(sizeof(CsLocCache) == COMN_BY_HOST(84, 168));
COMN_STATIC_ASSERT(offsetof(CsLocCache, locchardesc) == COMN_BY_HOST(16, 32));
COMN_STATIC_ASSERT(offsetof(CsLocCache, locsortorder) == COMN_BY_HOST(28, 56));
COMN_STATIC_ASSERT(offsetof(CsLocCache, locmessage) == COMN_BY_HOST(40, 80));
COMN_STATIC_ASSERT(offsetof(CsLocCache, locdateinfo) == COMN_BY_HOST(52, 104));
COMN_STATIC_ASSERT(offsetof(CsLocCache, locnuminfo) == COMN_BY_HOST(64, 128));
COMN_STATIC_ASSERT(offsetof(CsLocCache, locmoninfo) == COMN_BY_HOST(76, 152));
COMN_STATIC_ASSERT(offsetof(CsLocCache, locnext) == COMN_BY_HOST(80, 160));
COMN_STATIC_ASSERT(sizeof(CS_LOCALE) == COMN_BY_HOST(28, 56));
COMN_STATIC_ASSERT(offsetof(CS_LOCALE, timeptr) == COMN_BY_HOST(20, 40));
COMN_STATIC_ASSERT(sizeof(com_digits) == COMN_BY_HOST(32, 48));
COMN_STATIC_ASSERT(sizeof(CsLocNames) == 1560);
COMN_STATIC_ASSERT(offsetof(CsLocNames, charsetlen) == 256);
COMN_STATIC_ASSERT(offsetof(CsLocNames, money) == 1300);
COMN_STATIC_ASSERT(sizeof(CsCtxGlobals) == COMN_BY_HOST(60, 112));
COMN_STATIC_ASSERT(offsetof(CsCtxGlobals, cmg_mtx) == COMN_BY_HOST(8, 16));
COMN_STATIC_ASSERT(offsetof(CsCtxGlobals, ucs2_oid) == COMN_BY_HOST(20, 40));
COMN_STATIC_ASSERT(offsetof(CsCtxGlobals, cmg_chardesc) == COMN_BY_HOST(28, 48));
COMN_STATIC_ASSERT(offsetof(CsCtxGlobals, ctxoids) == COMN_BY_HOST(56, 104));

#ifdef __cplusplus
}
#endif

#endif
