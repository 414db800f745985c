// The conversions from CS_DATETIME4.
#include "conv/com_date.h"

using namespace comnlib;
using Source = FixedSource<Datetime4>;

COMNLIB_MEMBER(comn_date4todate, Source, DateToDatetime)
COMNLIB_MEMBER(comn_date4todate4, Source, DateToDatetime4)
COMNLIB_MEMBER(comn_date4tochar, Source, DateToCharacter)
COMNLIB_MEMBER(comn_date4tovarchar, Source, DateToVarchar)
COMNLIB_MEMBER(comn_date4tobin, Source, ToBinary)
COMNLIB_MEMBER(comn_date4tovarbin, Source, ToVarbinary)
