// Conversion of whole columns. Preconditions are checked once; the loop finds each value, gives it
// to the core of its routine, and stores code, length and bit.
#include "conv/column.h"

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

bool is_null(const CsColumnSource& source, CS_INT at) {
  if (source.lengths != nullptr && source.lengths[at] < 0) return true;
  return source.valid != nullptr && (source.valid[at / 8] >> at % 8 & 1) == 0;
}

CS_INT source_length(const CsColumnSource& source, CS_INT at) {
  if (source.lengths != nullptr) return source.lengths[at];
  if (source.offsets != nullptr) return source.offsets[at + 1] - source.offsets[at];
  return source.format->maxlength;
}

const CS_BYTE* source_value(const CsColumnSource& source, CS_INT at) {
  const auto* values = static_cast<const CS_BYTE*>(source.values);
  return values +
         (source.offsets != nullptr ? source.offsets[at] : std::ptrdiff_t{at} * source.stride);
}

CS_BYTE* destination_value(const CsColumnDest& destination, CS_INT at) {
  auto* values = static_cast<CS_BYTE*>(destination.values);
  return values + (destination.offsets != nullptr ? destination.offsets[at]
                                                  : std::ptrdiff_t{at} * destination.stride);
}

void finish_value(const CsColumnDest& destination, CS_INT at, CS_INT length, bool null) {
  if (destination.lengths != nullptr) destination.lengths[at] = null ? -1 : length;
  if (destination.offsets != nullptr)
    destination.offsets[at + 1] = destination.offsets[at] + length;
  if (destination.valid != nullptr) {
    CS_BYTE& bits = destination.valid[at / 8];
    const auto bit = static_cast<CS_BYTE>(1 << at % 8);
    bits = static_cast<CS_BYTE>(null ? bits & ~bit : bits | bit);
  }
}

// `convert` is the core of a routine or a routine itself.
template <class Convert>
CS_INT convert_values(const ColumnCall& column, Convert convert) {
  const CsColumnSource& source = *column.source;
  const CsColumnDest& destination = *column.destination;
  const CS_DATAFMT& to = *destination.format;
  const bool keeps_nulls = destination.nulls == COMN_NULLS_AS_NULLS;
  CS_DATAFMT from = *source.format;
  CS_INT length = 0;
  CS_INT faults = 0;
  Conversion call{column.context, &from, nullptr, &to, nullptr, &length};
  for (CS_INT at = 0; at < column.count; ++at) {
    const bool null = is_null(source, at);
    CS_RETCODE code = CS_SUCCEED;
    length = 0;
    call.dest = destination_value(destination, at);
    if (!null) {
      call.src = source_value(source, at);
      from.maxlength = source_length(source, at);
      code = convert(call);
    } else if (!keeps_nulls) {
      code = com_null_get(column.context, &to, call.dest, room_of(to), &length);
    }
    finish_value(destination, at, length, null && keeps_nulls);
    if (column.codes != nullptr) column.codes[at] = code;
    if (code != CS_SUCCEED) ++faults;
  }
  return faults;
}

// Whether values follow each other without a gap, and nothing is asked for but them.
bool is_dense(const ColumnCall& column, const ColumnRoutine& routine) {
  const CsColumnSource& source = *column.source;
  const CsColumnDest& destination = *column.destination;
  return routine.dense != nullptr && source.stride == routine.source_size &&
         destination.stride == routine.destination_size && column.codes == nullptr &&
         source.offsets == nullptr && source.lengths == nullptr && source.valid == nullptr &&
         destination.lengths == nullptr && destination.valid == nullptr;
}

CS_INT convert_column(const ColumnCall& column, const ColumnRoutine& routine) {
  const CsColumnSource& source = *column.source;
  const bool own_lengths = source.lengths != nullptr || source.offsets != nullptr;
  require(own_lengths || routine.serves_source(*source.format));
  require(routine.serves_destination(*column.destination->format));
  if (is_dense(column, routine)) return routine.dense(column);
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
