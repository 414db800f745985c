/**
 * @file
 * The context record. The host creates it (zero-filled), sets ctxversion, its allocator and its
 * opaque hooks, and passes it as the first argument to nearly every routine.
 *
 * The host sets the fields marked "host" before the calls that need them; the library writes none
 * of them, but clears ctxlocale and ctxdeflocale when it frees the locale there. The other fields
 * are set by the routine named beside them, and the host does not change them.
 */
#ifndef COMNLIB_CONTEXT_H
#define COMNLIB_CONTEXT_H

#include "types.h"

#ifdef __cplusplus
extern "C" {
#endif

typedef struct _cscontext CS_CONTEXT;

/**
 * A conversion routine: converts the value at `src`, described by `srcfmt`, into the value at
 * `dest`, described by `destfmt`, and stores the number of bytes written through `destlen`.
 * See convert.h for the calling rules.
 */
typedef CS_RETCODE (*CS_CONV_FUNC)(CS_CONTEXT* context, const CS_DATAFMT* srcfmt,
                                   const CS_VOID* src, const CS_DATAFMT* destfmt, CS_VOID* dest,
                                   CS_INT* destlen);

/** The context's conversion matrix, row-major: source s to destination d is at s * cvtdim + d. */
typedef struct _csconverttbl {
  CS_CONV_FUNC* cvttbl; /**< owned by the context; null before com_conv_init */
  int cvtdim;           /**< CS_BUILTIN_TYPES */
} CsConvertTbl;

/**
 * A user-installed conversion. The nodes form a list of lists: nextsrc links the first nodes of all
 * source types, nextdest the destinations of one source type.
 */
typedef struct _csusrcvtfunc {
  CS_INT srctype;                 /**< source datatype */
  CS_INT desttype;                /**< destination datatype */
  CS_CONV_FUNC cvtfunc;           /**< null once reset to the default */
  struct _csusrcvtfunc* nextdest; /**< same source, next destination */
  struct _csusrcvtfunc* nextsrc;  /**< next source; set in the first node of each only */
} CsUsrCvtFunc;

/** Null value of one built-in type. */
typedef struct _csdefval {
  CS_VOID* dventity; /**< owned by the table */
  CS_INT dvsize;     /**< bytes at dventity */
  CS_INT dvpadtype;  /**< 1 character, 2 binary, 3 none, 4 Unicode character */
} CsDefVal;

/** The null values of the built-in types. */
typedef struct _csnulltbl {
  CsDefVal* nullvals; /**< owned by the context, by datatype code */
  int nulldim;        /**< CS_BUILTIN_TYPES */
} CsNullTbl;

/** Null value of a user type. */
typedef struct _csusrnull {
  CS_INT dttype;               /**< datatype code */
  CS_VOID* dventity;           /**< owned by the node, or null */
  CS_INT dvsize;               /**< bytes at dventity */
  struct _csusrnull* nextnull; /**< in the context's list, newest first */
} CsUsrNull;

typedef struct _csctxglobals CsCtxGlobals;
/** A loaded configuration; opaque. */
typedef struct _csconfig CsConfig;
typedef struct _cs_thread CS_THREAD;
typedef struct _comnmutex_ COMN_MUTEX;

/** Allocator of a context: `size` in bytes; null on failure. */
typedef CS_VOID* (*CS_CTXMALLOC_FUNC)(CS_CONTEXT* context, CS_INT size);
/** Gives back what the context's allocator gave. */
typedef CS_VOID (*CS_CTXFREE_FUNC)(CS_CONTEXT* context, CS_VOID* block);

/** The host's error handler; kept for the host, never called by this library. */
typedef CS_RETCODE (*CS_ERROR_FUNC)(CS_CONTEXT* context, CS_VOID* message);

/** The context of a host. */
struct _cscontext {
  CS_INT ctxtag;            /**< host */
  CS_INT ctxstatus;         /**< host */
  CS_INT ctxversion;        /**< host: 113 or above for pools; nothing else reads it */
  CS_LOCALE* ctxlocale;     /**< host, by locale.h: used where a data format has none */
  CS_LOCALE* ctxdeflocale;  /**< host, by locale.h: kept for the host, comn_loc_drop_all frees it */
  CsCtxGlobals* ctxglobals; /**< host: what locale.h keeps for this context */
  CsConvertTbl ctxcvttbl;   /**< convert.h: set by com_conv_init */
  CsUsrCvtFunc* ctxusrcvttbl;  /**< convert.h: set by com_conv_install */
  CsNullTbl ctxnulls;          /**< convert.h: set by com_null_init */
  CsUsrNull* ctxusrnulls;      /**< convert.h: set by com_null_set */
  CS_THREAD* ctxthread;        /**< host: the thread functions to lock with (thread.h), or null */
  int ctxintlerr;              /**< set on failure: last status of the companion library (intl.h) */
  CS_VOID* ctxctctx;           /**< host */
  CS_VOID* ctxnetwork;         /**< host */
  CS_VOID* ctxdsctx;           /**< host */
  CS_VOID* ctxssctx;           /**< host */
  CS_VOID* ctxopenserver;      /**< host */
  CS_VOID* ctxcsctx;           /**< host */
  COMN_MUTEX* ctxmtx;          /**< host: lock of this context */
  CS_VOID* usercharconv;       /**< host: user character-conversion data */
  CsConfig* ctxconfig;         /**< config.h: set by comn_init_cfg */
  CS_CTXMALLOC_FUNC ctxmalloc; /**< host: where pools take their chunks from */
  CS_CTXFREE_FUNC ctxfree;     /**< host: where pools give them back */
  CS_ERROR_FUNC ctxerrfunc;    /**< host */
  CS_VOID* ctxcomerrhan;       /**< host */
};

COMN_STATIC_ASSERT(sizeof(CsConvertTbl) == COMN_BY_HOST(8, 16));
COMN_STATIC_ASSERT(sizeof(CsUsrCvtFunc) == COMN_BY_HOST(20, 32));
COMN_STATIC_ASSERT(offsetof(CsUsrCvtFunc, nextdest) == COMN_BY_HOST(12, 16));
COMN_STATIC_ASSERT(sizeof(CsDefVal) == COMN_BY_HOST(12, 16));
COMN_STATIC_ASSERT(sizeof(CsNullTbl) == COMN_BY_HOST(8, 16));
COMN_STATIC_ASSERT(sizeof(CsUsrNull) == COMN_BY_HOST(16, 32));
COMN_STATIC_ASSERT(sizeof(CS_CONTEXT) == COMN_BY_HOST(108, 208));
COMN_STATIC_ASSERT(offsetof(CS_CONTEXT, ctxlocale) == COMN_BY_HOST(12, 16));
COMN_STATIC_ASSERT(offsetof(CS_CONTEXT, ctxdeflocale) == COMN_BY_HOST(16, 24));
COMN_STATIC_ASSERT(offsetof(CS_CONTEXT, ctxglobals) == COMN_BY_HOST(20, 32));
COMN_STATIC_ASSERT(offsetof(CS_CONTEXT, ctxcvttbl) == COMN_BY_HOST(24, 40));
COMN_STATIC_ASSERT(offsetof(CS_CONTEXT, ctxusrcvttbl) == COMN_BY_HOST(32, 56));
COMN_STATIC_ASSERT(offsetof(CS_CONTEXT, ctxnulls) == COMN_BY_HOST(36, 64));
COMN_STATIC_ASSERT(offsetof(CS_CONTEXT, ctxusrnulls) == COMN_BY_HOST(44, 80));
COMN_STATIC_ASSERT(offsetof(CS_CONTEXT, ctxthread) == COMN_BY_HOST(48, 88));
COMN_STATIC_ASSERT(offsetof(CS_CONTEXT, ctxintlerr) == COMN_BY_HOST(52, 96));
COMN_STATIC_ASSERT(offsetof(CS_CONTEXT, ctxctctx) == COMN_BY_HOST(56, 104));
COMN_STATIC_ASSERT(offsetof(CS_CONTEXT, ctxcsctx) == COMN_BY_HOST(76, 144));
COMN_STATIC_ASSERT(offsetof(CS_CONTEXT, ctxmtx) == COMN_BY_HOST(80, 152));
COMN_STATIC_ASSERT(offsetof(CS_CONTEXT, usercharconv) == COMN_BY_HOST(84, 160));
COMN_STATIC_ASSERT(offsetof(CS_CONTEXT, ctxconfig) == COMN_BY_HOST(88, 168));
COMN_STATIC_ASSERT(offsetof(CS_CONTEXT, ctxmalloc) == COMN_BY_HOST(92, 176));
COMN_STATIC_ASSERT(offsetof(CS_CONTEXT, ctxfree) == COMN_BY_HOST(96, 184));
COMN_STATIC_ASSERT(offsetof(CS_CONTEXT, ctxerrfunc) == COMN_BY_HOST(100, 192));
COMN_STATIC_ASSERT(offsetof(CS_CONTEXT, ctxcomerrhan) == COMN_BY_HOST(104, 200));

#ifdef __cplusplus
}
#endif

#endif
