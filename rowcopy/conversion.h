// Entries of the context's conversion matrix with formats that are made once: for single values,
// and for columns of them.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "comnlib.h"
#include "comnlib/column.h"
#include "csv_reader.h"
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

// Values of a column, each `stride` bytes after the one before it.
struct Values {
  char* first;
  std::size_t stride;

  char* operator[](std::size_t row) const { return first + row * stride; }
};

// What became of the values of a column.
struct Results {
  explicit Results(std::size_t rows) : lengths(rows), codes(rows) {}

  std::vector<CS_INT> lengths;  // kNull for a null
  std::vector<CS_RETCODE> codes;
};

// The same for columns: nulls stay nulls, for which nothing is written.
class ColumnConversion {
 public:
  ColumnConversion() = default;
  ColumnConversion(CS_CONTEXT* context, const CS_DATAFMT& source, const CS_DATAFMT& target)
      : context_(context), source_(source), target_(target) {}

  // The number of codes that are not CS_SUCCEED.
  std::size_t operator()(const FieldColumn& fields, Values to, Results& results) const {
    return convert({&source_, fields.text, static_cast<CS_INT>(fields.stride), fields.offsets,
                    fields.lengths, nullptr},
                   fields.count, to, results);
  }
  std::size_t operator()(Values from, const CS_INT* lengths, std::size_t count, Values to,
                         Results& results) const {
    return convert(
        {&source_, from.first, static_cast<CS_INT>(from.stride), nullptr, lengths, nullptr}, count,
        to, results);
  }

 private:
  std::size_t convert(const CsColumnSource& source, std::size_t count, Values to,
                      Results& results) const {
    const CsColumnDest destination{&target_,
                                   to.first,
                                   static_cast<CS_INT>(to.stride),
                                   nullptr,
                                   results.lengths.data(),
                                   nullptr,
                                   COMN_NULLS_AS_NULLS};
    CS_INT faults = 0;
    comn_conv_column(context_, &source, &destination, static_cast<CS_INT>(count),
                     results.codes.data(), &faults);
    return static_cast<std::size_t>(faults);
  }

  CS_CONTEXT* context_ = nullptr;
  CS_DATAFMT source_{};
  CS_DATAFMT target_{};
};

// Text as a value of that code.
CS_DATAFMT text_format(CS_INT code, CS_LOCALE* locale);

}  // namespace rowcopy
