// Readers of date/time, number and money conventions. A record enters the context's list only when
// its section was read whole.
#include "intl/locdata.h"

#include <cstring>
#include <span>
#include <utility>

#include "intl/com_loc.h"
#include "intl/text.h"
#include "runtime/hostmemory.h"

namespace comnlib {

bool ConventionTexts::keep(std::string_view text, std::string_view& kept) {
  if (text.size() > bytes.size() - used) return false;
  CS_CHAR* to = bytes.data() + used;
  text.copy(to, text.size());
  kept = {to, text.size()};
  used += text.size();
  return true;
}

namespace {

template <class T>
struct Named {
  std::string_view name;
  T value;
};

template <class T, std::size_t N>
bool choose(std::string_view text, const Named<T> (&choices)[N], T& chosen) {
  for (const Named<T>& choice : choices) {
    if (choice.name != text) continue;
    chosen = choice.value;
    return true;
  }
  return false;
}

constexpr Named<DateOrder> kOrders[] = {
    {"mdy", DateOrder::month_day_year}, {"dmy", DateOrder::day_month_year},
    {"ymd", DateOrder::year_month_day}, {"ydm", DateOrder::year_day_month},
    {"myd", DateOrder::month_year_day}, {"dym", DateOrder::day_year_month}};
constexpr Named<CS_INT> kStyles[] = {
    {"default", COM_DATESTYLE_DEFAULT}, {"long", COM_DATESTYLE_LONG}, {"iso", COM_DATESTYLE_ISO}};
constexpr Named<SymbolPlace> kPlaces[] = {{"before", SymbolPlace::kBefore},
                                          {"after", SymbolPlace::kAfter}};

// Reads the values of one entry into the record's texts: exactly as many as there are places.
bool read_texts(IntlFile& file, ConventionTexts& texts, std::span<std::string_view> places) {
  for (std::string_view& place : places) {
    const CS_CHAR* value = file.next_value();
    if (value == nullptr || !texts.keep(value, place)) return false;
  }
  return file.next_value() == nullptr && !file.failed();
}

bool read_text(IntlFile& file, ConventionTexts& texts, std::string_view& place) {
  return read_texts(file, texts, {&place, 1});
}

// What each kind has of its own: its section, its list in the globals, its place in a cache entry,
// and its keys. read() is false for a value that the key does not take and for a key of another
// name; complete() tells whether all that formatting needs was there.
struct Date {
  using Record = CsDateInfo;
  static constexpr std::string_view kSection = "datetime";
  static constexpr auto kList = &CsCtxGlobals::cmg_datetime;
  static constexpr auto kPlace = &CsLocCache::locdateinfo;

  static bool read(Record& record, std::string_view key, IntlFile& file) {
    DateConventions& to = record.conventions;
    if (key == "months") return read_texts(file, record.texts, to.months);
    if (key == "shortmonths") return read_texts(file, record.texts, to.short_months);
    if (key == "days") return read_texts(file, record.texts, to.days);
    if (key == "am") return read_text(file, record.texts, to.am);
    if (key == "pm") return read_text(file, record.texts, to.pm);
    if (key == "order") return choose(file.next_text(), kOrders, to.order);
    if (key == "style") return choose(file.next_text(), kStyles, to.style);
    return false;
  }
  static bool complete(const Record& record) {
    const DateConventions& has = record.conventions;
    return !has.months[0].empty() && !has.short_months[0].empty() && !has.days[0].empty();
  }
};

bool read_digits(DigitConventions& to, ConventionTexts& texts, std::string_view key,
                 IntlFile& file) {
  if (key == "decimal") return read_text(file, texts, to.decimal_point);
  if (key == "separator") return read_text(file, texts, to.group_separator);
  if (key != "grouping") return false;
  const auto size = parse_number(file.next_text(), 0, 9);
  to.group_size = size.value_or(0);
  return size.has_value();
}

struct Number {
  using Record = CsNumInfo;
  static constexpr std::string_view kSection = "numeric";
  static constexpr auto kList = &CsCtxGlobals::cmg_numeric;
  static constexpr auto kPlace = &CsLocCache::locnuminfo;

  static bool read(Record& record, std::string_view key, IntlFile& file) {
    return read_digits(record.digits, record.texts, key, file);
  }
  static bool complete(const Record& record) { return !record.digits.decimal_point.empty(); }
};

struct Money {
  using Record = CsMonInfo;
  static constexpr std::string_view kSection = "money";
  static constexpr auto kList = &CsCtxGlobals::cmg_money;
  static constexpr auto kPlace = &CsLocCache::locmoninfo;

  static bool read(Record& record, std::string_view key, IntlFile& file) {
    if (key == "symbol") return read_text(file, record.texts, record.symbol);
    if (key == "place") return choose(file.next_text(), kPlaces, record.symbol_place);
    return read_digits(record.digits, record.texts, key, file);
  }
  static bool complete(const Record& record) { return !record.digits.decimal_point.empty(); }
};

template <class Kind>
typename Kind::Record* find(const CsCtxGlobals& globals, std::string_view name) {
  auto* record = globals.*Kind::kList;
  while (record != nullptr && record->texts.name.data() != name) record = record->next;
  return record;
}

template <class Kind>
bool find_for(const CsCtxGlobals& globals, std::string_view name, CsLocCache& entry) {
  auto* found = find<Kind>(globals, name);
  if (found != nullptr) entry.*Kind::kPlace = found;
  return found != nullptr;
}

// Reads the entries of the section that the file stands in.
template <class Kind>
CS_RETCODE read_section(std::string_view name, IntlFile& file, typename Kind::Record& record) {
  if (name.size() >= record.texts.name.size()) return CS_FAIL;
  name.copy(record.texts.name.data(), name.size());
  while (const CS_CHAR* key = file.next_entry())
    if (!Kind::read(record, key, file)) return file.failure();
  return !file.failed() && Kind::complete(record) ? CS_SUCCEED : file.failure();
}

// Makes a record of the section that the file stands in. Stores null on failure; a record that was
// there already is a second section of the kind, which no file has.
template <class Kind>
CS_RETCODE read_record(std::string_view name, IntlFile& file, typename Kind::Record*& made) {
  if (made != nullptr) return CS_FAIL;
  auto* record = make_record<typename Kind::Record>();
  if (record == nullptr) return CS_MEM_ERROR;
  const CS_RETCODE result = read_section<Kind>(name, file, *record);
  if (result == CS_SUCCEED) {
    made = record;
  } else {
    comn_free(record);
  }
  return result;
}

template <class Kind>
void add(CsCtxGlobals& globals, typename Kind::Record* record, CsLocCache& entry) {
  record->next = globals.*Kind::kList;
  globals.*Kind::kList = record;
  entry.*Kind::kPlace = record;
}

template <class Kind>
CS_RETCODE read_for(CS_CONTEXT& ctx, std::string_view name, IntlFile& file, CsLocCache& entry) {
  if (!file.find_section(Kind::kSection)) return file.failure();
  typename Kind::Record* record = nullptr;
  const CS_RETCODE result = read_record<Kind>(name, file, record);
  if (result == CS_SUCCEED) add<Kind>(*ctx.ctxglobals, record, entry);
  return result;
}

template <class Kind>
void drop_list(CsCtxGlobals& globals) {
  while (auto* record = globals.*Kind::kList) {
    globals.*Kind::kList = record->next;
    comn_free(record);
  }
}

// The three records of a common.loc, freed again unless they were taken over.
struct Common {
  CsDateInfo* date = nullptr;
  CsNumInfo* number = nullptr;
  CsMonInfo* money = nullptr;

  Common() = default;
  Common(const Common&) = delete;
  Common& operator=(const Common&) = delete;
  ~Common() {
    release(date);
    release(number);
    release(money);
  }

  CS_RETCODE read(std::string_view name, IntlFile& file) {
    while (const CS_CHAR* section = file.next_section()) {
      const CS_RETCODE result = read_section_of(section, name, file);
      if (result != CS_SUCCEED) return result;
    }
    const bool whole = date != nullptr && number != nullptr && money != nullptr;
    return whole && !file.failed() ? CS_SUCCEED : file.failure();
  }

  CS_RETCODE read_section_of(std::string_view section, std::string_view name, IntlFile& file) {
    if (section == Date::kSection) return read_record<Date>(name, file, date);
    if (section == Number::kSection) return read_record<Number>(name, file, number);
    if (section == Money::kSection) return read_record<Money>(name, file, money);
    return CS_SUCCEED;
  }

  void hand_over(CsCtxGlobals& globals, CsLocCache& entry) {
    add<Date>(globals, std::exchange(date, nullptr), entry);
    add<Number>(globals, std::exchange(number, nullptr), entry);
    add<Money>(globals, std::exchange(money, nullptr), entry);
  }
};

CS_RETCODE read_common(CS_CONTEXT& ctx, std::string_view name, CsLocCache& entry,
                       ErrorBuffer error) {
  INTL_HANDLE handle = nullptr;
  const CS_RETCODE opened = com__open_locfile(&ctx, entry.langname, entry.charname, "common.loc",
                                              &handle, error.path, error.length);
  if (opened != CS_SUCCEED) return opened;
  IntlFile file(ctx, handle);
  Common common;
  CS_RETCODE result = common.read(name, file);
  if (result == CS_SUCCEED) result = file.close();
  if (result == CS_SUCCEED) common.hand_over(*ctx.ctxglobals, entry);
  return result;
}

}  // namespace

bool find_conventions(const CsCtxGlobals& globals, CS_INT kind, std::string_view name,
                      CsLocCache& entry) {
  if (kind == COM_LC_MONETARY) return find_for<Money>(globals, name, entry);
  if (kind == COM_LC_NUMERIC) return find_for<Number>(globals, name, entry);
  return find_for<Date>(globals, name, entry);
}

CS_RETCODE read_conventions(CS_CONTEXT& ctx, CS_INT kind, std::string_view name, IntlFile& file,
                            CsLocCache& entry) {
  if (kind == COM_LC_MONETARY) return read_for<Money>(ctx, name, file, entry);
  if (kind == COM_LC_NUMERIC) return read_for<Number>(ctx, name, file, entry);
  return read_for<Date>(ctx, name, file, entry);
}

void drop_conventions(CsCtxGlobals& globals) {
  drop_list<Date>(globals);
  drop_list<Number>(globals);
  drop_list<Money>(globals);
}

}  // namespace comnlib

using namespace comnlib;

CS_RETCODE comn__read_common(CS_CONTEXT* ctx, CsLocCache* cache_entry, CS_CHAR* errbuf,
                             CS_INT errlen) {
  check_pointer(ctx);
  check_pointer(cache_entry);
  check_pointer(cache_entry->langname);
  check_pointer(cache_entry->charname);
  const std::string_view language = cache_entry->langname;
  const std::string_view charset = cache_entry->charname;
  std::array<CS_CHAR, 2 * COM_LOC_NAMESIZE> key;
  if (language.size() + 1 + charset.size() >= key.size()) return trace(CS_FAIL);
  CS_CHAR* end = key.data() + language.copy(key.data(), language.size());
  *end++ = '/';
  end += charset.copy(end, charset.size());
  const std::string_view name(key.data(), static_cast<std::size_t>(end - key.data()));

  const CsCtxGlobals& globals = *ctx->ctxglobals;
  if (find_for<Date>(globals, name, *cache_entry) &&
      find_for<Number>(globals, name, *cache_entry) && find_for<Money>(globals, name, *cache_entry))
    return trace(CS_SUCCEED);
  return trace(read_common(*ctx, name, *cache_entry, {errbuf, errlen}));
}
