// What the frame of a whole column needs from each routine, to convert without calling it.
#pragma once

#include "comnlib/column.h"
#include "comnlib/context.h"

namespace comnlib {

struct ColumnCall {
  CS_CONTEXT* context;
  const CsColumnSource* source;
  const CsColumnDest* destination;
  CS_INT count;
  CS_RETCODE* codes;  // or null
};

// The values of a column from `begin` up to `end`, of which none is null.
struct ColumnRun {
  const ColumnCall& column;
  CS_DATAFMT& format;  // a copy of the source's, which takes the length of each value
  CS_INT begin;
  CS_INT end;
  CS_BYTE* dest;  // of the first value
};

struct ColumnRoutine {
  // Whether the source or the destination, whose datatype is the routine's, has a valid length.
  bool (*serves_source)(const CS_DATAFMT& format);
  bool (*serves_destination)(const CS_DATAFMT& format);
  // Converts a run and returns the number of faults. Stores codes, lengths and offsets, but no
  // bits.
  CS_INT (*run)(const ColumnRun& run);
  // The same of a whole column of fixed length, whose values follow each other without nulls. Null
  // where the routine has no such loop.
  CS_INT (*dense)(const ColumnCall& column);
  CS_INT source_size;
  CS_INT destination_size;
};

// The column form of a member. COMNLIB_MEMBER instantiates it, from the same source and target.
template <CS_CONV_FUNC kRoutine>
struct ColumnForm {
  static const ColumnRoutine routine;
};

// The column form of a pair of built-in datatypes, or null when `routine` is not its default one.
const ColumnRoutine* column_routine(CS_INT srctype, CS_INT desttype, CS_CONV_FUNC routine);

}  // namespace comnlib
