// The frame of every conversion routine, and the shape of the sources and targets that it joins.
//
// A Source reads values:
//   Value                what its targets convert
//   serves(format)       whether it reads what the format describes
//   read(call, value)    CS_SUCCEED, or the code of a value that is not valid
// A Target converts a Source's values:
//   serves(format)       whether it writes what the format describes
//   kLength              the length that is stored before the value is converted; a conversion that
//                        ends with another length stores it itself
//   kStoresLength        present and true where every conversion does
//   convert(value, call) writes the result and returns its code
// Either may have a Setup, which is made from a call and is the last argument of read() or
// convert(). It holds what depends only on the formats and the context, and is made once for a
// column. Neither knows of null pointers or the trace. They are the core, and two frames give them
// one value at a time: that of a routine, and that of a run of a column's values.
#pragma once

#include <cstring>
#include <type_traits>

#include "conv/column.h"
#include "conv/datatypes.h"
#include "diag/diag.h"

#define COMNLIB_CONVERSION_PARAMETERS                                                           \
  CS_CONTEXT *context, const CS_DATAFMT *srcfmt, const CS_VOID *src, const CS_DATAFMT *destfmt, \
      CS_VOID *dest, CS_INT *destlen

// Defines a public routine and its column form. Each has a source line of its own, which stops and
// traces name.
#define COMNLIB_MEMBER(routine_name, Source, Target)                                               \
  CS_RETCODE routine_name(COMNLIB_CONVERSION_PARAMETERS) {                                         \
    return comnlib::convert_value<Source, Target>({context, srcfmt, src, destfmt, dest, destlen}); \
  }                                                                                                \
  template <>                                                                                      \
  struct comnlib::MemberOf<routine_name> : comnlib::Member<Source, Target> {};                     \
  template struct comnlib::ColumnForm<routine_name>;

namespace comnlib {

struct Conversion {
  CS_CONTEXT* context;
  const CS_DATAFMT* srcfmt;
  const CS_VOID* src;
  const CS_DATAFMT* destfmt;
  CS_VOID* dest;
  CS_INT* destlen;
};

[[gnu::always_inline]] inline void check_pointers(const Conversion& call,
                                                  CallSite site = CallSite::current()) {
  check_pointer(call.context, site);
  check_pointer(call.srcfmt, site);
  check_pointer(call.src, site);
  check_pointer(call.destfmt, site);
  check_pointer(call.dest, site);
  check_pointer(call.destlen, site);
}

// Members that convert nothing begin with it too, and then stop: at one line for their own
// destination datatype and at another line for any other.
template <class Source>
[[gnu::always_inline]] inline void check_source(const Conversion& call,
                                                CallSite site = CallSite::current()) {
  check_pointers(call, site);
  require(Source::serves(*call.srcfmt), site);
}

struct NoSetup {
  explicit NoSetup(const Conversion&) {}
};
template <class T>
struct SetupOf {
  using Type = NoSetup;
};
template <class T>
requires requires {
  typename T::Setup;
}
struct SetupOf<T> {
  using Type = typename T::Setup;
};

// Converts values whose formats, except for their lengths, are those of the call that it is made
// from.
template <class Source, class Target>
class Core {
 public:
  [[gnu::always_inline]] explicit Core(const Conversion& call) : source_(call), target_(call) {}

  [[gnu::always_inline]] CS_RETCODE operator()(const Conversion& call) {
    typename Source::Value value;
    const CS_RETCODE code = read(call, value);
    if (code != CS_SUCCEED || !stores_length()) *call.destlen = Target::kLength;
    if (code != CS_SUCCEED) return code;
    if constexpr (std::is_same_v<TargetSetup, NoSetup>)
      return Target::convert(value, call);
    else
      return Target::convert(value, call, target_);
  }

 private:
  static constexpr bool stores_length() {
    if constexpr (requires { Target::kStoresLength; }) return Target::kStoresLength;
    return false;
  }

  using SourceSetup = typename SetupOf<Source>::Type;
  using TargetSetup = typename SetupOf<Target>::Type;

  [[gnu::always_inline]] CS_RETCODE read(const Conversion& call, typename Source::Value& value) {
    if constexpr (std::is_same_v<SourceSetup, NoSetup>)
      return Source::read(call, value);
    else
      return Source::read(call, value, source_);
  }

  [[no_unique_address]] SourceSetup source_;
  [[no_unique_address]] TargetSetup target_;
};

template <class Source, class Target>
[[gnu::always_inline]] inline CS_RETCODE convert_value(const Conversion& call,
                                                       CallSite site = CallSite::current()) {
  check_source<Source>(call, site);
  require(Target::serves(*call.destfmt), site);
  return trace(Core<Source, Target>(call)(call), site);
}

// Whether every value of source and target has the same length, so that a loop over values that
// follow each other needs nothing but their addresses.
template <class Source, class Target>
inline constexpr bool kHasDenseLoop =
    Source::kLength == sizeof(typename Source::Value) && Target::kLength != 0;

template <class Source, class Target, bool kReports>
CS_INT convert_densely(const ColumnCall& column) {
  const auto* __restrict src = static_cast<const CS_BYTE*>(column.source->values);
  auto* __restrict dest = static_cast<CS_BYTE*>(column.destination->values);
  [[maybe_unused]] CS_RETCODE* const codes = column.codes;
  [[maybe_unused]] CS_INT* const lengths = column.destination->lengths;
  const CS_INT count = column.count;
  CS_INT faults = 0;
  for (CS_INT at = 0; at < count; ++at) {
    CS_INT length = 0;
    const Conversion call{column.context,
                          column.source->format,
                          src + std::ptrdiff_t{at} * Source::kLength,
                          column.destination->format,
                          dest + std::ptrdiff_t{at} * Target::kLength,
                          &length};
    const CS_RETCODE code = Core<Source, Target>(call)(call);
    if constexpr (kReports) {
      if (codes != nullptr) codes[at] = code;
      if (lengths != nullptr) lengths[at] = length;
    }
    faults += code == CS_SUCCEED ? 0 : 1;
  }
  return faults;
}

// A loop that stores nothing but values is one that the compiler can vectorise.
template <class Source, class Target>
CS_INT convert_dense(const ColumnCall& column) {
  const bool reports = column.codes != nullptr || column.destination->lengths != nullptr;
  return reports ? convert_densely<Source, Target, true>(column)
                 : convert_densely<Source, Target, false>(column);
}

// The values of a run, one after the other.
template <class Source, class Target>
CS_INT convert_run(const ColumnRun& run) {
  const ColumnCall& column = run.column;
  const CsColumnSource source = *column.source;
  const CsColumnDest destination = *column.destination;
  const auto* const values = static_cast<const CS_BYTE*>(source.values);
  CS_RETCODE* const codes = column.codes;
  const bool reports =
      codes != nullptr || destination.lengths != nullptr || destination.offsets != nullptr;
  CS_INT length = 0;
  CS_INT faults = 0;
  Conversion call{
      column.context,     &run.format, values + std::ptrdiff_t{run.begin} * source.stride,
      destination.format, run.dest,    &length};
  Core<Source, Target> core(call);
  for (CS_INT at = run.begin; at < run.end; ++at) {
    if (source.offsets != nullptr) {
      call.src = values + source.offsets[at];
      run.format.maxlength = source.offsets[at + 1] - source.offsets[at];
    }
    if (source.lengths != nullptr) run.format.maxlength = source.lengths[at];
    const CS_RETCODE code = core(call);
    CS_INT step = destination.stride;
    if (reports) {
      if (codes != nullptr) codes[at] = code;
      if (destination.lengths != nullptr) destination.lengths[at] = length;
      if (destination.offsets != nullptr) {
        step = length;
        destination.offsets[at + 1] = destination.offsets[at] + length;
      }
    }
    if (code != CS_SUCCEED) [[unlikely]]
      ++faults;
    call.src = static_cast<const CS_BYTE*>(call.src) + source.stride;
    call.dest = static_cast<CS_BYTE*>(call.dest) + step;
  }
  return faults;
}

template <class Source, class Target>
struct Member {
  static constexpr ColumnRoutine column_routine() {
    ColumnRoutine routine{Source::serves, Target::serves,  convert_run<Source, Target>,
                          nullptr,        Source::kLength, Target::kLength};
    if constexpr (kHasDenseLoop<Source, Target>) routine.dense = convert_dense<Source, Target>;
    return routine;
  }
};

// The source and target that COMNLIB_MEMBER joined under a name.
template <CS_CONV_FUNC kRoutine>
struct MemberOf;

template <CS_CONV_FUNC kRoutine>
constinit const ColumnRoutine ColumnForm<kRoutine>::routine = MemberOf<kRoutine>::column_routine();

constexpr bool terminates(const CS_DATAFMT& format) {
  return (format.format & CS_DFMT_NULLTERM) != 0;
}

// A value may have any address in a host's row buffer, so it is read and written bytewise.
template <class T>
T load(const void* from) {
  static_assert(std::is_trivially_copyable_v<T>);
  T value;
  std::memcpy(&value, from, sizeof value);
  return value;
}

template <class T>
void store(void* to, const T& value) {
  static_assert(std::is_trivially_copyable_v<T>);
  std::memcpy(to, &value, sizeof value);
}

// Stores a result and its length; returns `code`.
template <class T>
CS_RETCODE store_result(const Conversion& call, const T& value, CS_RETCODE code = CS_SUCCEED) {
  store(call.dest, value);
  *call.destlen = sizeof value;
  return code;
}

// The parts of a CS_VARCHAR or CS_VARBINARY at any address.
inline CS_SMALLINT record_length(const void* record) {
  return load<CS_SMALLINT>(record);
}
inline bool is_record_length(CS_SMALLINT length) {
  return length >= 0 && length <= CS_MAX_CHAR;
}
inline const CS_BYTE* record_bytes(const void* record) {
  return static_cast<const CS_BYTE*>(record) + offsetof(CS_VARBINARY, array);
}
inline CS_BYTE* record_bytes(void* record) {
  return static_cast<CS_BYTE*>(record) + offsetof(CS_VARBINARY, array);
}

// A source of fixed length. The value is a copy, so a destination may share the source's bytes.
template <class Type>
struct FixedSource : Type {
  static CS_RETCODE read(const Conversion& call, typename Type::Value& value) {
    std::memcpy(&value, call.src, sizeof value);
    return Type::contains(value) ? CS_SUCCEED : CS_CVT_DOMAIN;
  }
};

}  // namespace comnlib
