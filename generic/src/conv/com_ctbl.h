// The static default conversion matrix. Internal, with C linkage.
#pragma once

#include "comnlib/context.h"

extern "C" {

// Points *table at the default matrix, row-major by source, and stores its dimension.
CS_VOID com__get_ctbl(const CS_CONV_FUNC** table, int* dimension);
}
