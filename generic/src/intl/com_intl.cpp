// Locale resolution, the cache of loaded locales, and the set-up of a context's globals. A cache
// entry enters the list only when all of it was loaded; the mutex is held through the whole load,
// so that no name is ever loaded twice.
#include "intl/com_intl.h"

#include <array>
#include <memory>

#include "intl/charset.h"
#include "intl/com_loc.h"
#include "intl/convcfg.h"
#include "intl/intlfile.h"
#include "intl/locdata.h"
#include "intl/locking.h"
#include "intl/message.h"
#include "intl/objectid.h"
#include "intl/sortorder.h"
#include "intl/text.h"
#include "runtime/hostmemory.h"

namespace comnlib {
namespace {

constexpr std::array<const char*, COM_LC_ALL> kVariables{
    "LC_COLLATE", "LC_CTYPE", "LC_MESSAGE", "LC_MONETARY", "LC_NUMERIC", "LC_TIME", "LC_ALL"};

// The platform's section of locales.dat.
constexpr std::string_view kPlatform = "linux";
constexpr CS_INT kListManagerVersion = 12500;

CS_RETCODE environment_locale(CS_CONTEXT& ctx, const char* variable, CS_CHAR* dst, CS_INT dstlen) {
  CS_INT length = intlgetenv(dst, dstlen, variable);
  if (length == 0) length = intlgetenv(dst, dstlen, "LANG");
  if (length < 0) {
    ctx.ctxintlerr = length;
    return CS_INTL_LIBERR;
  }
  if (length == 0) copy_cut("default", dst, dstlen);
  return CS_SUCCEED;
}

struct NameField {
  CS_CHAR* text;
  CS_INT* length;

  void set(std::string_view value) const {
    require(value.size() < COM_LOC_NAMESIZE);
    text[value.copy(text, value.size())] = '\0';
    *length = length_of(value);
  }
};

// The values after the locale name of a line. The first two must be there and not be empty; the
// rest ends with the first one missing.
CS_RETCODE read_names(IntlFile& file, CsLocNames& names) {
  const NameField sortorder{names.sortorder, &names.sortorderlen};
  const std::array<NameField, 6> fields{{{names.lang, &names.langlen},
                                         {names.charset, &names.charsetlen},
                                         sortorder,
                                         {names.datetime, &names.datetimelen},
                                         {names.numeric, &names.numericlen},
                                         {names.money, &names.moneylen}}};
  std::size_t given = 0;
  while (given < fields.size()) {
    const CS_CHAR* value = file.next_value();
    if (value == nullptr) break;
    fields[given++].set(value);
  }
  const bool has_both = names.langlen != 0 && names.charsetlen != 0;
  if (file.failed() || !has_both) return file.failure();
  if (names.sortorderlen == 0) sortorder.set("binary");
  return CS_SUCCEED;
}

CS_RETCODE find_names(IntlFile& file, std::string_view locname, CsLocNames& names) {
  if (!file.find_section(kPlatform)) return file.failure();
  while (const CS_CHAR* key = file.next_entry()) {
    // Any other key ends the search, whatever follows it.
    if (std::string_view(key) != "locale") return CS_FAIL;
    const CS_CHAR* value = file.next_value();
    if (value != nullptr && value == locname) return read_names(file, names);
    if (file.failed()) return file.failure();
  }
  return file.failure();
}

// A name of a cache entry and its length.
struct EntryName {
  CS_CHAR* CsLocCache::*text;
  CS_INT CsLocCache::*length;
};
constexpr EntryName kLocaleName{&CsLocCache::locname, &CsLocCache::locnamelen};
constexpr EntryName kCharsetName{&CsLocCache::charname, &CsLocCache::charnamelen};
constexpr EntryName kSortName{&CsLocCache::sortname, &CsLocCache::sortnamelen};
constexpr EntryName kLanguageName{&CsLocCache::langname, &CsLocCache::langnamelen};
constexpr EntryName kDateName{&CsLocCache::com__datename, &CsLocCache::datenamelen};
constexpr EntryName kNumberName{&CsLocCache::numname, &CsLocCache::numnamelen};
constexpr EntryName kMoneyName{&CsLocCache::monname, &CsLocCache::monnamelen};
constexpr std::array kEntryNames{kLocaleName, kCharsetName, kSortName, kLanguageName,
                                 kDateName,   kNumberName,  kMoneyName};

CS_RETCODE copy_name(CsLocCache& entry, EntryName name, std::string_view text) {
  auto* copy = static_cast<CS_CHAR*>(comn_malloc(text.size() + 1));
  if (copy == nullptr) return CS_MEM_ERROR;
  copy[text.copy(copy, text.size())] = '\0';
  entry.*name.text = copy;
  entry.*name.length = length_of(text);
  return CS_SUCCEED;
}

std::string_view name_of(const CsLocCache& entry, EntryName name) {
  return {entry.*name.text, static_cast<std::size_t>(entry.*name.length)};
}

struct DropEntry {
  void operator()(CsLocCache* entry) const {
    for (const EntryName name : kEntryNames) release(entry->*name.text);
    comn_free(entry);
  }
};
using OwnedEntry = std::unique_ptr<CsLocCache, DropEntry>;

// The names that a cache entry is loaded from.
struct LocaleNames {
  std::string_view locale, charset, language, sortorder, datetime, numeric, money;
};

// The first entry of that locale name that agrees with the names beside it.
template <class Agrees>
CsLocCache* find_entry(const CsCtxGlobals& globals, std::string_view locname, Agrees agrees) {
  CsLocCache* entry = globals.cmg_lcache;
  while (entry != nullptr && (name_of(*entry, kLocaleName) != locname || !agrees(*entry)))
    entry = entry->locnext;
  return entry;
}

CsLocCache* find_entry(const CsCtxGlobals& globals, std::string_view locname) {
  return find_entry(globals, locname, [](const CsLocCache&) { return true; });
}

CsLocCache* find_entry(const CsCtxGlobals& globals, const LocaleNames& names) {
  return find_entry(globals, names.locale, [&names](const CsLocCache& entry) {
    return name_of(entry, kCharsetName) == names.charset &&
           name_of(entry, kLanguageName) == names.language &&
           name_of(entry, kSortName) == names.sortorder;
  });
}

// The steps of a load, each of which needs the ones before it.
class EntryLoader {
 public:
  EntryLoader(CS_CONTEXT& ctx, CsLocCache& entry, ErrorBuffer error)
      : ctx_(ctx), entry_(entry), error_(error) {}

  CS_RETCODE load(const LocaleNames& names) {
    CS_RETCODE result = copy_name(entry_, kLocaleName, names.locale);
    if (result == CS_SUCCEED) result = load_charset(names.charset);
    if (result == CS_SUCCEED) result = load_messages(names.language);
    if (result == CS_SUCCEED) result = load_sort_order(names.sortorder);
    if (result == CS_SUCCEED) result = load_dates(names.datetime);
    if (result == CS_SUCCEED && !names.numeric.empty())
      result = name_with_id(kNumberName, "numeric", names.numeric);
    if (result == CS_SUCCEED && !names.money.empty()) result = load_money(names.money);
    return result;
  }

 private:
  // Copies a name and obtains its identifier.
  CS_RETCODE name_with_id(EntryName name, std::string_view oidclass, std::string_view text) {
    const CS_RETCODE result = copy_name(entry_, name, text);
    return result == CS_SUCCEED ? global_id(ctx_, oidclass, text, oid_, error_) : result;
  }
  CS_RETCODE load_charset(std::string_view name) {
    const CS_RETCODE result = name_with_id(kCharsetName, "charset", name);
    if (result != CS_SUCCEED) return result;
    return comn__intl_load_charset(&ctx_, oid_, &entry_, error_.path, error_.length);
  }
  CS_RETCODE load_messages(std::string_view name) {
    const CS_RETCODE result = name_with_id(kLanguageName, "natlang", name);
    if (result != CS_SUCCEED) return result;
    return comn__intl_load_message(&ctx_, oid_, &entry_, error_.path, error_.length);
  }
  CS_RETCODE load_sort_order(std::string_view name) {
    const CS_RETCODE result = name_with_id(kSortName, "collate", name);
    if (result != CS_SUCCEED) return result;
    return comn__intl_load_sortorder(&ctx_, oid_, &entry_, error_.path, error_.length);
  }
  // Conventions that have a name are recorded by name and identifier only, and read when they are
  // first needed. Without a name, common.loc gives the conventions of all three kinds.
  CS_RETCODE load_dates(std::string_view name) {
    if (name.empty()) return comn__read_common(&ctx_, &entry_, error_.path, error_.length);
    return name_with_id(kDateName, "datetime", name);
  }
  // Unlike the other two kinds, money conventions that have a name are loaded at once.
  CS_RETCODE load_money(std::string_view name) {
    const CS_RETCODE result = name_with_id(kMoneyName, "money", name);
    if (result != CS_SUCCEED) return result;
    return comn__load_locdata(&ctx_, COM_LC_MONETARY, entry_.monname, &entry_, error_.path,
                              error_.length);
  }

  CS_CONTEXT& ctx_;
  CsLocCache& entry_;
  ErrorBuffer error_;
  CsOid oid_ = 0;
};

// Drops the character sets that a failed load has added; nobody else has seen them.
void drop_descriptors_until(CsCtxGlobals& globals, const CsCharDesc* before) {
  while (globals.cmg_chardesc != before) {
    CsCharDesc* desc = globals.cmg_chardesc;
    globals.cmg_chardesc = desc->charnext;
    static_cast<void>(comn__chardesc_drop(desc));
  }
}

CS_RETCODE load_entry(CS_CONTEXT& ctx, const LocaleNames& names, CsLocCache** loaded,
                      ErrorBuffer error) {
  OwnedEntry entry(make_record<CsLocCache>());
  if (entry == nullptr) return CS_MEM_ERROR;
  CsCtxGlobals& globals = *ctx.ctxglobals;
  const CsCharDesc* before = globals.cmg_chardesc;
  const CS_RETCODE result = EntryLoader(ctx, *entry, error).load(names);
  if (result != CS_SUCCEED) {
    drop_descriptors_until(globals, before);
    return result;
  }
  // A second entry of one name goes after the first, so that a look-up by that name keeps finding
  // the first.
  CsLocCache* first = find_entry(globals, names.locale);
  CsLocCache** link = first == nullptr ? &globals.cmg_lcache : &first->locnext;
  entry->locnext = *link;
  *link = entry.get();
  *loaded = entry.release();
  return CS_SUCCEED;
}

CS_RETCODE load_from_table(CS_CONTEXT& ctx, std::string_view locname, CsLocCache** loaded,
                           ErrorBuffer error) {
  CsLocNames names;
  const CS_RETCODE result =
      comn__intl_lookup(&ctx, locname.data(), length_of(locname), &names, error.path, error.length);
  if (result != CS_SUCCEED) return result;
  return load_entry(ctx,
                    {.locale = locname,
                     .charset = names.charset,
                     .language = names.lang,
                     .sortorder = names.sortorder,
                     .datetime = names.datetime,
                     .numeric = names.numeric,
                     .money = names.money},
                    loaded, error);
}

void check_arguments(CS_CONTEXT* ctx, CS_CHAR* errbuf, CS_INT errlen,
                     CallSite site = CallSite::current()) {
  check_pointer(ctx, site);
  check_pointer(ctx->ctxglobals, site);
  require(errbuf == nullptr || errlen > 0, site);
}

// The entry that serves a category, in the order of their numbers.
const CsLocCache* entry_of(const CS_LOCALE& locale, CS_INT category) {
  const std::array entries{locale.collateptr,  locale.ctypeptr,   locale.messageptr,
                           locale.monetaryptr, locale.numericptr, locale.timeptr};
  return entries[static_cast<std::size_t>(category - 1)];
}

CS_RETCODE place_string(std::string_view text, CS_CHAR* buf, CS_INT buflen, CS_INT* outlen) {
  if (length_of(text) > buflen) return CS_FAIL;
  text.copy(buf, text.size());
  *outlen = length_of(text);
  return CS_SUCCEED;
}

CS_RETCODE place_language_and_charset(std::string_view language, std::string_view charset,
                                      CS_CHAR* buf, CS_INT buflen, CS_INT* outlen) {
  const std::size_t length = language.size() + 1 + charset.size();
  auto* text = static_cast<CS_CHAR*>(comn_malloc(length));
  if (text == nullptr) return CS_MEM_ERROR;
  CS_CHAR* at = text + language.copy(text, language.size());
  *at++ = '.';
  charset.copy(at, charset.size());
  const CS_RETCODE result = place_string({text, length}, buf, buflen, outlen);
  comn_free(text);
  return result;
}

// The parts of comn_intl_init, in their order. The temporary entry names what is loaded.
CS_RETCODE init_globals(CS_CONTEXT& ctx, ErrorBuffer error) {
  std::array<CS_CHAR, 8> charset{"utf8"};
  std::array<CS_CHAR, 8> sortorder{"binary"};
  CsLocCache entry{};
  entry.charname = charset.data();
  entry.charnamelen = 4;
  CsCtxGlobals& globals = *ctx.ctxglobals;

  CsOid oid = 0;
  CS_RETCODE result = global_id(ctx, "charset", "utf8", oid, error);
  if (result == CS_SUCCEED)
    result = comn__intl_load_charset(&ctx, oid, &entry, error.path, error.length);
  if (result != CS_SUCCEED) return result;
  globals.utf8_charset = entry.locchardesc;

  entry.sortname = sortorder.data();
  result = global_id(ctx, "collate", "binary", oid, error);
  if (result == CS_SUCCEED)
    result = comn__intl_load_sortorder(&ctx, oid, &entry, error.path, error.length);
  if (result == CS_SUCCEED) result = global_id(ctx, "charset", "ucs2", globals.ucs2_oid, error);
  constexpr std::string_view kListName = "comnlib list context";
  if (result == CS_SUCCEED)
    result = lm_initlm(kListManagerVersion, kListName.data(), length_of(kListName), &globals.lm);
  return result == CS_SUCCEED ? comn__init_sys_algos_table(&ctx) : result;
}

// A context counts as set up when utf8_charset is there, so a call that failed half-way takes that
// back; what it has loaded is found by the next call.
void undo_init(CsCtxGlobals& globals) {
  globals.utf8_charset = nullptr;
  if (globals.lm != nullptr) static_cast<void>(lm_exit(globals.lm));
  globals.lm = nullptr;
}

}  // namespace
}  // namespace comnlib

using namespace comnlib;

CS_RETCODE com_intl_envloc(CS_CONTEXT* ctx, CS_INT category, CS_CHAR* dst, CS_INT dstlen) {
  check_pointer(ctx);
  check_pointer(dst);
  require(dstlen > 0 && category >= COM_LC_COLLATE && category <= COM_LC_ALL);
  const char* variable = kVariables[static_cast<std::size_t>(category - 1)];
  return trace(environment_locale(*ctx, variable, dst, dstlen));
}

CS_RETCODE comn__intl_lookup(CS_CONTEXT* ctx, const CS_CHAR* locname, CS_INT locnamelen,
                             CsLocNames* names, CS_CHAR* errbuf, CS_INT errlen) {
  check_pointer(ctx);
  check_pointer(names);
  const std::string_view name = text_of(locname, locnamelen);
  *names = CsLocNames{};
  INTL_HANDLE handle = nullptr;
  const CS_RETCODE opened =
      com__open_locfile(ctx, nullptr, nullptr, "locales.dat", &handle, errbuf, errlen);
  if (opened != CS_SUCCEED) return trace(opened);
  IntlFile file(*ctx, handle);
  const CS_RETCODE result = find_names(file, name, *names);
  return trace(result == CS_SUCCEED ? file.close() : result);
}

CS_RETCODE comn_intl_load(CS_CONTEXT* ctx, const CS_CHAR* locname, CS_INT locnamelen,
                          CsLocCache** entry, CS_CHAR* errbuf, CS_INT errlen) {
  check_arguments(ctx, errbuf, errlen);
  check_pointer(entry);
  const std::string_view name = text_of(locname, locnamelen);
  const GlobalsLock lock(*ctx);
  if (!lock.taken()) return trace(CS_FAIL);
  if (CsLocCache* known = find_entry(*ctx->ctxglobals, name)) {
    *entry = known;
    return trace(CS_SUCCEED);
  }
  return trace(load_from_table(*ctx, name, entry, {errbuf, errlen}));
}

CS_RETCODE comn_intl_load_tlvtypes(CS_CONTEXT* ctx, const CS_CHAR* locname, CS_INT locnamelen,
                                   const CS_CHAR* charname, CS_INT charnamelen,
                                   const CS_CHAR* langname, CS_INT langnamelen,
                                   const CS_CHAR* sortname, CS_INT sortnamelen, CsLocCache** entry,
                                   CS_CHAR* errbuf, CS_INT errlen) {
  check_arguments(ctx, errbuf, errlen);
  check_pointer(entry);
  const LocaleNames names{.locale = text_of(locname, locnamelen),
                          .charset = text_of(charname, charnamelen),
                          .language = text_of(langname, langnamelen),
                          .sortorder = text_of(sortname, sortnamelen),
                          .datetime = {},
                          .numeric = {},
                          .money = {}};
  const GlobalsLock lock(*ctx);
  if (!lock.taken()) return trace(CS_FAIL);
  if (CsLocCache* known = find_entry(*ctx->ctxglobals, names)) {
    *entry = known;
    return trace(CS_SUCCEED);
  }
  return trace(load_entry(*ctx, names, entry, {errbuf, errlen}));
}

CS_RETCODE comn_intl_init(CS_CONTEXT* ctx, CS_CHAR* errbuf, CS_INT errlen) {
  check_arguments(ctx, errbuf, errlen);
  if (ctx->ctxglobals->utf8_charset != nullptr) return trace(CS_SUCCEED);
  const Uncancelled uncancelled;
  const CS_RETCODE result = init_globals(*ctx, {errbuf, errlen});
  if (result != CS_SUCCEED) undo_init(*ctx->ctxglobals);
  return trace(result);
}

CS_RETCODE com_intl_getstr(const CS_LOCALE* locale, CS_INT category, CS_INT item, CS_CHAR* buf,
                           CS_INT buflen, CS_INT* outlen) {
  check_pointer(locale);
  check_pointer(buf);
  check_pointer(outlen);
  require(buflen > 0 && category >= COM_LC_COLLATE && category <= COM_LC_TIME);
  require(item >= COM_LOC_CHARSET && item <= COM_LOC_LANGCHARSET);
  const CsLocCache* entry = entry_of(*locale, category);
  check_pointer(entry);
  if (item == COM_LOC_LANGCHARSET)
    return trace(place_language_and_charset(name_of(*entry, kLanguageName),
                                            name_of(*entry, kCharsetName), buf, buflen, outlen));
  constexpr std::array kItems{kCharsetName, kLanguageName, kSortName};
  const EntryName which = kItems[static_cast<std::size_t>(item - 1)];
  return trace(place_string(name_of(*entry, which), buf, buflen, outlen));
}

CS_INT com_intl_loccmp(CS_INT category, CS_INT level, const CS_LOCALE* locale1,
                       const CS_LOCALE* locale2) {
  check_pointer(locale1);
  check_pointer(locale2);
  require(category >= COM_LC_COLLATE && category <= COM_LC_TIME);
  require(level >= COM_LOCCMP_CHARSET && level <= COM_LOCCMP_SORTORDER);
  if (locale1 == locale2) return 0;
  const CsLocCache* entry1 = entry_of(*locale1, category);
  const CsLocCache* entry2 = entry_of(*locale2, category);
  if (entry1 == entry2) return 0;
  if (entry1 == nullptr || entry2 == nullptr) return 1;
  if (level == COM_LOCCMP_CHARSET) return entry1->locchardesc == entry2->locchardesc ? 0 : 1;
  if (level == COM_LOCCMP_MESSAGE) return entry1->locmessage == entry2->locmessage ? 0 : 1;
  return entry1->locsortorder == entry2->locsortorder ? 0 : 1;
}

CS_RETCODE com_intl_loccache_drop(CS_CONTEXT* ctx) {
  check_arguments(ctx, nullptr, 0);
  CsCtxGlobals& globals = *ctx->ctxglobals;
  while (CsLocCache* entry = globals.cmg_lcache) {
    globals.cmg_lcache = entry->locnext;
    DropEntry()(entry);
  }
  drop_messages(globals);
  drop_conventions(globals);
  return trace(CS_SUCCEED);
}

CS_RETCODE comn__copy_loccache(CS_CONTEXT* ctx, const CsLocCache* src, CsLocCache** dst) {
  check_pointer(ctx);
  check_pointer(src);
  check_pointer(dst);
  *dst = nullptr;
  OwnedEntry copy(make_record<CsLocCache>());
  if (copy == nullptr) return trace(CS_MEM_ERROR);
  *copy = *src;
  copy->locnext = nullptr;
  for (const EntryName name : kEntryNames) (*copy).*name.text = nullptr;
  for (const EntryName name : kEntryNames) {
    if (src->*name.text == nullptr) continue;
    const CS_RETCODE result = copy_name(*copy, name, name_of(*src, name));
    if (result != CS_SUCCEED) return trace(result);
  }
  *dst = copy.release();
  return trace(CS_SUCCEED);
}

const char_attrib* com_intl_charattr(const CS_LOCALE* locale) {
  if (locale == nullptr || locale->ctypeptr == nullptr) return nullptr;
  const CsCharDesc* charset = locale->ctypeptr->locchardesc;
  return charset == nullptr ? nullptr : charset->char_attrib;
}

CS_RETCODE comn_lm_exit(LM_CONTEXT* lm) {
  check_pointer(lm);
  return trace(lm_exit(lm));
}
