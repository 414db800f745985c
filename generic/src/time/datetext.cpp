// Reading and writing datetime text. A DateCursor never moves past its text, and every value that
// is returned is a valid datetime.
#include "time/datetext.h"

#include <emmintrin.h>

#include <algorithm>
#include <cstdint>
#include <cstring>

#include "chars/ascii.h"
#include "chars/decimal.h"
#include "time/datetime.h"

namespace comnlib {
namespace {

constexpr char lower(char c) {
  return c >= 'A' && c <= 'Z' ? static_cast<char>(c + ('a' - 'A')) : c;
}
// Bytes above ASCII belong to letters.
constexpr bool is_letter(char c) {
  return (lower(c) >= 'a' && lower(c) <= 'z') || static_cast<unsigned char>(c) >= 0x80;
}
constexpr bool is_separator(char c) {
  return c == '/' || c == '-' || c == '.';
}

// A run of digits; `value` is meaningful up to nine of them.
struct Numeral {
  CS_INT value = 0;
  std::size_t digits = 0;

  bool is_short() const { return digits == 1 || digits == 2; }  // a month, a day, part of a time
  bool is_full_year() const { return digits == 4; }
  bool is_year() const { return digits == 2 || digits == 4; }
};

constexpr CS_INT year_of(const Numeral& number) {
  if (number.digits == 4) return number.value;
  return number.value + (number.value < 50 ? 2000 : 1900);
}

class DateCursor {
 public:
  explicit DateCursor(std::string_view text) : rest_(text) {}

  bool done() const { return rest_.empty(); }
  char peek() const { return rest_.empty() ? '\0' : rest_.front(); }

  bool take(char c) {
    if (rest_.empty() || rest_.front() != c) return false;
    rest_.remove_prefix(1);
    return true;
  }

  // True when there was a blank.
  bool skip_blanks() {
    const std::size_t before = rest_.size();
    while (is_white_space(peek())) rest_.remove_prefix(1);
    return rest_.size() != before;
  }

  Numeral number() {
    Numeral result;
    for (const char c : rest_) {
      if (!is_digit(c)) break;
      if (result.digits < 9) result.value = result.value * 10 + (c - '0');
      ++result.digits;
    }
    rest_.remove_prefix(result.digits);
    return result;
  }

  // A cheap test whether the text here may spell `word`, which most names fail. The case of a
  // letter is one bit.
  bool may_spell(std::string_view word) const {
    return !word.empty() && ((word.front() ^ peek()) & ~('a' ^ 'A')) == 0;
  }

  // How far the text here spells `word`, ignoring case: its length, or 0. A letter after it makes
  // it another word.
  std::size_t spells(std::string_view word) const {
    if (word.empty() || word.size() > rest_.size()) return 0;
    const auto same = [](char a, char b) { return a == b || lower(a) == lower(b); };
    if (!std::equal(word.begin(), word.end(), rest_.begin(), same)) return 0;
    if (word.size() < rest_.size() && is_letter(rest_[word.size()])) return 0;
    return word.size();
  }

  void skip(std::size_t count) { rest_.remove_prefix(count); }
  std::string_view rest() const { return rest_; }

 private:
  std::string_view rest_;
};

enum class Meridiem { none, am, pm };

// What a text says, before anything is compared with the calendar.
struct Reading {
  CS_INT year = 1900;
  CS_INT month = 1;
  CS_INT day = 1;
  CS_INT hour = 0;
  CS_INT minute = 0;
  CS_INT second = 0;
  CS_INT ticks = 0;  // within the second
  Meridiem meridiem = Meridiem::none;
  bool iso_date = false;  // a "T" may follow

  bool set_date(const Numeral& y, const Numeral& m, const Numeral& d) {
    if (!y.is_year() || !m.is_short() || !d.is_short()) return false;
    year = year_of(y);
    month = m.value;
    day = d.value;
    return true;
  }
};

// The positions of year, month and day in each order.
struct FieldOrder {
  CS_BYTE year, month, day;
};
constexpr std::array<FieldOrder, 6> kFieldOrders = {
    {{2, 0, 1}, {2, 1, 0}, {0, 1, 2}, {0, 2, 1}, {1, 0, 2}, {1, 2, 0}}};

constexpr const FieldOrder& fields_in(DateOrder order) {
  return kFieldOrders[static_cast<std::size_t>(order)];
}

// Three numbers with two equal separators. Four digits in front are the year, and month and day
// follow in this order unless the locale writes year, day, month; "yyyy-mm-dd" is the same
// anywhere.
bool scan_numeric_date(DateCursor& in, const DateConventions& conventions, Reading& reading) {
  std::array<Numeral, 3> numbers;
  numbers[0] = in.number();
  const char separator = in.peek();
  if (!is_separator(separator)) return false;
  for (std::size_t i = 1; i < 3; ++i) {
    if (!in.take(separator)) return false;
    numbers[i] = in.number();
  }
  DateOrder order = conventions.order;
  if (numbers[0].is_full_year()) {
    reading.iso_date = separator == '-';
    if (reading.iso_date || order != DateOrder::year_day_month) order = DateOrder::year_month_day;
  }
  const FieldOrder& at = fields_in(order);
  return reading.set_date(numbers[at.year], numbers[at.month], numbers[at.day]);
}

// The number of the month whose name comes next, 0 without one. The longest name wins.
CS_INT scan_month(DateCursor& in, const DateConventions& conventions) {
  std::size_t longest = 0;
  CS_INT month = 0;
  const auto try_name = [&](std::string_view name, std::size_t index) {
    if (!in.may_spell(name)) return;
    const std::size_t length = in.spells(name);
    if (length <= longest) return;
    longest = length;
    month = static_cast<CS_INT>(index) + 1;
  };
  for (std::size_t i = 0; i < 12; ++i) {
    try_name(conventions.months[i], i);
    try_name(conventions.short_months[i], i);
  }
  in.skip(longest);
  return month;
}

// Three letters as one number, ASCII ones in lower case; 0 for a name of another length.
std::uint32_t three_letters(std::string_view name) {
  if (name.size() != 3) return 0;
  std::uint16_t two;
  std::memcpy(&two, name.data(), sizeof two);
  const auto third = static_cast<std::uint8_t>(name[2]);
  return two | std::uint32_t{third} << 16 | 0x202020;
}

// Whether each of them is from "a" to "z". A byte out of range sets its highest bit.
constexpr bool are_ascii_letters(std::uint32_t letters) {
  return ((letters | (letters - 0x616161) | (0x7A7A7A - letters)) & 0x808080) == 0;
}

// The month whose short name of three ASCII letters comes next, with a blank after it; 0 where that
// is not so, or another name may come next.
CS_INT scan_short_month(DateCursor& in, const DateConventions& conventions) {
  const std::string_view text = in.rest();
  if (text.size() < 4 || text[3] != ' ') return 0;
  const std::uint32_t letters = three_letters(text.substr(0, 3));
  if (!are_ascii_letters(letters)) return 0;
  std::size_t month = 0;
  while (three_letters(conventions.short_months[month]) != letters)
    if (++month == 12) return 0;
  for (std::size_t other = 0; other < 12; ++other) {
    const std::string_view name = conventions.months[other];
    if (name.size() > 3 ? name[3] == ' ' : other != month && three_letters(name) == letters)
      return 0;
  }
  in.skip(3);
  return static_cast<CS_INT>(month) + 1;
}

// Between the elements of a named date: one of "/-.", or blanks and at most one comma.
void skip_between(DateCursor& in) {
  if (is_separator(in.peek())) {
    in.skip(1);
    return;
  }
  in.skip_blanks();
  in.take(',');
  in.skip_blanks();
}

// Whether the first of two numbers beside a month's name is the day. Four digits are a year; of two
// numbers that leave it open the locale's order decides.
bool day_comes_first(const Numeral& a, const Numeral& b, DateOrder order) {
  if (a.is_full_year() || b.is_full_year()) return b.is_full_year();
  const bool a_is_day = a.value <= 31;
  const bool b_is_day = b.value <= 31;
  if (a.digits != b.digits) return b.digits == 2;
  if (a_is_day != b_is_day) return a_is_day;
  return fields_in(order).day < fields_in(order).year;
}

// "AM" or "PM", after blanks or not; takes nothing when neither comes next.
Meridiem scan_meridiem(DateCursor& in, const DateConventions& conventions) {
  DateCursor ahead = in;
  ahead.skip_blanks();
  const std::size_t am = ahead.spells(conventions.am);
  const std::size_t pm = ahead.spells(conventions.pm);
  if (am == pm) return Meridiem::none;
  ahead.skip(std::max(am, pm));
  in = ahead;
  return am > pm ? Meridiem::am : Meridiem::pm;
}

// Whether a time such as "3:05" or "3 PM" begins here.
bool at_time(DateCursor ahead, const DateConventions& conventions) {
  if (ahead.number().digits == 0) return false;
  return ahead.peek() == ':' || scan_meridiem(ahead, conventions) != Meridiem::none;
}

// A month's name with day and year, in any order.
bool scan_named_date(DateCursor& in, const DateConventions& conventions, Reading& reading) {
  std::array<Numeral, 2> numbers;
  std::size_t found = 0;
  CS_INT month = 0;
  for (std::size_t element = 0; element < 3; ++element) {
    if (element != 0) skip_between(in);
    if (month == 0) {
      // The name is tried first, since some locales' names begin with a digit.
      month = scan_month(in, conventions);
      if (month != 0) continue;
    }
    if (found == 2 || !is_digit(in.peek()) || at_time(in, conventions)) return false;
    numbers[found++] = in.number();
  }
  const bool day_first = day_comes_first(numbers[0], numbers[1], conventions.order);
  const Numeral& year = numbers[day_first ? 1 : 0];
  const Numeral& day = numbers[day_first ? 0 : 1];
  return reading.set_date(year, {month, 2}, day);
}

// "yyyymmdd", "yymmdd" or "yyyy".
bool scan_compact_date(DateCursor& in, const DateConventions&, Reading& reading) {
  const Numeral number = in.number();
  if (number.is_full_year()) return reading.set_date(number, {1, 2}, {1, 2});
  if (number.digits != 6 && number.digits != 8) return false;
  reading.iso_date = number.digits == 8;
  return reading.set_date({number.value / 10000, number.digits - 4}, {number.value / 100 % 100, 2},
                          {number.value % 100, 2});
}

bool scan_date(DateCursor& in, const DateConventions& conventions, Reading& reading) {
  for (auto* const form : {scan_numeric_date, scan_named_date, scan_compact_date}) {
    DateCursor ahead = in;
    Reading attempt;
    if (!form(ahead, conventions, attempt)) continue;
    in = ahead;
    reading = attempt;
    return true;
  }
  return false;
}

constexpr auto kPowersOf10 = [] {
  std::array<CS_UINT, 10> powers{1};
  for (std::size_t i = 1; i < powers.size(); ++i) powers[i] = powers[i - 1] * 10;
  return powers;
}();

// The digits after the point of a second as ticks, or -1 unless there are one to nine. Like 999
// milliseconds, a fraction never becomes the next second.
CS_INT ticks_of_fraction(const Numeral& fraction) {
  if (fraction.digits < 1 || fraction.digits > 9) return -1;
  const CS_UINT nanoseconds =
      static_cast<CS_UINT>(fraction.value) * kPowersOf10[9 - fraction.digits];
  const CS_UINT ticks = (nanoseconds * 3 + 5'000'000) / 10'000'000;
  return static_cast<CS_INT>(std::min<CS_UINT>(ticks, kTicksPerSecond - 1));
}

bool scan_milliseconds(DateCursor& in, Reading& reading) {
  const Numeral number = in.number();
  if (number.digits < 1 || number.digits > 3) return false;
  reading.ticks = static_cast<CS_INT>(ticks_of_milliseconds(number.value));
  return true;
}

bool scan_time(DateCursor& in, const DateConventions& conventions, Reading& reading) {
  const auto scan_short = [&in](CS_INT& value) {
    const Numeral number = in.number();
    value = number.value;
    return number.is_short();
  };
  if (!scan_short(reading.hour)) return false;
  if (!in.take(':')) {
    reading.meridiem = scan_meridiem(in, conventions);
    return reading.meridiem != Meridiem::none;
  }
  if (!scan_short(reading.minute)) return false;
  if (in.take(':')) {
    if (!scan_short(reading.second)) return false;
    if (in.take(':')) {
      if (!scan_milliseconds(in, reading)) return false;
    } else if (in.take('.')) {
      reading.ticks = ticks_of_fraction(in.number());
      if (reading.ticks < 0) return false;
    }
  }
  reading.meridiem = scan_meridiem(in, conventions);
  return true;
}

bool scan(DateCursor& in, const DateConventions& conventions, Reading& reading) {
  in.skip_blanks();
  if (in.done()) return true;
  if (!at_time(in, conventions)) {
    if (!scan_date(in, conventions, reading)) return false;
    const bool joined = reading.iso_date && in.take('T');
    const bool apart = !joined && in.skip_blanks();
    if (!joined && in.done()) return true;
    if (!joined && !apart) return false;
  }
  if (!scan_time(in, conventions, reading)) return false;
  in.skip_blanks();
  return in.done();
}

// False when the clock has no such time.
bool resolve_meridiem(Reading& reading) {
  if (reading.meridiem == Meridiem::none) return true;
  if (reading.hour < 1 || reading.hour > 12) return false;
  reading.hour = reading.hour % 12 + (reading.meridiem == Meridiem::pm ? 12 : 0);
  return true;
}

DateText make(const Reading& reading, CS_DATETIME& value) {
  CS_INT days = 0;
  if (make_days(reading.year, reading.month - 1, reading.day, days) != kFieldsDone ||
      reading.hour > 23 || reading.minute > 59 || reading.second > 59)
    return DateText::out_of_range;
  value = {days, reading.hour * kTicksPerHour + reading.minute * kTicksPerMinute +
                     reading.second * kTicksPerSecond + reading.ticks};
  return DateText::done;
}

// Not inlined, so that the frame of the fast path stays small.
[[gnu::noinline]] DateText parse_any(std::string_view text, const DateConventions& conventions,
                                     CS_DATETIME& value) {
  value = {};
  Reading reading;
  DateCursor in(text);
  if (!scan(in, conventions, reading)) return DateText::syntax;
  if (!resolve_meridiem(reading)) return DateText::out_of_range;
  return make(reading, value);
}

constexpr std::size_t kIsoSeconds = std::string_view("yyyy-mm-ddThh:mm:ss").size();

// Adds the fraction that ends an ISO timestamp; false when it is not valid.
[[gnu::noinline]] bool add_iso_fraction(std::string_view text, CS_DATETIME& value) {
  DateCursor in(text);
  if (!in.take('.')) return false;
  const CS_INT ticks = ticks_of_fraction(in.number());
  value.dttime += ticks;
  return ticks >= 0 && in.done();
}

// "yyyy-mm-ddThh:mm:ss" with a blank or "T" and perhaps a fraction: the text of interchange files,
// recognised by its layout. On false parse_any() reads the text: it gives the same value or finds
// the fault.
bool read_iso(std::string_view text, CS_DATETIME& value) {
  if (text.size() < kIsoSeconds) return false;
  const char* const at = text.data();
  // All but the day and "T" at once, as "yyyy-mm-hh:mm:ss". Each byte less the lowest that is valid
  // there must not exceed the distance to the highest.
  const auto low =
      _mm_setr_epi8('0', '0', '0', '0', '-', '0', '0', '-', '0', '0', ':', '0', '0', ':', '0', '0');
  const auto distance = _mm_setr_epi8(9, 9, 9, 9, 0, 9, 9, 0, 9, 9, 0, 9, 9, 0, 9, 9);
  const auto bytes = _mm_unpacklo_epi64(_mm_loadl_epi64(reinterpret_cast<const __m128i*>(at)),
                                        _mm_loadl_epi64(reinterpret_cast<const __m128i*>(at + 11)));
  const auto digits = _mm_sub_epi8(bytes, low);
  const auto in_layout = _mm_cmpeq_epi8(_mm_min_epu8(digits, distance), digits);
  // Two digits make a number in the byte of the first of them; month and minute are moved so
  // that each has a word to itself: century, year, month, 0, hour, minute, 0, second.
  const auto pairs =
      _mm_add_epi8(_mm_mullo_epi16(digits, _mm_set1_epi16(10)), _mm_srli_si128(digits, 1));
  const auto fields = _mm_or_si128(
      _mm_and_si128(pairs, _mm_setr_epi16(0xFF, 0xFF, 0, 0, 0xFF, 0, 0, 0xFF)),
      _mm_and_si128(_mm_srli_si128(pairs, 1), _mm_setr_epi16(0, 0, 0xFF, 0, 0, 0xFF, 0, 0)));
  const auto too_large = _mm_cmpgt_epi16(fields, _mm_setr_epi16(99, 99, 12, 0, 23, 59, 0, 59));
  if (_mm_movemask_epi8(_mm_andnot_si128(too_large, in_layout)) != 0xFFFF) return false;

  const unsigned tens_of_day = static_cast<unsigned char>(at[8]) - unsigned{'0'};
  const unsigned ones_of_day = static_cast<unsigned char>(at[9]) - unsigned{'0'};
  if (tens_of_day > 3 || ones_of_day > 9 || (at[10] != 'T' && at[10] != ' ')) return false;

  // Year, month, seconds in hours and minutes, seconds.
  const auto sums = _mm_madd_epi16(fields, _mm_setr_epi16(100, 1, 1, 0, 3600, 60, 0, 1));
  const CS_INT year = _mm_cvtsi128_si32(sums);
  const CS_INT month = _mm_cvtsi128_si32(_mm_srli_si128(sums, 4));
  const auto day = static_cast<CS_INT>(tens_of_day * 10 + ones_of_day);
  if (make_days(year, month - 1, day, value.dtdays) != kFieldsDone) return false;
  value.dttime = kTicksPerSecond * (_mm_cvtsi128_si32(_mm_srli_si128(sums, 8)) +
                                    _mm_cvtsi128_si32(_mm_srli_si128(sums, 12)));
  return text.size() == kIsoSeconds || add_iso_fraction(text.substr(kIsoSeconds), value);
}

// The number of two characters, the first of which may be a blank; -1 for any other characters.
CS_INT two_columns(const char* at) {
  if (!is_digit(at[1]) || !(is_digit(at[0]) || at[0] == ' ')) return -1;
  return (at[0] == ' ' ? 0 : (at[0] - '0') * 10) + (at[1] - '0');
}

// A name that begins with a digit or a separator might be taken for a part of a number or a date.
bool has_letters(std::string_view name) {
  return !name.empty() && is_letter(name[0]);
}
bool tells_time_by_letters(const DateConventions& conventions) {
  return has_letters(conventions.am) && has_letters(conventions.pm);
}

bool is_blank_from(std::string_view text, std::size_t at) {
  return text.find_first_not_of(' ', at) == std::string_view::npos;
}

// "mmm dd yyyy hh:mmAM", the default style where the month comes first, with a name of any length,
// or "mmm dd yyyy": text that begins with a letter. False leaves it to parse_any(), as above.
bool read_default(std::string_view text, const DateConventions& conventions, CS_DATETIME& value) {
  constexpr std::string_view kDate = " dd yyyy";
  constexpr std::string_view kDateAndTime = " dd yyyy hh:mm";
  if (!tells_time_by_letters(conventions)) return false;
  DateCursor in(text);
  Reading reading;
  reading.month = scan_short_month(in, conventions);
  if (reading.month == 0) reading.month = scan_month(in, conventions);
  const std::string_view rest = in.rest();
  if (reading.month == 0 || rest.size() < kDate.size()) return false;
  const char* const at = rest.data();
  const CS_INT century = two_columns(at + 4);
  const CS_INT year = two_columns(at + 6);
  reading.day = two_columns(at + 1);
  // Only the day and the hour may have a blank for a leading zero.
  if ((century | year | reading.day) < 0 || at[0] != ' ' || at[3] != ' ' || at[4] == ' ' ||
      at[6] == ' ')
    return false;
  reading.year = century * 100 + year;
  if (is_blank_from(rest, kDate.size())) return make(reading, value) == DateText::done;

  if (rest.size() <= kDateAndTime.size()) return false;
  reading.hour = two_columns(at + 9);
  reading.minute = two_columns(at + 12);
  if ((reading.hour | reading.minute) < 0 || at[8] != ' ' || at[11] != ':' || at[12] == ' ')
    return false;
  in.skip(kDateAndTime.size());
  reading.meridiem = scan_meridiem(in, conventions);
  return reading.meridiem != Meridiem::none && in.done() && resolve_meridiem(reading) &&
         make(reading, value) == DateText::done;
}

// "yyyy-mm-dd" or "yyyymmdd", and blanks. False leaves it to parse_any(), as above.
bool read_date(std::string_view text, const DateConventions& conventions, CS_DATETIME& value) {
  constexpr std::size_t kCompact = std::string_view("yyyymmdd").size();
  constexpr std::size_t kApart = std::string_view("yyyy-mm-dd").size();
  if (text.size() < kCompact || !tells_time_by_letters(conventions)) return false;
  const char* const at = text.data();
  const bool apart = text.size() >= kApart && at[4] == '-' && at[7] == '-';
  if (!is_blank_from(text, apart ? kApart : kCompact)) return false;
  const char* const month_at = at + (apart ? 5 : 4);
  const char* const day_at = at + (apart ? 8 : 6);
  const CS_INT century = two_columns(at);
  const CS_INT year = two_columns(at + 2);
  const CS_INT month = two_columns(month_at);
  const CS_INT day = two_columns(day_at);
  if ((century | year | month | day) < 0 || at[0] == ' ' || at[2] == ' ' || *month_at == ' ' ||
      *day_at == ' ')
    return false;
  if (!apart) {
    const auto may_come = [first = at[0]](std::string_view name) {
      return !name.empty() && name[0] == first;
    };
    if (std::ranges::any_of(conventions.months, may_come) ||
        std::ranges::any_of(conventions.short_months, may_come))
      return false;
  }
  value.dttime = 0;
  return make_days(century * 100 + year, month - 1, day, value.dtdays) == kFieldsDone;
}

// Writes text into room that was measured before.
class DateWriter {
 public:
  explicit DateWriter(char* at) : at_(at) {}

  // Most names have two to four bytes, which two pairs that may overlap hold.
  void text(std::string_view text) {
    if (text.size() >= 2 && text.size() <= 4) {
      std::memcpy(at_, text.data(), 2);
      at_ += text.size();
      std::memcpy(at_ - 2, text.data() + text.size() - 2, 2);
    } else {
      for (const char c : text) *at_++ = c;
    }
  }
  void character(char c) { *at_++ = c; }

  // Two digits of a value below 100.
  void pair(CS_INT value) {
    std::memcpy(at_, &kDigitPairs[2 * static_cast<std::size_t>(value)], 2);
    at_ += 2;
  }
  void year(CS_INT value) {
    pair(value / 100);
    pair(value % 100);
  }
  void milliseconds(CS_INT value) {
    character(static_cast<char>('0' + value / 100));
    pair(value % 100);
  }
  // In two columns, with a blank for a leading zero.
  void padded(CS_INT value) {
    pair(value);
    if (value < 10) at_[-2] = ' ';
  }

 private:
  char* at_;
};

constexpr std::size_t kIsoLength = std::string_view("yyyy-mm-ddThh:mm:ss.mmm").size();
constexpr std::size_t kDefaultLength = std::string_view(" dd yyyy hh:mm").size();
constexpr std::size_t kLongLength = std::string_view(" dd yyyy hh:mm:ss:mmm").size();

void write_iso(const CS_DATEREC& rec, DateWriter& out) {
  out.year(rec.dateyear);
  out.character('-');
  out.pair(rec.datemonth + 1);
  out.character('-');
  out.pair(rec.datedmonth);
  out.character('T');
  out.pair(rec.datehour);
  out.character(':');
  out.pair(rec.dateminute);
  out.character(':');
  out.pair(rec.datesecond);
  out.character('.');
  out.milliseconds(rec.datemsecond);
}

void write_named(const CS_DATEREC& rec, std::string_view month, std::string_view meridiem,
                 const DateConventions& conventions, DateWriter& out) {
  const FieldOrder& at = fields_in(conventions.order);
  for (CS_BYTE place = 0; place < 3; ++place) {
    if (place == at.year) {
      out.year(rec.dateyear);
    } else if (place == at.month) {
      out.text(month);
    } else {
      out.padded(rec.datedmonth);
    }
    out.character(' ');
  }
  const CS_INT hour = rec.datehour % 12;
  out.padded(hour == 0 ? 12 : hour);
  out.character(':');
  out.pair(rec.dateminute);
  if (conventions.style == COM_DATESTYLE_LONG) {
    out.character(':');
    out.pair(rec.datesecond);
    out.character(':');
    out.milliseconds(rec.datemsecond);
  }
  out.text(meridiem);
}

}  // namespace

ParsedDate parse_datetime(std::string_view text, const DateConventions& conventions) {
  ParsedDate result;
  const bool known_layout =
      !text.empty() && is_letter(text[0])
          ? read_default(text, conventions, result.value)
          : read_iso(text, result.value) || read_date(text, conventions, result.value);
  result.status = known_layout ? DateText::done : parse_any(text, conventions, result.value);
  return result;
}

FormattedDate format_datetime(const CS_DATETIME& value, const DateConventions& conventions,
                              std::span<char> room) {
  CS_DATEREC rec;
  com__datecrack(&value, &rec);
  com__timecrack(&value, &rec);
  if (rec.dateyear < kFirstYear || rec.dateyear > kLastYear || rec.datehour > 23)
    return {DateText::domain, 0};

  DateWriter out(room.data());
  if (conventions.style == COM_DATESTYLE_ISO) {
    if (room.size() < kIsoLength) return {DateText::style, 0};
    write_iso(rec, out);
    return {DateText::done, kIsoLength};
  }
  if (conventions.style != COM_DATESTYLE_DEFAULT && conventions.style != COM_DATESTYLE_LONG)
    return {DateText::style, 0};
  const std::string_view month = conventions.short_months[static_cast<std::size_t>(rec.datemonth)];
  const std::string_view meridiem = rec.datehour < 12 ? conventions.am : conventions.pm;
  const std::size_t length =
      month.size() + meridiem.size() +
      (conventions.style == COM_DATESTYLE_LONG ? kLongLength : kDefaultLength);
  if (month.empty() || meridiem.empty() || length > room.size()) return {DateText::style, 0};
  write_named(rec, month, meridiem, conventions, out);
  return {DateText::done, length};
}

}  // namespace comnlib
