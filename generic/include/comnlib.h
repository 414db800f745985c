/**
 * @file
 * The common-services library: all public headers but intl.h. Each may also be included by itself.
 *
 * One header for each subject states the contract of its routines:
 *
 * - types.h, result.h, context.h: scalar types, value records, the data format, result codes, the
 *   context
 * - convert.h, column.h: the matrix of conversions, null values; conversion of whole columns
 * - numeric.h, money.h, datetime.h: exact arithmetic, dates
 * - locale.h, charset.h: localization, character sets
 * - config.h: configuration files
 * - memory.h, list.h, thread.h: pools, lists, threads
 * - message.h: messages in the context's language
 * - diag.h: error trace, debug output, stops
 *
 * A host that asks for the words of ctxintlerr or brings file readers of its own includes intl.h of
 * the companion library itself: <comnlib/intl.h> of an installed tree.
 *
 * Unless a routine says otherwise: a null pointer argument stops the process, by com_chkptr or
 * com_bomb; lengths and sizes are in bytes; results besides the return value are stored through the
 * last arguments; records belong to the caller and what a routine allocates is freed by the routine
 * that it names. The guides in docs/ have more: conversions.md has a table of every pair,
 * ownership.md who frees what and which calls may run at once, file-formats.md every file.
 */
#ifndef COMNLIB_H
#define COMNLIB_H

#include "comnlib/charset.h"
#include "comnlib/column.h"
#include "comnlib/config.h"
#include "comnlib/context.h"
#include "comnlib/convert.h"
#include "comnlib/datetime.h"
#include "comnlib/diag.h"
#include "comnlib/list.h"
#include "comnlib/locale.h"
#include "comnlib/memory.h"
#include "comnlib/message.h"
#include "comnlib/money.h"
#include "comnlib/numeric.h"
#include "comnlib/result.h"
#include "comnlib/thread.h"
#include "comnlib/types.h"

#endif
