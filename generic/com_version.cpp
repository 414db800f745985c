// The version line. __DATE__ follows SOURCE_DATE_EPOCH, so that a build can be reproduced.
#include "comnlib/diag.h"

const CS_CHAR* com_version(void) {
  return "steiplo comnlib/" COMNLIB_VERSION "/P" COMNLIB_PATCH_LEVEL "/Linux " COMNLIB_TARGET_NAME
         "/POSIX threads/" COMNLIB_BUILD_TYPE "/" __DATE__;
}
