// Any bytes as a value of any datatype, converted to any other under any format, in the character
// sets of the localization home. Nothing is written outside the destination, the length and the
// code are possible ones, and what was written depends on the arguments alone.
#include <algorithm>
#include <array>
#include <memory>
#include <string>
#include <vector>

#include "comnlib/convert.h"
#include "comnlib/locale.h"
#include "comnlib/numeric.h"
#include "comnlib/thread.h"
#include "fuzz.h"

namespace {

using fuzz::check;

constexpr std::size_t kGuard = 64;
constexpr CS_BYTE kCanary = 0xC9;
constexpr CS_INT kMostRoom = 600;

// A context with its tables and a locale for each of some character sets.
class Host {
 public:
  Host() {
    setenv("TALVEN", COMNLIB_HOME, 1);
    check(comn_create_mutex(&globals_.cmg_mtx) == CS_SUCCEED);
    context.ctxglobals = &globals_;
    check(com_conv_init(&context) == CS_SUCCEED && com_null_init(&context) == CS_SUCCEED);
    check(comn_intl_init(&context, nullptr, 0) == CS_SUCCEED);
    constexpr const char* kNames[] = {"us_english", "fr_FR.UTF-8", "ja_JP", "ru_RU.KOI8-R",
                                      "zh_CN.GBK"};
    for (std::size_t i = 0; i < std::size(kNames); ++i) {
      CsLocCache* entry = nullptr;
      check(comn_intl_load(&context, kNames[i], CS_NULLTERM, &entry, nullptr, 0) == CS_SUCCEED);
      locales_[i] = {entry, entry, entry, entry, entry, entry, nullptr};
    }
  }
  // One of the locales, or none.
  CS_LOCALE* locale(unsigned choice) {
    return choice < locales_.size() ? &locales_[choice] : nullptr;
  }

  CS_CONTEXT context{};

 private:
  CsCtxGlobals globals_{};
  std::array<CS_LOCALE, 5> locales_{};
};

CS_DATAFMT take_format(fuzz::Input& input, Host& host, CS_INT datatype) {
  CS_DATAFMT format{};
  format.datatype = datatype;
  format.format = static_cast<CS_INT>(input.take_upto(63));
  const auto number = [&input] {
    const auto taken = input.take<std::int8_t>();
    return taken == -1 ? CS_INT{CS_USE_SRCVALUE} : CS_INT{taken};
  };
  format.precision = number();
  format.scale = number();
  format.maxlength = static_cast<CS_INT>(input.take_upto(kMostRoom));
  format.locale = host.locale(input.take_upto(7));
  return format;
}

// How many of the bytes that a routine reports are the value; the rest of a record stays as it was.
std::size_t value_length(CS_INT datatype, const CS_BYTE* bytes, std::size_t length) {
  if (datatype == CS_VARCHAR_TYPE || datatype == CS_VARBINARY_TYPE) {
    if (length == 0) return 0;
    CS_SMALLINT held;
    std::memcpy(&held, bytes, sizeof held);
    check(held >= 0 && held <= CS_MAX_CHAR);
    return sizeof held + static_cast<std::size_t>(held);
  }
  if ((datatype == CS_NUMERIC_TYPE || datatype == CS_DECIMAL_TYPE) && length > 2 && bytes[0] != 0)
    return static_cast<std::size_t>(comn_num_getlen(bytes[0])) + 2;
  return length;
}

bool is_character(CS_INT datatype) {
  return datatype == CS_CHAR_TYPE || datatype == CS_LONGCHAR_TYPE || datatype == CS_TEXT_TYPE ||
         datatype == CS_SENSITIVITY_TYPE || datatype == CS_BOUNDARY_TYPE;
}

// Whether source and destination are text of one encoding, as far as the formats show it.
bool is_plain_copy(const CS_DATAFMT& from, const CS_DATAFMT& to) {
  if (from.datatype == CS_UNICHAR_TYPE) return to.datatype == CS_UNICHAR_TYPE;
  return is_character(from.datatype) && is_character(to.datatype) && from.locale == to.locale &&
         (to.format & CS_DFMT_ESCQUOTE) == 0;
}

bool is_conversion_code(CS_RETCODE code) {
  return code == CS_SUCCEED || (code <= CS_CVT_OVERFLOW && code >= CS_CVT_SUBSTITUTED);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static Host& host = *new Host;  // lives as long as the process
  fuzz::Input input(data, size);
  const auto from = static_cast<CS_INT>(input.take_upto(CS_BUILTIN_TYPES - 1));
  const auto to = static_cast<CS_INT>(input.take_upto(CS_BUILTIN_TYPES - 1));
  const CS_CONV_FUNC routine = com_conv_func(&host.context, from, to);
  if (routine == nullptr || from == CS_VOID_TYPE) return 0;
  CS_DATAFMT srcfmt = take_format(input, host, from);
  const CS_DATAFMT destfmt = take_format(input, host, to);
  host.context.ctxlocale = host.locale(input.take_upto(7));

  // A source of exactly its length, so that a sanitizer sees any byte read after it.
  const auto rest = input.rest();
  const auto given = static_cast<CS_INT>(rest.size());
  const CS_INT length = comn_typelen(from, from == CS_UNICHAR_TYPE ? 0 : given);
  const bool variable = length == given || from == CS_UNICHAR_TYPE;
  srcfmt.maxlength = given > 0 ? given : 1;
  const auto source_size = static_cast<std::size_t>(variable ? srcfmt.maxlength : length);
  const auto source = std::make_unique<CS_BYTE[]>(source_size);
  if (!rest.empty())
    std::memcpy(source.get(), rest.data(), rest.size() < source_size ? rest.size() : source_size);

  const auto room =
      static_cast<std::size_t>(to == CS_UNICHAR_TYPE ? destfmt.maxlength
                               : to == CS_LONG_TYPE  ? 8
                                                     : comn_typelen(to, destfmt.maxlength));
  CS_RETCODE codes[2];
  CS_INT lengths[2];
  std::vector<CS_BYTE> dests[2];
  for (const std::size_t run : {0U, 1U}) {
    auto& dest = dests[run];
    dest.assign(room + 2 * kGuard, kCanary);
    std::fill_n(dest.data() + kGuard, room, run == 0 ? CS_BYTE{0x00} : CS_BYTE{0xFF});
    lengths[run] = -1;
    codes[run] = routine(&host.context, &srcfmt, source.get(), &destfmt, dest.data() + kGuard,
                         &lengths[run]);
    for (std::size_t at = 0; at < kGuard; ++at)
      check(dest[at] == kCanary && dest[kGuard + room + at] == kCanary);
  }
  check(codes[0] == codes[1] && lengths[0] == lengths[1] && is_conversion_code(codes[0]));
  // A bit counts its digit even where it has no room.
  const auto most = from == CS_BIT_TYPE && room == 0 ? std::size_t{1} : room;
  check(lengths[0] >= 0 && static_cast<std::size_t>(lengths[0]) <= most);
  check(codes[0] != CS_CVT_SYNTAX || lengths[0] == 0 || from == CS_REAL_TYPE ||
        from == CS_FLOAT_TYPE);
  // Whatever its bytes are, text of one encoding that has room is copied whole. A terminator may
  // need two bytes, and one before it that completes a unit.
  if (is_plain_copy(srcfmt, destfmt) && source_size <= room) {
    const bool terminated = (destfmt.format & CS_DFMT_NULLTERM) != 0;
    check(codes[0] != CS_CVT_TRUNCATED || (terminated && source_size + 3 > room));
    check(codes[0] == CS_CVT_TRUNCATED ||
          std::memcmp(dests[0].data() + kGuard, source.get(), source_size) == 0);
  }
  if (codes[0] != CS_SUCCEED) return 0;
  const auto written = static_cast<std::size_t>(lengths[0]);
  const CS_BYTE* first = dests[0].data() + kGuard;
  const std::size_t compared = value_length(to, first, written < room ? written : room);
  check(std::memcmp(first, dests[1].data() + kGuard, compared) == 0);
  return 0;
}
