/* The common-services library: all public headers. Each may also be included alone. */
#ifndef COMNLIB_H
#define COMNLIB_H

#include "comnlib/charset.h"
#include "comnlib/config.h"
#include "comnlib/context.h"
#include "comnlib/convert.h"
#include "comnlib/datetime.h"
#include "comnlib/diag.h"
#include "comnlib/list.h"
#include "comnlib/locale.h"
#include "comnlib/memory.h"
#include "comnlib/money.h"
#include "comnlib/numeric.h"
#include "comnlib/result.h"
#include "comnlib/thread.h"
#include "comnlib/types.h"

#endif
