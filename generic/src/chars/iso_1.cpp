// The two built-in ISO 8859-1 tables, each built from its rule.
#include "chars/iso_1.h"

#include <cstddef>
#include <utility>

namespace comnlib::latin1 {
namespace {

constexpr bool is(char_map row, int upper, int lower, int lex, int type) {
  return row.char_upper == upper && row.char_lower == lower && row.char_lex == lex &&
         row.char_type == type;
}

static_assert(is(default_entry(0x00), 0, 0, 8, 0));
static_assert(is(default_entry(0x09), 9, 9, 8, 8));
static_assert(is(default_entry(0x20), 32, 32, 8, 8));
static_assert(is(default_entry(0x24), 36, 36, 32, 32));
static_assert(is(default_entry(0x2E), 46, 46, 32, 32));
static_assert(is(default_entry(0x30), 48, 48, 2, 20));
static_assert(is(default_entry(0x41), 65, 97, 1, 17));
static_assert(is(default_entry(0x5A), 90, 122, 1, 1));
static_assert(is(default_entry(0x61), 65, 97, 1, 18));
static_assert(is(default_entry(0x7A), 90, 122, 1, 2));
static_assert(is(default_entry(0xA5), 165, 165, 32, 32));
static_assert(is(default_entry(0xC0), 192, 224, 1, 1));
static_assert(is(default_entry(0xE0), 192, 224, 1, 2));
static_assert(is(default_entry(0xFF), 255, 255, 1, 2));

static_assert(is(older_entry(0x09), 9, 9, 0, 8));
static_assert(is(older_entry(0x20), 32, 32, 0, 72));
static_assert(is(older_entry(0x2E), 46, 46, 0, 96));
static_assert(is(older_entry(0x30), 48, 48, 0, 84));
static_assert(is(older_entry(0x41), 65, 97, 0, 81));
static_assert(is(older_entry(0x47), 71, 103, 0, 65));
static_assert(is(older_entry(0x61), 65, 97, 0, 82));
static_assert(is(older_entry(0x7A), 90, 122, 0, 66));
static_assert(is(older_entry(0x80), 128, 128, 0, 0));
static_assert(is(older_entry(0xC0), 192, 224, 0, 65));
static_assert(is(older_entry(0xE0), 192, 224, 0, 66));
static_assert(is(older_entry(0xFF), 255, 255, 0, 66));

}  // namespace
}  // namespace comnlib::latin1

// The 256 numbers 0 to 255, each as an argument of `rule`.
#define COMNLIB_ROWS_4(rule, n) rule(n), rule(n + 1), rule(n + 2), rule(n + 3)
#define COMNLIB_ROWS_16(rule, n)                                                     \
  COMNLIB_ROWS_4(rule, n), COMNLIB_ROWS_4(rule, n + 4), COMNLIB_ROWS_4(rule, n + 8), \
      COMNLIB_ROWS_4(rule, n + 12)
#define COMNLIB_ROWS_64(rule, n)                                                          \
  COMNLIB_ROWS_16(rule, n), COMNLIB_ROWS_16(rule, n + 16), COMNLIB_ROWS_16(rule, n + 32), \
      COMNLIB_ROWS_16(rule, n + 48)
#define COMNLIB_ROWS_256(rule)                                                     \
  COMNLIB_ROWS_64(rule, 0), COMNLIB_ROWS_64(rule, 64), COMNLIB_ROWS_64(rule, 128), \
      COMNLIB_ROWS_64(rule, 192)

constexpr char_map ISO_1_type_map[256] = {COMNLIB_ROWS_256(comnlib::latin1::default_entry)};
constexpr char_map Com_charmap[256] = {COMNLIB_ROWS_256(comnlib::latin1::older_entry)};
