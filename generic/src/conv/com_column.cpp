// Conversion of whole columns. Preconditions are checked once; the loop finds each value, gives it
// to the core of its routine, and stores code, length and bit.
#include "conv/column.h"

#include <algorithm>
#include <limits>

#include "conv/frame.h"

namespace comnlib {
namespace {

// Bytes that a value of the format may take.
CS_INT room_of(const CS_DATAFMT& format) {
  if (format.datatype == CS_LONG_TYPE) return sizeof(std::int64_t);
  if (format.datatype == CS_UNICHAR_TYPE) return format.maxlength;
  return comn_typelen(format.datatype, format.maxlength);
}

void check_source_column(const CsColumnSource& source, CS_INT count) {
  check_pointer(source.format);
  check_pointer(source.values);
  require(source.stride >= 0);
  if (source.offsets == nullptr) return;
  require(source.offsets[0] >= 0);
  for (CS_INT at = 0; at < count; ++at) require(source.offsets[at] <= source.offsets[at + 1]);
}

void check_destination_column(const CsColumnDest& destination, CS_INT count) {
  check_pointer(destination.format);
  check_pointer(destination.values);
  const CS_INT room = room_of(*destination.format);
  require(room >= 0);
  if (destination.offsets == nullptr) {
    require(destination.stride >= (count > 1 ? room : 0));
  } else {
    const CS_INT datatype = destination.format->datatype;
    require(datatype == CS_UNICHAR_TYPE || comn_typelen(datatype, -1) == -1);
    const CS_INT first = destination.offsets[0];
    require(first >= 0 && first + std::int64_t{room} * count <= std::numeric_limits<CS_INT>::max());
  }
  require(destination.nulls == COMN_NULLS_AS_VALUES ||
          (destination.nulls == COMN_NULLS_AS_NULLS &&
           (destination.lengths != nullptr || destination.valid != nullptr)));
}

// Finds the values of a source one after the other.
class SourceWalk {
 public:
  explicit SourceWalk(const CsColumnSource& source)
      : source_(source), next_(static_cast<const CS_BYTE*>(source.values)) {}

  // Moves to a value; false for a null.
  bool find(CS_INT at) {
    length_ = source_.format->maxlength;
    value_ = next_;
    next_ += source_.stride;
    if (source_.offsets != nullptr) {
      value_ = static_cast<const CS_BYTE*>(source_.values) + source_.offsets[at];
      length_ = source_.offsets[at + 1] - source_.offsets[at];
    }
    if (source_.lengths != nullptr) {
      length_ = source_.lengths[at];
      if (length_ < 0) return false;
    }
    return source_.valid == nullptr || (source_.valid[at / 8] >> at % 8 & 1) != 0;
  }
  const CS_BYTE* value() const { return value_; }
  CS_INT length() const { return length_; }

 private:
  const CsColumnSource source_;  // a copy, which nothing that is written can change
  const CS_BYTE* next_;
  const CS_BYTE* value_ = nullptr;
  CS_INT length_ = 0;
};

// Hands out the places of a destination's values, and stores what became of each.
class DestinationWalk {
 public:
  explicit DestinationWalk(const CsColumnDest& destination)
      : destination_(destination), next_(static_cast<CS_BYTE*>(destination.values)) {
    if (destination.offsets != nullptr) next_ += destination.offsets[0];
  }

  CS_BYTE* value() const { return next_; }

  // The value takes `length` bytes; -1 for a null.
  void store_outcome(CS_INT at, CS_INT length) {
    if (destination_.lengths != nullptr) destination_.lengths[at] = length;
    if (destination_.valid != nullptr) mark(at, length >= 0);
    if (destination_.offsets == nullptr) {
      next_ += destination_.stride;
    } else {
      const CS_INT written = std::max(length, 0);
      next_ += written;
      destination_.offsets[at + 1] = destination_.offsets[at] + written;
    }
  }

 private:
  void mark(CS_INT at, bool valid) {
    CS_BYTE& bits = destination_.valid[at / 8];
    const auto bit = static_cast<CS_BYTE>(1 << at % 8);
    bits = static_cast<CS_BYTE>(valid ? bits | bit : bits & ~bit);
  }

  const CsColumnDest destination_;
  CS_BYTE* next_;
};

// `convert` is the core of a routine or a routine itself.
template <class Convert>
CS_INT convert_values(const ColumnCall& column, Convert convert) {
  SourceWalk source(*column.source);
  DestinationWalk destination(*column.destination);
  const CS_DATAFMT& to = *column.destination->format;
  const bool keeps_nulls = column.destination->nulls == COMN_NULLS_AS_NULLS;
  CS_RETCODE* const codes = column.codes;
  const CS_INT count = column.count;
  CS_DATAFMT from = *column.source->format;
  CS_INT length = 0;
  CS_INT faults = 0;
  Conversion call{column.context, &from, nullptr, &to, nullptr, &length};
  for (CS_INT at = 0; at < count; ++at) {
    CS_RETCODE code = CS_SUCCEED;
    length = 0;
    call.dest = destination.value();
    if (source.find(at)) [[likely]] {
      call.src = source.value();
      from.maxlength = source.length();
      code = convert(call);
    } else if (keeps_nulls) {
      length = -1;
    } else {
      code = com_null_get(column.context, &to, call.dest, room_of(to), &length);
    }
    destination.store_outcome(at, length);
    if (codes != nullptr) codes[at] = code;
    faults += code == CS_SUCCEED ? 0 : 1;
  }
  return faults;
}

// The same of fields of one length: no value is null, and nothing is stored but results.
CS_INT convert_fields(const ColumnCall& column, CS_RETCODE (*core)(const Conversion& call)) {
  const CS_INT source_stride = column.source->stride;
  const CS_INT destination_stride = column.destination->stride;
  const auto* src = static_cast<const CS_BYTE*>(column.source->values);
  auto* dest = static_cast<CS_BYTE*>(column.destination->values);
  CS_INT length = 0;
  CS_INT faults = 0;
  Conversion call{
      column.context, column.source->format, nullptr, column.destination->format, nullptr, &length};
  for (CS_INT left = column.count; left > 0; --left) {
    call.src = src;
    call.dest = dest;
    src += source_stride;
    dest += destination_stride;
    faults += core(call) == CS_SUCCEED ? 0 : 1;
  }
  return faults;
}

bool has_only_values(const CsColumnSource& source) {
  return source.offsets == nullptr && source.lengths == nullptr && source.valid == nullptr;
}
bool has_only_values(const CsColumnDest& destination) {
  return destination.offsets == nullptr && destination.lengths == nullptr &&
         destination.valid == nullptr;
}

// Whether values follow each other without a gap, and none is null.
bool is_dense(const ColumnCall& column, const ColumnRoutine& routine) {
  const CsColumnSource& source = *column.source;
  const CsColumnDest& destination = *column.destination;
  return routine.dense != nullptr && source.stride == routine.source_size &&
         destination.stride == routine.destination_size && has_only_values(source) &&
         destination.valid == nullptr;
}

CS_INT convert_column(const ColumnCall& column, const ColumnRoutine& routine) {
  const CsColumnSource& source = *column.source;
  const bool own_lengths = source.lengths != nullptr || source.offsets != nullptr;
  require(own_lengths || routine.serves_source(*source.format));
  require(routine.serves_destination(*column.destination->format));
  if (is_dense(column, routine)) return routine.dense(column);
  if (column.codes == nullptr && has_only_values(source) && has_only_values(*column.destination))
    return convert_fields(column, routine.core);
  return convert_values(column, routine.core);
}

}  // namespace
}  // namespace comnlib

using namespace comnlib;

CS_RETCODE comn_conv_column(CS_CONTEXT* context, const CsColumnSource* source,
                            const CsColumnDest* destination, CS_INT count, CS_RETCODE* codes,
                            CS_INT* faults) {
  check_pointer(context);
  check_pointer(source);
  check_pointer(destination);
  check_pointer(faults);
  require(count >= 0);
  check_source_column(*source, count);
  check_destination_column(*destination, count);

  const CS_INT srctype = source->format->datatype;
  const CS_INT desttype = destination->format->datatype;
  const CS_CONV_FUNC routine = com_conv_func(context, srctype, desttype);
  if (routine == nullptr) return trace(CS_FAIL);
  const ColumnCall column{context, source, destination, count, codes};
  if (const ColumnRoutine* form = column_routine(srctype, desttype, routine)) {
    *faults = convert_column(column, *form);
  } else {
    *faults = convert_values(column, [routine](const Conversion& call) {
      return routine(call.context, call.srcfmt, call.src, call.destfmt, call.dest, call.destlen);
    });
  }
  return trace(CS_SUCCEED);
}
