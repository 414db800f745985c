/**
 * @file
 * The list manager: keyed collections of five kinds behind one handle and one operation call.
 *
 * A list context owns its handles and the defaults of new ones. An element is a pair of caller
 * pointers, key and data: the list keeps the pointers, copies nothing, and never frees what they
 * point at. A key must not change while its element is in a list.
 *
 * A context with all its handles serves one thread at a time; the host serialises. Nothing is
 * shared between contexts. Memory comes from comn_malloc and comn_calloc.
 *
 * Every structure begins with its state. A dropped structure is zeroed, stamped LM_STATE_DROPPED
 * and freed; a call that meets any state but the one it expects stops the process. So does a null
 * handle, context, name or result address, where a routine does not say otherwise.
 */
#ifndef COMNLIB_LIST_H
#define COMNLIB_LIST_H

#include "result.h"
#include "types.h"

#ifdef __cplusplus
extern "C" {
#endif

/** No element: an absent key, no cursor where one is needed, the end of a walk, an empty queue. */
enum { LM_NOTFOUND = 34 };

/** States. */
enum {
  LM_STATE_BUILDING = 11,
  LM_STATE_DROPPED = 12,
  LM_STATE_READY = 13,  /**< of a slot: empty */
  LM_STATE_POOLED = 14, /**< a node parked in its handle's free-node pool */
  LM_STATE_IN_USE = 16  /**< a node or slot that holds an element */
};

/** List types. Allocating a list of type 17 gives CS_FAIL; any other number stops the process. */
enum {
  LM_DLINK = 13, /**< doubly linked list */
  LM_CHASH = 14, /**< hash table of chains */
  LM_DHASH = 16, /**< open-addressing hash table of fixed capacity */
  LM_QUEUE = 18,
  LM_STACK = 19
};

/** Operations of lm_list_op; see there. */
enum {
  LM_OP_INSERT = 20,
  LM_OP_DELETE = 21,
  LM_OP_FIND = 22,
  LM_OP_REPLACE = 23,
  LM_OP_FIRST = 24,
  LM_OP_LAST = 25,
  LM_OP_NONE = 26,
  LM_OP_NEXT = 27,
  LM_OP_PREVIOUS = 28,
  LM_OP_PRINT = 29,
  LM_OP_PRINT_ALL = 30,
  LM_OP_PRINT_DATA = 31,
  LM_OP_INSERT_BEFORE = 32,
  LM_OP_INSERT_AFTER = 33
};

/** Properties of a handle (lm_list_prop). */
enum {
  LM_PROP_LIST_TYPE = 1,
  LM_PROP_MAX_TABLESIZE = 2,
  LM_PROP_MAX_POOLSIZE = 3,
  LM_PROP_HANDLE_LOAD = 8,
  LM_PROP_CONTEXT = 9,
  LM_PROP_HANDLE_NAME = 10,
  LM_PROP_PRINT_FUNC = 11,
  LM_PROP_COMP_FUNC = 12
};

/**
 * Properties of a context (lm_property); 1 to 3 are those of a handle: the defaults of new ones.
 */
enum {
  LM_CTX_LIST_TYPE = 1,
  LM_CTX_MAX_TABLESIZE = 2,
  LM_CTX_MAX_POOLSIZE = 3,
  LM_CTX_VERSION = 4,
  LM_CTX_CONTEXT_LOAD = 5,
  LM_CTX_CUR_HANDLENAME = 6,
  LM_CTX_CUR_HANDLEADDR = 7
};

/** What a new context begins with. */
enum {
  LM_MIN_VERSION = 1100,
  LM_DEFAULT_LIST_TYPE = LM_DLINK,
  LM_DEFAULT_TABLESIZE = 10,
  LM_DEFAULT_POOLSIZE = 0
};

typedef struct _lmcontext LM_CONTEXT;
typedef struct _lmhandle LM_HANDLE;

/** Prints one element's data; 0 stops the walk. It must not change the list. */
typedef CS_RETCODE (*LM_PRINT_FUNC)(CS_VOID* data);
/** Compares an element's key with a sought key of key_size bytes; 0 is equal. */
typedef CS_INT (*LM_COMP_FUNC)(const CS_VOID* element_key, const CS_VOID* key, CS_INT key_size);
/** Maps a key to 0..table_size - 1 (home address) or to 1..table_size - 1 (increment). */
typedef CS_INT (*LM_HASH_FUNC)(const CS_VOID* key, CS_INT key_size, CS_INT table_size);

/** Element of a linked list, queue, stack or chain. */
typedef struct _dlinknode {
  CS_INT state;                /**< LM_STATE_ */
  CS_VOID* key;                /**< the caller's, or null */
  CS_INT key_size;             /**< bytes at key */
  CS_VOID* data;               /**< the caller's */
  struct _dlinknode* previous; /**< towards the head */
  struct _dlinknode* next;     /**< towards the tail; of a pooled node the next free one */
} DLinkNode;

/** Slot of an open-addressing table. */
typedef struct _lhashnode {
  CS_INT state;            /**< LM_STATE_ */
  CS_VOID* key;            /**< the caller's */
  CS_INT key_size;         /**< bytes at key */
  CS_VOID* data;           /**< the caller's */
  struct _lhashnode* next; /**< not used: the slots are one array */
} LHashNode;

/** list_state of a linked list, queue or stack. */
typedef struct _dlinkinfo {
  CS_INT state;    /**< LM_STATE_ */
  DLinkNode* head; /**< first element, or null */
  DLinkNode* tail; /**< last element, or null */
} DLinkInfo;

/** list_state of a chained hash table. */
typedef struct _chashinfo {
  CS_INT state;                 /**< LM_STATE_ */
  DLinkNode** table;            /**< table_size heads of chains */
  CS_INT table_size;            /**< number of chains */
  LM_HASH_FUNC home_addr_hfunc; /**< a key's chain */
} CHashInfo;

/** list_state of an open-addressing table. */
typedef struct _dhashinfo {
  CS_INT state;                 /**< LM_STATE_ */
  LHashNode* table;             /**< table_size slots */
  CS_INT table_size;            /**< number of slots */
  LM_HASH_FUNC home_addr_hfunc; /**< a key's home address */
  LM_HASH_FUNC incr_hfunc;      /**< a key's increment */
} DHashInfo;

/** The properties of a list context. */
typedef struct _lmcxtprop {
  CS_INT state;              /**< LM_STATE_ */
  CS_INT list_type;          /**< default of new lists */
  CS_INT max_tablesize;      /**< default of new hash tables */
  CS_INT max_poolsize;       /**< default of new lists */
  CS_INT version;            /**< as given to lm_initlm */
  CS_INT context_load;       /**< live handles */
  CS_CHAR* cur_handlename;   /**< the current handle's own name */
  LM_HANDLE* cur_handleaddr; /**< the newest handle; null once that is dropped */
} LmCxtProp;

/** A list context. */
struct _lmcontext {
  CS_INT state;            /**< LM_STATE_ */
  CS_CHAR* context_name;   /**< owned copy */
  CS_INT length;           /**< of the name */
  CS_BOOL lmchkparam;      /**< has no effect: parameters are always checked */
  LmCxtProp* cxtprop;      /**< owned */
  LM_HANDLE* first_handle; /**< newest first */
};

/** The properties of a handle. */
typedef struct _lmhdlprop {
  CS_INT state;             /**< LM_STATE_ */
  CS_INT list_type;         /**< LM_DLINK and so on */
  CS_INT max_tablesize;     /**< chains or slots of a hash table */
  CS_INT max_poolsize;      /**< free nodes that are kept at most */
  CS_INT handle_load;       /**< elements */
  LM_CONTEXT* context;      /**< the context of the handle */
  CS_CHAR* handle_name;     /**< owned copy */
  CS_INT length;            /**< of the name */
  LM_PRINT_FUNC print_func; /**< the host's, or null */
  LM_COMP_FUNC comp_func;   /**< the host's, or null */
} LmHdlProp;

/** A list. */
struct _lmhandle {
  CS_INT state;             /**< LM_STATE_ */
  LmHdlProp* hdlprop;       /**< owned */
  CS_VOID* list_state;      /**< DLinkInfo, CHashInfo or DHashInfo */
  DLinkNode* free_DLN_list; /**< the free-node pool */
  CS_INT free_nodes;        /**< nodes in it */
  CS_VOID* cur_ptr;         /**< cursor: DLinkNode or LHashNode, or null */
  LM_HANDLE* next;          /**< in the context's list */
};

/**
 * Makes a list context with the defaults above. `version` below LM_MIN_VERSION stops the process.
 * The name is copied: `namelen` bytes, or with CS_NULLTERM the text and its NUL. CS_SUCCEED;
 * CS_MEM_ERROR, with nothing allocated.
 */
COMN_API CS_RETCODE lm_initlm(CS_INT version, const CS_CHAR* name, CS_INT namelen,
                              LM_CONTEXT** context_out);

/** Drops the context's handles and then the context. CS_SUCCEED. */
COMN_API CS_RETCODE lm_exit(LM_CONTEXT* context);

/**
 * Makes an empty list, which becomes the context's newest and current handle. `list_type` CS_UNUSED
 * takes the context's; so do table size and, except for LM_DHASH, pool size. An LM_CHASH with a
 * pool size above 0 begins with that many free nodes. The name is copied as by lm_initlm.
 * CS_SUCCEED; CS_FAIL for a null context and for type 17; CS_MEM_ERROR, with nothing allocated. A
 * number that is not a list type, and a table size below 1 for a hash table, stop the process. Do
 * not make an LM_DHASH of size 1: it has no place to probe, and its first insert or find ends the
 * process by a division by zero.
 */
COMN_API CS_RETCODE lm_list_alloc(LM_CONTEXT* context, CS_INT list_type, const CS_CHAR* name,
                                  CS_INT namelen, LM_HANDLE** handle_out);

/**
 * Frees the list with its nodes and takes it off its context; elements' keys and data stay the
 * caller's. CS_SUCCEED.
 */
COMN_API CS_RETCODE lm_list_drop(LM_HANDLE* handle);

/**
 * One operation. To pass no key, set `key` to null or `key_size` to CS_UNUSED. `key_size` is in
 * bytes; negative sizes other than CS_UNUSED, CS_NULLTERM too, stop the process. "Returns the
 * data": `data_inout`, when not null, is the address of a CS_VOID* that receives the element's
 * data, and `outlen`, when not null, receives the size of a pointer. A call that does not return
 * CS_SUCCEED stores nothing.
 *
 * - LM_OP_INSERT: adds key and `data_inout`, the data itself: at the tail of a list or queue, at
 *   the head of a stack, at the key's place in a table (which needs a key). CS_MEM_ERROR; CS_FAIL
 *   when an LM_DHASH is full.
 * - LM_OP_DELETE: removes the key's element, or the cursor's when no key is given; a queue or stack
 *   ignores the key and removes its head. Returns the data.
 * - LM_OP_FIND: makes the key's element the cursor and returns the data; without a key returns the
 *   cursor's.
 * - LM_OP_REPLACE: `data_inout` becomes the data of the key's element, which becomes the cursor, or
 *   of the cursor's.
 * - LM_OP_FIRST, LM_OP_LAST: makes head or tail the cursor, returns the data.
 * - LM_OP_NEXT, LM_OP_PREVIOUS: moves the cursor and returns the data; without a cursor the same as
 *   LM_OP_FIRST, LM_OP_LAST. At the end the cursor stays.
 * - LM_OP_NONE: CS_SUCCEED, nothing changes.
 * - LM_OP_PRINT: hands the data of the key's element, which becomes the cursor, or of the cursor's
 *   to the handle's print function. CS_FAIL when it has none, whether or not there is an element.
 *   Without a key and without a cursor it prints `\nNULL\n` and returns LM_NOTFOUND.
 * - LM_OP_PRINT_ALL: for each chain prints `\nKeys:\n`, the keys as text, one a line, `\nData:\n`
 *   and, through the handle's print function (CS_FAIL when it has none), the data; or
 *   `\n***Chain empty***\n`. All kinds but LM_CHASH are one chain. A key ends at a NUL.
 * - LM_OP_PRINT_DATA: hands every element's data, from head to tail or by ascending table index, to
 *   the LM_PRINT_FUNC passed as `data_inout` itself.
 *   What these three print themselves goes to the debug output (comn_debug_print).
 * - LM_OP_INSERT_BEFORE, LM_OP_INSERT_AFTER: as LM_OP_INSERT, beside the cursor, which stays;
 *   without a cursor at head, tail. LM_DLINK only.
 *
 * A table has no order: LM_OP_FIRST, _LAST, _NEXT and _PREVIOUS stop the process on LM_CHASH and
 * LM_DHASH. So does every other operation that the kind of list does not have (LM_OP_INSERT_BEFORE
 * on a queue, for example).
 *
 * Keys are equal when sizes and bytes are, or when the handle's compare function says so. LM_DHASH
 * ignores the compare function and the stored size: it compares key_size bytes, so it may read past
 * a shorter stored key. Use keys of one length, or include a final NUL in the key. Equal keys may
 * be inserted twice; the first from the head is found (in a table: any). Looking for an absent key
 * visits every slot of an LM_DHASH.
 *
 * CS_SUCCEED, also when a print function stopped the walk; LM_NOTFOUND; CS_FAIL also for a null
 * handle. The cursor is cleared when its element is deleted or the table rebuilt.
 */
COMN_API CS_RETCODE lm_list_op(LM_HANDLE* handle, CS_INT op, const CS_VOID* key, CS_INT key_size,
                               CS_VOID* data_inout, CS_INT* outlen);

/**
 * lm_list_prop, lm_property: get (CS_GET), set (CS_SET) or reset to the default (CS_CLEAR, which
 * ignores `buffer` and `buflen`) a property of a handle or a context. Integers and addresses are
 * read and written at `buffer`, whatever `buflen` says; a function to set is passed as `buffer`
 * itself, and stored at `buffer` by a get. Names are copied without a terminator when `buflen` has
 * room (else CS_FAIL, nothing copied). A get stores the number of bytes through `outlen` when that
 * is not null: 4 for an integer, the size of a pointer for an address or a function.
 *
 * Settable: of a handle LM_PROP_MAX_TABLESIZE, LM_PROP_MAX_POOLSIZE (cleared to the context's),
 * LM_PROP_PRINT_FUNC, LM_PROP_COMP_FUNC (cleared to null); of a context LM_CTX_LIST_TYPE,
 * LM_CTX_MAX_TABLESIZE and LM_CTX_MAX_POOLSIZE, which are checked when a new list takes them.
 * CS_FAIL for the rest. An unknown property or action stops the process.
 *
 * A new table size rebuilds a hash table. Returns CS_FAIL for lists that are not tables and for an
 * LM_DHASH with more elements than the new size, CS_MEM_ERROR when memory is short; the table is
 * then unchanged. Otherwise a size below 1 stops the process. Any pool size is accepted; free nodes
 * beyond it are freed, and a negative size counts as 0. On an LM_DHASH it stays 0.
 */
/**@{*/
COMN_API CS_RETCODE lm_list_prop(LM_HANDLE* handle, CS_INT action, CS_INT property, CS_VOID* buffer,
                                 CS_INT buflen, CS_INT* outlen);
COMN_API CS_RETCODE lm_property(LM_CONTEXT* context, CS_INT action, CS_INT property,
                                CS_VOID* buffer, CS_INT buflen, CS_INT* outlen);
/**@}*/

COMN_STATIC_ASSERT(sizeof(DLinkNode) == COMN_BY_HOST(24, 48));
COMN_STATIC_ASSERT(sizeof(LHashNode) == COMN_BY_HOST(20, 40));
COMN_STATIC_ASSERT(sizeof(DLinkInfo) == COMN_BY_HOST(12, 24));
COMN_STATIC_ASSERT(sizeof(CHashInfo) == COMN_BY_HOST(16, 32));
COMN_STATIC_ASSERT(sizeof(DHashInfo) == COMN_BY_HOST(20, 40));
COMN_STATIC_ASSERT(sizeof(LmCxtProp) == COMN_BY_HOST(32, 40));
COMN_STATIC_ASSERT(offsetof(LmCxtProp, cur_handleaddr) == COMN_BY_HOST(28, 32));
COMN_STATIC_ASSERT(sizeof(LM_CONTEXT) == COMN_BY_HOST(24, 40));
COMN_STATIC_ASSERT(offsetof(LM_CONTEXT, first_handle) == COMN_BY_HOST(20, 32));
COMN_STATIC_ASSERT(sizeof(LmHdlProp) == COMN_BY_HOST(40, 64));
COMN_STATIC_ASSERT(offsetof(LmHdlProp, handle_load) == 16);
COMN_STATIC_ASSERT(offsetof(LmHdlProp, comp_func) == COMN_BY_HOST(36, 56));
COMN_STATIC_ASSERT(sizeof(LM_HANDLE) == COMN_BY_HOST(28, 56));
COMN_STATIC_ASSERT(offsetof(LM_HANDLE, cur_ptr) == COMN_BY_HOST(20, 40));

#ifdef __cplusplus
}
#endif

#endif
