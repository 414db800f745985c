// Readers of date/time, number and money conventions. A record enters the context's list only when
// its section was read whole.
#include "intl/locdata.h"

#include <atomic>
#include <cstring>
#include <span>
#include <utility>

#include "intl/kept_status.h"
#include "intl/load_once.h"
#include "intl/locking.h"
#include "intl/parse_number.h"
#include "intl/text.h"

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

// What differs from kind to kind: the section, the list in the globals, the place in a cache entry,
// and the keys. read() is false for an unknown key and for a value that the key does not take;
// complete() is false when something that formatting needs is missing.
struct DateKind {
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

struct NumberKind {
  using Record = CsNumInfo;
  static constexpr std::string_view kSection = "numeric";
  static constexpr auto kList = &CsCtxGlobals::cmg_numeric;
  static constexpr auto kPlace = &CsLocCache::locnuminfo;

  static bool read(Record& record, std::string_view key, IntlFile& file) {
    return read_digits(record.digits, record.texts, key, file);
  }
  static bool complete(const Record& record) { return !record.digits.decimal_point.empty(); }
};

struct MoneyKind {
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
bool has_name(const typename Kind::Record& record, std::string_view name) {
  return record.texts.name.data() == name;
}

// Reads the entries of the section that the file is in.
template <class Kind>
CS_RETCODE read_section(std::string_view name, IntlFile& file, typename Kind::Record& record) {
  if (name.size() >= record.texts.name.size()) return CS_FAIL;
  name.copy(record.texts.name.data(), name.size());
  while (const CS_CHAR* key = file.next_entry())
    if (!Kind::read(record, key, file)) return file.failure();
  return !file.failed() && Kind::complete(record) ? CS_SUCCEED : file.failure();
}

template <class Kind>
CS_RETCODE load_named(CS_CONTEXT& ctx, CS_INT kind, const CS_CHAR* name, CsLocCache& entry,
                      ErrorBuffer error) {
  using Record = typename Kind::Record;
  const auto open = [&](INTL_HANDLE* handle) {
    return open_locdata(&ctx, kind, name, handle, error);
  };
  const auto read = [&](Record& record) {
    return read_file(ctx, open, [&](IntlFile& file) {
      if (!file.find_section(Kind::kSection)) return file.failure();
      return read_section<Kind>(name, file, record);
    });
  };
  return load_once<&Record::next>(
      ctx.ctxglobals->*Kind::kList, entry.*Kind::kPlace,
      [name](const Record& known) { return has_name<Kind>(known, name); }, read);
}

// The three records of a common.loc, which are added to the context's lists together or not at all.
struct Common {
  OwnedRecord<CsDateInfo> date;
  OwnedRecord<CsNumInfo> number;
  OwnedRecord<CsMonInfo> money;
};

// Makes a record of the section that the file is in. A record that is already there came from an
// earlier section of the same kind; no file may have two.
template <class Kind>
CS_RETCODE read_record(std::string_view name, IntlFile& file,
                       OwnedRecord<typename Kind::Record>& record) {
  if (record != nullptr) return CS_FAIL;
  record.reset(make_record<typename Kind::Record>());
  return record == nullptr ? CS_RETCODE{CS_MEM_ERROR} : read_section<Kind>(name, file, *record);
}

CS_RETCODE read_section_of(std::string_view section, std::string_view name, IntlFile& file,
                           Common& common) {
  if (section == DateKind::kSection) return read_record<DateKind>(name, file, common.date);
  if (section == NumberKind::kSection) return read_record<NumberKind>(name, file, common.number);
  if (section == MoneyKind::kSection) return read_record<MoneyKind>(name, file, common.money);
  return CS_SUCCEED;
}

CS_RETCODE read_all_sections(std::string_view name, IntlFile& file, Common& common) {
  while (const CS_CHAR* section = file.next_section()) {
    const CS_RETCODE result = read_section_of(section, name, file, common);
    if (result != CS_SUCCEED) return result;
  }
  const bool whole = common.date != nullptr && common.number != nullptr && common.money != nullptr;
  return whole && !file.failed() ? file.close() : file.failure();
}

template <class Kind>
bool find_for(const CsCtxGlobals& globals, std::string_view name, CsLocCache& entry) {
  auto* record = globals.*Kind::kList;
  while (record != nullptr && !has_name<Kind>(*record, name)) record = record->next;
  if (record != nullptr) entry.*Kind::kPlace = record;
  return record != nullptr;
}

template <class Kind>
void add(CsCtxGlobals& globals, OwnedRecord<typename Kind::Record> record, CsLocCache& entry) {
  record->next = globals.*Kind::kList;
  entry.*Kind::kPlace = globals.*Kind::kList = record.release();
}

CS_RETCODE read_common(CS_CONTEXT& ctx, std::string_view name, CsLocCache& entry,
                       ErrorBuffer error) {
  const auto open = [&](INTL_HANDLE* handle) {
    return com__open_locfile(&ctx, entry.langname, entry.charname, "common.loc", handle, error.path,
                             error.length);
  };
  Common common;
  const CS_RETCODE result =
      read_file(ctx, open, [&](IntlFile& file) { return read_all_sections(name, file, common); });
  if (result != CS_SUCCEED) return result;
  add<DateKind>(*ctx.ctxglobals, std::move(common.date), entry);
  add<NumberKind>(*ctx.ctxglobals, std::move(common.number), entry);
  add<MoneyKind>(*ctx.ctxglobals, std::move(common.money), entry);
  return CS_SUCCEED;
}

// The conventions of a cache entry, null when it has none. Those that locales.dat names are read
// here, when they are first needed.
template <class Kind>
CS_RETCODE conventions_of(CS_CONTEXT& ctx, CS_INT kind, const CS_CHAR* name, CsLocCache& entry,
                          const typename Kind::Record*& info) {
  const std::atomic_ref<typename Kind::Record*> place(entry.*Kind::kPlace);
  info = place.load(std::memory_order_acquire);
  if (info != nullptr || name == nullptr) return CS_SUCCEED;
  const GlobalsLock lock(ctx);
  if (!lock.taken()) return CS_FAIL;
  const KeptStatus kept(ctx);
  CsLocCache read{};
  const CS_RETCODE result = load_named<Kind>(ctx, kind, name, read, {nullptr, 0});
  if (result != CS_SUCCEED) return result;
  info = read.*Kind::kPlace;
  place.store(read.*Kind::kPlace, std::memory_order_release);
  return CS_SUCCEED;
}

// A text that is missing in the file is empty, not null.
const CS_CHAR* text_of(std::string_view text) {
  return text.empty() ? "" : text.data();
}

com_digits digits_of(const DigitConventions& digits, std::string_view symbol, SymbolPlace place) {
  return {text_of(digits.decimal_point),
          length_of(digits.decimal_point),
          text_of(digits.group_separator),
          length_of(digits.group_separator),
          digits.group_size,
          text_of(symbol),
          length_of(symbol),
          place == SymbolPlace::kAfter ? 1 : 0};
}

CS_RETCODE number_digits(CS_CONTEXT& ctx, CsLocCache& entry, com_digits& digits) {
  const CsNumInfo* info = nullptr;
  const CS_RETCODE result =
      conventions_of<NumberKind>(ctx, COM_LC_NUMERIC, entry.numname, entry, info);
  if (info != nullptr) digits = digits_of(info->digits, "", SymbolPlace::kBefore);
  return result;
}

// Loading a locale reads its money conventions, the named ones too.
CS_RETCODE money_digits(const CsLocCache& entry, com_digits& digits) {
  const CsMonInfo* info = entry.locmoninfo;
  if (info != nullptr) digits = digits_of(info->digits, info->symbol, info->symbol_place);
  return CS_SUCCEED;
}

}  // namespace

CS_RETCODE load_conventions(CS_CONTEXT& ctx, CS_INT kind, const CS_CHAR* name, CsLocCache& entry,
                            ErrorBuffer error) {
  if (kind == COM_LC_MONETARY) return load_named<MoneyKind>(ctx, kind, name, entry, error);
  if (kind == COM_LC_NUMERIC) return load_named<NumberKind>(ctx, kind, name, entry, error);
  return load_named<DateKind>(ctx, kind, name, entry, error);
}

CS_RETCODE date_conventions_of(CS_CONTEXT& ctx, CsLocCache& entry, const CsDateInfo*& info) {
  return conventions_of<DateKind>(ctx, COM_LC_TIME, entry.com__datename, entry, info);
}

void drop_conventions(CsCtxGlobals& globals) {
  drop_list<&CsDateInfo::next>(globals.cmg_datetime);
  drop_list<&CsNumInfo::next>(globals.cmg_numeric);
  drop_list<&CsMonInfo::next>(globals.cmg_money);
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
  if (find_for<DateKind>(globals, name, *cache_entry) &&
      find_for<NumberKind>(globals, name, *cache_entry) &&
      find_for<MoneyKind>(globals, name, *cache_entry))
    return trace(CS_SUCCEED);
  return trace(read_common(*ctx, name, *cache_entry, {errbuf, errlen}));
}

CS_RETCODE comn_loc_digits(CS_CONTEXT* ctx, const CS_LOCALE* locale, CS_INT category,
                           com_digits* digits) {
  check_pointer(ctx);
  check_pointer(digits);
  require(category == COM_LC_NUMERIC || category == COM_LC_MONETARY);
  const CS_LOCALE* of = locale != nullptr ? locale : ctx->ctxlocale;
  com_digits found = digits_of({".", "", 0}, "", SymbolPlace::kBefore);
  CS_RETCODE result = CS_SUCCEED;
  if (of != nullptr && category == COM_LC_NUMERIC && of->numericptr != nullptr)
    result = number_digits(*ctx, *of->numericptr, found);
  if (of != nullptr && category == COM_LC_MONETARY && of->monetaryptr != nullptr)
    result = money_digits(*of->monetaryptr, found);
  if (result == CS_SUCCEED) *digits = found;
  return trace(result);
}
