// Conversion of whole columns. Preconditions are checked once; the values between nulls go to the
// routine's own loop, nulls and the values of other routines are converted one at a time.
#include "conv/column.h"

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstring>
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
    // The null value of a user type ends with a NUL that may be next to the room.
    const std::int64_t longest = std::int64_t{room} + (is_builtin(datatype) ? 0 : 1);
    require(first >= 0 && first + longest * count <= std::numeric_limits<CS_INT>::max());
  }
  require(destination.nulls == COMN_NULLS_AS_VALUES ||
          (destination.nulls == COMN_NULLS_AS_NULLS &&
           (destination.lengths != nullptr || destination.valid != nullptr)));
}

// The place of a value.
const CS_BYTE* value_of(const CsColumnSource& source, CS_INT at) {
  const auto* const values = static_cast<const CS_BYTE*>(source.values);
  return values +
         (source.offsets != nullptr ? source.offsets[at] : std::ptrdiff_t{at} * source.stride);
}
CS_BYTE* value_of(const CsColumnDest& destination, CS_INT at) {
  auto* const values = static_cast<CS_BYTE*>(destination.values);
  if (destination.offsets != nullptr) return values + destination.offsets[at];
  return values + std::ptrdiff_t{at} * destination.stride;
}

CS_INT length_of(const CsColumnSource& source, CS_INT at) {
  if (source.lengths != nullptr) return source.lengths[at];
  if (source.offsets != nullptr) return source.offsets[at + 1] - source.offsets[at];
  return source.format->maxlength;
}

bool is_null(const CsColumnSource& source, CS_INT at) {
  if (source.lengths != nullptr && source.lengths[at] < 0) return true;
  const auto bit = static_cast<CS_UINT>(at);
  return source.valid != nullptr && (source.valid[bit / 8] >> bit % 8 & 1) == 0;
}

// Where the values that begin at `at` end, at `limit` or at a null.
CS_INT end_of_run(const CsColumnSource& source, CS_INT at, CS_INT limit) {
  if (source.lengths != nullptr)
    limit = static_cast<CS_INT>(std::find_if(source.lengths + at, source.lengths + limit,
                                             [](CS_INT length) { return length < 0; }) -
                                source.lengths);
  if (source.valid == nullptr) return limit;
  while (at < limit) {
    const auto bit = static_cast<CS_UINT>(at);
    const auto nulls =
        static_cast<CS_UINT>(static_cast<CS_BYTE>(~source.valid[bit / 8])) >> bit % 8;
    if (nulls != 0) return std::min(limit, at + std::countr_zero(nulls));
    at = std::min(limit - 1, static_cast<CS_INT>(bit | 7)) + 1;
  }
  return limit;
}

// Sets the bits of all values before they are converted; those of nulls are cleared one by one.
void mark_valid(CS_BYTE* bits, CS_INT count) {
  const CS_INT whole = count / 8;
  std::memset(bits, 0xFF, static_cast<std::size_t>(whole));
  if (count % 8 != 0) bits[whole] = static_cast<CS_BYTE>(bits[whole] | ((1 << count % 8) - 1));
}

void mark(CS_BYTE* bits, CS_INT at, bool valid) {
  CS_BYTE& byte = bits[static_cast<CS_UINT>(at) / 8];
  const auto bit = static_cast<CS_BYTE>(1U << static_cast<CS_UINT>(at) % 8);
  byte = static_cast<CS_BYTE>(valid ? byte | bit : byte & ~bit);
}

// Stores the code and length of one value, which takes `length` bytes, or -1 for a null. Returns
// the number of faults.
[[gnu::always_inline]] inline CS_INT store_outcome(const ColumnCall& column, CS_INT at,
                                                   CS_RETCODE code, CS_INT length) {
  const CsColumnDest& destination = *column.destination;
  if (column.codes != nullptr) column.codes[at] = code;
  if (destination.lengths != nullptr) destination.lengths[at] = length;
  if (destination.valid != nullptr) mark(destination.valid, at, length >= 0);
  if (destination.offsets != nullptr)
    destination.offsets[at + 1] = destination.offsets[at] + std::max(length, 0);
  return code == CS_SUCCEED ? 0 : 1;
}

CS_INT convert_null(const ColumnCall& column, CS_INT at) {
  const CsColumnDest& destination = *column.destination;
  if (destination.nulls == COMN_NULLS_AS_NULLS) return store_outcome(column, at, CS_SUCCEED, -1);
  CS_INT length = 0;
  const CS_RETCODE code =
      com_null_get(column.context, destination.format, value_of(destination, at),
                   room_of(*destination.format), &length);
  return store_outcome(column, at, code, length);
}

// Gives the column's values to `convert` in runs; `convert` returns the number of faults of a run.
// Runs are so short that the lengths and bits that were searched for nulls are still in the cache.
template <class Convert>
CS_INT convert_runs(const ColumnCall& column, CS_INT most_values, Convert convert) {
  CS_DATAFMT format = *column.source->format;
  CS_INT faults = 0;
  for (CS_INT at = 0; at < column.count;) {
    if (is_null(*column.source, at)) {
      faults += convert_null(column, at++);
      continue;
    }
    const CS_INT limit = at + std::min(most_values, column.count - at);
    const CS_INT end = end_of_run(*column.source, at + 1, limit);
    faults += convert(ColumnRun{column, format, at, end, value_of(*column.destination, at)});
    at = end;
  }
  return faults;
}

// Converts by a routine that is not a built-in one and may store any length.
CS_INT convert_by(CS_CONV_FUNC routine, const ColumnCall& column) {
  return convert_runs(column, 1, [routine](const ColumnRun& run) {
    const ColumnCall& call = run.column;
    run.format.maxlength = length_of(*call.source, run.begin);
    CS_INT length = 0;
    const CS_RETCODE code = routine(call.context, &run.format, value_of(*call.source, run.begin),
                                    call.destination->format, run.dest, &length);
    return store_outcome(call, run.begin, code, length);
  });
}

// Whether values follow each other without a gap, and none is null.
bool is_dense(const ColumnCall& column, const ColumnRoutine& routine) {
  const CsColumnSource& source = *column.source;
  const CsColumnDest& destination = *column.destination;
  return routine.dense != nullptr && source.stride == routine.source_size &&
         source.offsets == nullptr && source.lengths == nullptr && source.valid == nullptr &&
         destination.stride == routine.destination_size && destination.valid == nullptr;
}

CS_INT convert_column(const ColumnCall& column, const ColumnRoutine& routine) {
  const CsColumnSource& source = *column.source;
  const bool own_lengths = source.lengths != nullptr || source.offsets != nullptr;
  require(own_lengths || routine.serves_source(*source.format));
  require(routine.serves_destination(*column.destination->format));
  if (is_dense(column, routine)) return routine.dense(column);
  constexpr CS_INT kMostValues = 1024;
  if (column.destination->valid != nullptr) mark_valid(column.destination->valid, column.count);
  return convert_runs(column, kMostValues, routine.run);
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
  const ColumnRoutine* const form = column_routine(srctype, desttype, routine);
  *faults = form != nullptr ? convert_column(column, *form) : convert_by(routine, column);
  return trace(CS_SUCCEED);
}
