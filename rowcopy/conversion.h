// Entries of the context's conversion matrix, looked up once, with formats that are made once.
#pragma once

#include <string>

#include "datatype.h"

namespace rowcopy {

// The locales of the text that is read and of the text that is written, whose character set is the
// records' too; null for the context's.
struct Locales {
  CS_LOCALE* from = nullptr;
  CS_LOCALE* to = nullptr;
};

// One entry of the matrix with the formats of its two sides.
class Conversion {
 public:
  Conversion() = default;
  Conversion(CS_CONTEXT* context, const CS_DATAFMT& source, const CS_DATAFMT& target)
      : context_(context),
        routine_(com_conv_func(context, source.datatype, target.datatype)),
        source_(source),
        target_(target) {}

  // Whether the matrix has the pair.
  explicit operator bool() const { return routine_ != nullptr; }

  CS_RETCODE operator()(const void* source, std::size_t size, void* target, CS_INT& length) {
    source_.maxlength = static_cast<CS_INT>(size);
    length = 0;
    return routine_(context_, &source_, source, &target_, target, &length);
  }

  // The same into room of another size than that of the target's type.
  CS_RETCODE into(std::size_t room, const void* source, std::size_t size, void* target,
                  CS_INT& length) {
    target_.maxlength = static_cast<CS_INT>(room);
    return (*this)(source, size, target, length);
  }

 private:
  CS_CONTEXT* context_ = nullptr;
  CS_CONV_FUNC routine_ = nullptr;
  CS_DATAFMT source_{};
  CS_DATAFMT target_{};
};

// Text as a value of that code.
CS_DATAFMT text_format(CS_INT code, CS_LOCALE* locale);

}  // namespace rowcopy
