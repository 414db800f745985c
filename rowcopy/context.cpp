#include "context.h"

#include <array>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <new>

#include "charset_names.h"
#include "fatal.h"

namespace rowcopy {
namespace {

namespace fs = std::filesystem;

constexpr std::size_t kLongestHome = 512;  // bytes; leaves the library room for the names below it

// The home beside the installed program, or else that of the source tree that it was built from.
std::string shipped_home() {
  std::error_code error;
  const fs::path program = fs::read_symlink("/proc/self/exe", error);
  const fs::path installed = (program.parent_path() / ROWCOPY_INSTALLED_HOME).lexically_normal();
  return fs::exists(installed, error) ? installed.string() : ROWCOPY_SOURCE_HOME;
}

// The library finds the home by the environment.
void choose_home(const std::string& wanted) {
  const char* from_environment = std::getenv("TALVEN");
  std::string home = wanted;
  if (home.empty() && from_environment != nullptr) home = from_environment;
  if (home.empty()) home = shipped_home();
  if (home.size() > kLongestHome)
    throw Fatal("the localization home's path has more than " + std::to_string(kLongestHome) +
                " bytes: " + home);
  if (setenv("TALVEN", home.c_str(), 1) != 0) throw std::bad_alloc();
}

void require_memory(CS_RETCODE code) {
  if (code != CS_SUCCEED) throw std::bad_alloc();
}

using Path = std::array<CS_CHAR, 1025>;

std::string name_of(const CS_LOCALE* locale, CS_INT item) {
  std::array<CS_CHAR, COM_LOC_NAMESIZE> name;
  CS_INT length = 0;
  if (com_intl_getstr(locale, COM_LC_CTYPE, item, name.data(), name.size(), &length) != CS_SUCCEED)
    return {};
  return {name.data(), static_cast<std::size_t>(length)};
}

CS_INT length_of(const std::string& text) {
  return static_cast<CS_INT>(text.size());
}

}  // namespace

Context::Conversions::Conversions(CS_CONTEXT& owner) : context(owner) {
  require_memory(com_conv_init(&context));
}

Context::Conversions::~Conversions() {
  com_conv_free(&context);
}

Context::NullValues::NullValues(CS_CONTEXT& owner) : context(owner) {
  // A failed call leaves what it has built, for com_null_free.
  if (com_null_init(&context) == CS_SUCCEED) return;
  com_null_free(&context);
  throw std::bad_alloc();
}

Context::NullValues::~NullValues() {
  com_null_free(&context);
}

Context::Localization::Localization(CS_CONTEXT& owner) : context(owner) {
  require_memory(comn_create_mutex(&globals.cmg_mtx));
  context.ctxglobals = &globals;
}

Context::Localization::~Localization() {
  comn_loc_drop_all(&context);
  com_intl_loccache_drop(&context);
  com_intl_chardesc_drop(&context);
  if (globals.lm != nullptr) comn_lm_exit(globals.lm);
  comn_delete_mutex(globals.cmg_mtx);
  context.ctxglobals = nullptr;
}

Context::Context(const std::string& home) {
  context_.ctxthread = &threads_;
  choose_home(home);
  Path path{};
  std::array<CS_CHAR, COM_LOC_NAMESIZE> name{};
  CsLocCache* entry = nullptr;
  CS_RETCODE code = comn_intl_init(&context_, path.data(), path.size());
  if (code == CS_SUCCEED) code = com_intl_envloc(&context_, COM_LC_ALL, name.data(), name.size());
  if (code == CS_SUCCEED) {
    code = comn_intl_load(&context_, name.data(), CS_NULLTERM, &entry, path.data(), path.size());
    if (code == CS_FAIL && load_charset("utf8", "us_english", "binary", entry) == CS_SUCCEED) {
      code = CS_SUCCEED;
      std::fprintf(stderr,
                   "rowcopy: the home has no locale \"%s\"; going on with UTF-8 and US English\n",
                   name.data());
    }
  }
  if (code == CS_MEM_ERROR) throw std::bad_alloc();
  if (code != CS_SUCCEED) {
    com_intl_verify_ctxloc(&context_);
    throw Fatal("cannot set up the context's localization; the file looked at last is " +
                std::string(path[0] == '\0' ? "none" : path.data()));
  }
  context_.ctxlocale = new_locale(entry);
}

CS_RETCODE Context::load_charset(const std::string& charset, const std::string& language,
                                 const std::string& order, CsLocCache*& entry) {
  Path path{};
  const CS_RETCODE code =
      comn_intl_load_tlvtypes(&context_, charset.data(), length_of(charset), charset.data(),
                              length_of(charset), language.data(), length_of(language),
                              order.data(), length_of(order), &entry, path.data(), path.size());
  if (code == CS_MEM_ERROR) throw std::bad_alloc();
  return code;
}

CS_LOCALE* Context::new_locale(CsLocCache* entry) {
  CS_LOCALE* locale = nullptr;
  require_memory(comn_loc_alloc(&context_, &locale));
  const CS_LOCALE all{entry, entry, entry, entry, entry, entry, nullptr};
  require_memory(comn_loc_copy(locale, &all));
  return locale;
}

CS_LOCALE* Context::locale(const std::string& name) {
  if (name.empty()) return context_.ctxlocale;
  Path path{};
  CsLocCache* entry = nullptr;
  CS_RETCODE code =
      comn_intl_load(&context_, name.data(), length_of(name), &entry, path.data(), path.size());
  if (code == CS_MEM_ERROR) throw std::bad_alloc();
  const std::string language = name_of(context_.ctxlocale, COM_LOC_LANGUAGE);
  const std::string order = name_of(context_.ctxlocale, COM_LOC_SORTORDER);
  for (const std::string& charset : {name, home_charset(name)})
    if (code != CS_SUCCEED) code = load_charset(charset, language, order, entry);
  if (code != CS_SUCCEED)
    throw Fatal("\"" + name + "\" is no locale and no character set of the home " +
                std::getenv("TALVEN"));
  return new_locale(entry);
}

std::string charset_of(const CS_LOCALE* locale) {
  return name_of(locale, COM_LOC_CHARSET);
}

}  // namespace rowcopy
