// The binary targets of every source of fixed length: the stored bytes.
#pragma once

#include "conv/frame.h"

namespace comnlib {

struct ToBinary : Binary {
  static CS_RETCODE convert(const auto& value, const Conversion& call) {
    return comn_fixedtobin(call.context, call.srcfmt, call.src, call.destfmt, call.dest,
                           call.destlen, sizeof value);
  }
};

struct ToVarbinary : Varbinary {
  static CS_RETCODE convert(const auto& value, const Conversion& call) {
    return comn_fixedtovarbin(call.context, call.srcfmt, call.src, call.destfmt, call.dest,
                              call.destlen, sizeof value);
  }
};

}  // namespace comnlib
