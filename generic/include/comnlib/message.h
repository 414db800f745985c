/**
 * @file
 * Messages in the language of a context: the texts of the message files, messages with arguments in
 * them, and the words of result codes.
 *
 * The language is that of the context's locale (category COM_LC_MESSAGE). The character set is that
 * of its category COM_LC_CTYPE, and ISO 8859-1 without one. A language that lacks a message, or has
 * an empty text for it or one that is not UTF-8, gives it in English. Without a home, or where that
 * is so of English too, the text is a fixed one that names layer and number.
 *
 * Every routine writes to the `buflen` bytes at `buf`, ends the text with a NUL, and stores its
 * length without the NUL. A text that is too long is cut after its last whole character that fits.
 * Results are CS_SUCCEED; CS_CVT_TRUNCATED when the text was cut; CS_FAIL when it is the fixed
 * text, whole or cut. Characters that the character set lacks become its replacement character.
 *
 * ctxintlerr stays as it is, so that a failed call can be explained before its status is looked at.
 * A null pointer and a `buflen` below 1 stop the process. The routines may be called from several
 * threads: English texts and conversion tables are loaded under the context's cmg_mtx when they are
 * first needed. None of them calls the host's ctxerrfunc.
 */
#ifndef COMNLIB_MESSAGE_H
#define COMNLIB_MESSAGE_H

#include "context.h"
#include "result.h"
#include "types.h"

#ifdef __cplusplus
extern "C" {
#endif

/** Layers, each with a file of messages in every language. */
enum {
  COM_LAYER_COMMON = 1, /**< words that all layers share: common.loc */
  COM_LAYER_CLIENT = 2, /**< the client library: cslib.loc */
  COM_LAYER_COMNLIB = 3 /**< this library's result codes: comnlib.loc */
};

/** Severities, which are also the numbers of their words in the layer COM_LAYER_COMMON. */
enum {
  COM_SEVERITY_INFORMATION = 1,
  COM_SEVERITY_WARNING = 2,
  COM_SEVERITY_ERROR = 3,
  COM_SEVERITY_FATAL = 4
};

/** Types of an argument of a message. */
enum {
  COM_ARGUMENT_NUMBER = 1, /**< `number`, in decimal */
  COM_ARGUMENT_TEXT = 2    /**< `length` bytes at `text`, in the context's character set */
};

/** An argument of a message. */
typedef struct com_argument {
  CS_INT type;         /**< COM_ARGUMENT_ */
  CS_INT number;       /**< of COM_ARGUMENT_NUMBER */
  const CS_CHAR* text; /**< of COM_ARGUMENT_TEXT */
  CS_INT length;       /**< bytes of the text; CS_NULLTERM: up to its NUL */
} com_argument;

/** The text of message `number` of a layer (COM_LAYER_), with any "{1}" as it is. */
COMN_API CS_RETCODE com_err_msg(CS_CONTEXT* ctx, CS_INT layer, CS_INT number, CS_CHAR* buf,
                                CS_INT buflen, CS_INT* outlen);

/**
 * A whole message, such as "error: comnlib -101: the value overflows its destination": the word of
 * the severity (COM_SEVERITY_), the layer, the number, and the text. In the text "{1}" to "{99}"
 * stand for the arguments, in any order and any number of times; one that `argcount` does not reach
 * is kept as it is. Nothing else in a text has a meaning. `args` may be null when `argcount` is 0.
 * A negative `argcount`, a type of another number and a negative length stop the process.
 *
 * CS_SUCCEED; CS_CVT_TRUNCATED when the message was cut anywhere; CS_FAIL when its text is the
 * fixed one. A severity without a word gets a fixed text, which is not a failure.
 */
COMN_API CS_RETCODE com_build_errmsg(CS_CONTEXT* ctx, CS_INT severity, CS_INT layer, CS_INT number,
                                     const com_argument* args, CS_INT argcount, CS_CHAR* buf,
                                     CS_INT buflen, CS_INT* outlen);

/** The words of a result code: com_err_msg in the layer COM_LAYER_COMNLIB. */
COMN_API CS_RETCODE comn_result_text(CS_CONTEXT* ctx, CS_RETCODE code, CS_CHAR* buf, CS_INT buflen,
                                     CS_INT* outlen);

COMN_STATIC_ASSERT(sizeof(com_argument) == COMN_BY_HOST(16, 24));
COMN_STATIC_ASSERT(offsetof(com_argument, length) == COMN_BY_HOST(12, 16));

#ifdef __cplusplus
}
#endif

#endif
