#include "date_words.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <optional>
#include <span>

namespace rowcopy {
namespace {

constexpr bool is_digit(char c) {
  return c >= '0' && c <= '9';
}
constexpr bool is_blank(char c) {
  return c == ' ' || (c >= '\t' && c <= '\r');
}

// A run of digits with the bytes around it (NUL at either end of the text).
struct Number {
  std::string_view digits;
  char before;
  char after;
  CS_INT value;

  bool is_short() const { return digits.size() <= 2; }
};

constexpr std::size_t kMostNumbers = 8;  // three of a date, four of a time, and one too many

struct Numbers {
  std::array<Number, kMostNumbers> items;
  std::size_t count = 0;

  std::span<const Number> all() const { return std::span(items).first(count); }
};

Numbers find_numbers(std::string_view text) {
  Numbers numbers;
  for (std::size_t at = 0; at < text.size() && numbers.count < kMostNumbers;) {
    if (!is_digit(text[at])) {
      ++at;
      continue;
    }
    std::size_t end = at;
    while (end < text.size() && is_digit(text[end])) ++end;
    Number number{text.substr(at, end - at), at == 0 ? '\0' : text[at - 1],
                  end == text.size() ? '\0' : text[end], -1};
    std::from_chars(text.data() + at, text.data() + end, number.value);
    numbers.items[numbers.count++] = number;
    at = end;
  }
  return numbers;
}

std::string_view trim_zeros(std::string_view digits) {
  while (digits.ends_with('0')) digits.remove_suffix(1);
  return digits;
}

bool same_fraction(std::string_view digits, CS_INT milliseconds) {
  const std::array<char, 3> text = {static_cast<char>('0' + milliseconds / 100),
                                    static_cast<char>('0' + milliseconds / 10 % 10),
                                    static_cast<char>('0' + milliseconds % 10)};
  return trim_zeros(digits) == trim_zeros({text.data(), text.size()});
}

bool same_year(const Number& number, CS_INT year) {
  return number.digits.size() == 4 ? number.value == year
                                   : number.digits.size() == 2 && number.value == year % 100;
}

// What the numbers of a date say; nothing when they say something else than the value.
std::optional<Verdict> compare_day(std::span<const Number> numbers, const CS_DATEREC& rec) {
  const CS_INT month = rec.datemonth + 1;
  const auto is_day = [&](const Number& n) { return n.is_short() && n.value == rec.datedmonth; };
  const auto is_month = [&](const Number& n) { return n.is_short() && n.value == month; };
  const auto is_year = [&](const Number& n) { return same_year(n, rec.dateyear); };
  if (numbers.empty()) {
    if (rec.dateyear == 1900 && month == 1 && rec.datedmonth == 1) return Verdict::kFilledIn;
  } else if (numbers.size() == 1) {
    const Number& number = numbers.front();
    const CS_INT day = month * 100 + rec.datedmonth;
    if (number.digits.size() == 8 && number.value == rec.dateyear * 10000 + day)
      return Verdict::kSame;
    if (number.digits.size() == 6 && number.value == rec.dateyear % 100 * 10000 + day)
      return Verdict::kSame;
    if (number.digits.size() == 4 && is_year(number) && day == 101) return Verdict::kFilledIn;
  } else if (numbers.size() == 2) {  // beside the name of a month
    const Number& a = numbers[0];
    const Number& b = numbers[1];
    if ((is_day(a) && is_year(b)) || (is_year(a) && is_day(b))) return Verdict::kSame;
  } else if (numbers.size() == 3) {
    std::array<std::size_t, 3> order = {0, 1, 2};
    do {
      if (is_year(numbers[order[0]]) && is_month(numbers[order[1]]) && is_day(numbers[order[2]]))
        return Verdict::kSame;
    } while (std::ranges::next_permutation(order).found);
  }
  return std::nullopt;
}

// Which half of the day the end of a text may say. Languages have other words than "AM" and "PM";
// these leave it open.
enum class Half { kNone, kMorning, kAfternoon, kEither };

Half half_of(std::string_view text) {
  const char last = text.back();
  if (is_digit(last)) return Half::kNone;
  if (text.size() < 2 || (last != 'm' && last != 'M')) return Half::kEither;
  const char before = text[text.size() - 2];
  if (before == 'a' || before == 'A') return Half::kMorning;
  return before == 'p' || before == 'P' ? Half::kAfternoon : Half::kEither;
}

bool same_hour(const Number& number, Half half, const CS_DATEREC& rec) {
  if (!number.is_short()) return false;
  if (half == Half::kNone) return number.value == rec.datehour;
  if (number.value < 1 || number.value > 12) return number.value == rec.datehour;
  if (half == Half::kMorning && rec.datehour >= 12) return false;
  if (half == Half::kAfternoon && rec.datehour < 12) return false;
  return number.value % 12 == rec.datehour % 12;
}

bool same_clock(std::span<const Number> time, Half half, const CS_DATEREC& rec) {
  if (time.size() > 4 || !same_hour(time[0], half, rec)) return false;
  if (time.size() > 1 ? time[1].value != rec.dateminute : rec.dateminute != 0) return false;
  if (time.size() > 2 ? time[2].value != rec.datesecond : rec.datesecond != 0) return false;
  if (time.size() < 4) return rec.datemsecond == 0;
  return time[3].before == ':' ? time[3].value == rec.datemsecond
                               : same_fraction(time[3].digits, rec.datemsecond);
}

bool is_midnight(const CS_DATEREC& rec) {
  return rec.datehour == 0 && rec.dateminute == 0 && rec.datesecond == 0 && rec.datemsecond == 0;
}

// The numbers that belong to the time of day: from the one before the first colon on.
std::size_t time_begin(std::span<const Number> numbers) {
  const auto found = std::ranges::find(numbers, ':', &Number::after);
  return static_cast<std::size_t>(found - numbers.begin());
}

Verdict compare_words(std::string_view text, const CS_DATEREC& rec) {
  const Numbers found = find_numbers(text);
  const auto numbers = found.all();
  if (numbers.empty()) return Verdict::kNoValue;
  const Half half = half_of(text);
  const std::size_t time = time_begin(numbers);
  if (time < numbers.size()) {
    const auto day = compare_day(numbers.first(time), rec);
    if (!day || !same_clock(numbers.subspan(time), half, rec)) return Verdict::kChanged;
    return *day;
  }
  // A date without a time of day, or one whose last number is an hour with "AM" or "PM".
  if (is_midnight(rec) && compare_day(numbers, rec)) return Verdict::kFilledIn;
  const auto day = compare_day(numbers.first(numbers.size() - 1), rec);
  if (half == Half::kNone || !day || !same_clock(numbers.last(1), half, rec))
    return Verdict::kChanged;
  return *day;
}

}  // namespace

std::optional<Verdict> compare_iso_date(std::string_view text, const IsoDate& value) {
  const std::string_view whole(value.data(), value.size());
  if ((text.size() != kIsoDay && text.size() != kIsoSeconds) ||
      !text.starts_with(whole.substr(0, kIsoDay)))
    return std::nullopt;
  const std::string_view rest = whole.substr(kIsoDay + 1);
  if (text.size() == kIsoDay)
    return rest == "00:00:00.000" ? std::optional(Verdict::kFilledIn) : std::nullopt;
  if ((text[kIsoDay] != 'T' && text[kIsoDay] != ' ') ||
      !rest.starts_with(text.substr(kIsoDay + 1)) || !rest.ends_with(".000"))
    return std::nullopt;
  return Verdict::kSame;
}

Verdict compare_date(std::string_view text, const CS_DATETIME& value) {
  while (!text.empty() && is_blank(text.front())) text.remove_prefix(1);
  while (!text.empty() && is_blank(text.back())) text.remove_suffix(1);
  CS_DATEREC rec{};
  com_datecrack(&value, &rec);
  com_timecrack(&value, &rec);
  return compare_words(text, rec);
}

}  // namespace rowcopy
