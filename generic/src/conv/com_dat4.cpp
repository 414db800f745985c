// The conversions of CS_DATETIME4.
#include "conv/com_date.h"

COMNLIB_DATE_FAMILY(comn_date4, CS_DATETIME4)
