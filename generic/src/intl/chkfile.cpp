// Verification of localization files, and the diagnosis of a context that could not load them. The
// diagnosis reads and prints; it leaves the context as it is.
#include "intl/chkfile.h"

#include <unistd.h>

#include <array>
#include <climits>
#include <utility>

#include "diag/diag.h"
#include "diag/uncancelled.h"
#include "intl.h"
#include "intl/com_intl.h"
#include "intl/com_path.h"
#include "intl/kept_status.h"
#include "intl/text.h"

namespace comnlib {
namespace {

constexpr CS_INT kDiagnosisPath = 1024;

bool is_readable(const CS_CHAR* path) {
  return ::access(path, R_OK) == 0;
}

// A path that fills its buffer has no NUL, so a copy is used; the system knows no path longer than
// PATH_MAX.
CS_RETCODE verify(CS_RETCODE built, CS_CHAR* path, CS_INT pathlen) {
  if (built != CS_SUCCEED) {
    path[0] = '*';
    if (pathlen > 1) path[1] = '\0';
    return built;
  }
  std::array<CS_CHAR, PATH_MAX> whole;
  const std::string_view text(path, strnlen(path, static_cast<std::size_t>(pathlen)));
  if (text.size() >= whole.size()) return CS_FAIL;
  whole[text.copy(whole.data(), text.size())] = '\0';
  return is_readable(whole.data()) ? CS_SUCCEED : CS_FAIL;
}

using DiagnosisPath = std::array<CS_CHAR, kDiagnosisPath + 1>;

bool print_home() {
  DiagnosisPath home{};
  const CS_INT length = intl_home(home.data(), kDiagnosisPath);
  if (length < 0 || length > kDiagnosisPath) {
    print_error(
        "Cannot access the talven home directory, please check environment variable TALVEN or "
        "~talven\n");
    return false;
  }
  print_error("Your talven home directory is %s. ", home.data());
  print_error("Check the environment variable TALVEN if it is not the one you want!\n");
  return true;
}

bool print_unless_readable(CS_RETCODE built, const CS_CHAR* path) {
  if (built == CS_SUCCEED && is_readable(path)) return true;
  print_error("Cannot access file %s\n", path);
  return false;
}

// Prints the name of the locale that the environment asks for; false when it cannot be read.
bool print_locale_name(DiagnosisPath& name) {
  for (const char* variable : {"LC_ALL", "LANG"}) {
    const CS_INT length = intlgetenv(name.data(), kDiagnosisPath, variable);
    if (length < 0) {
      print_error(
          "An intl library error occurs when trying to get locale name from environment variable "
          "%s\n",
          variable);
      return false;
    }
    if (length == 0) continue;
    print_error("Using locale name \"%s\" defined in environment variable %s\n", name.data(),
                variable);
    return true;
  }
  copy_cut("default", name.data(), kDiagnosisPath);
  print_error("Using default locale name: \"%s\"\n", name.data());
  return true;
}

bool print_lookup(CS_CONTEXT& ctx, const CS_CHAR* name, const CS_CHAR* table, CsLocNames& names) {
  const CS_RETCODE result = comn__intl_lookup(&ctx, name, CS_NULLTERM, &names, nullptr, 0);
  if (result < 0) {
    print_error(
        "An intl library error occurs when trying to get local names from file: %s, can't "
        "continue!\n",
        table);
  } else if (result == CS_FAIL) {
    print_error("Locale name \"%s\" doesn't exist in your %s file\n", name, table);
  }
  return result == CS_SUCCEED;
}

// Checks every file that the names ask for, even after one that cannot be read.
void print_unreadable_files(CS_CONTEXT& ctx, const CsLocNames& names) {
  DiagnosisPath path{};
  const auto report = [&path](CS_RETCODE verified) {
    if (verified != CS_SUCCEED) print_error("Cannot access %s file\n", path.data());
  };
  for (const std::string_view file : {"common.loc", "cslib.loc"})
    report(com__verify_msgfile(&ctx, names.lang, names.langlen, file.data(), length_of(file),
                               path.data(), kDiagnosisPath));
  const std::array<std::pair<const CS_CHAR*, const CS_CHAR*>, 3> files{
      {{names.sortorder, "srt"}, {"charset.loc", nullptr}, {names.charset, "cfg"}}};
  for (const auto& [file, ext] : files)
    report(com__verify_charfile(&ctx, names.charset, file, ext, path.data(), kDiagnosisPath));
}

}  // namespace
}  // namespace comnlib

using namespace comnlib;

CS_RETCODE com__verify_msgfile(CS_CONTEXT* ctx, const CS_CHAR* language, CS_INT langlen,
                               const CS_CHAR* file, CS_INT filelen, CS_CHAR* pathbuf,
                               CS_INT pathlen) {
  const CS_RETCODE built =
      comn__path_msgfile(ctx, language, langlen, file, filelen, pathbuf, pathlen);
  return trace(verify(built, pathbuf, pathlen));
}

CS_RETCODE com__verify_charfile(CS_CONTEXT* ctx, const CS_CHAR* charset, const CS_CHAR* file,
                                const CS_CHAR* ext, CS_CHAR* pathbuf, CS_INT pathlen) {
  const CS_RETCODE built = com__path_charfile(ctx, charset, file, ext, pathbuf, pathlen);
  return trace(verify(built, pathbuf, pathlen));
}

CS_RETCODE com_intl_verify_a_msgfile(CS_CONTEXT* ctx, const CS_LOCALE* locale, const CS_CHAR* file,
                                     CS_CHAR* pathbuf, CS_INT pathlen) {
  check_pointer(locale);
  const CsLocCache* entry = locale->messageptr;
  check_pointer(entry);
  return trace(com__verify_msgfile(ctx, entry->langname, entry->langnamelen, file, CS_NULLTERM,
                                   pathbuf, pathlen));
}

void com_intl_verify_ctxloc(CS_CONTEXT* ctx) {
  check_pointer(ctx);
  const Uncancelled uncancelled;
  const KeptStatus kept(*ctx);
  print_error(
      "\n\nThe context allocation routine failed when it tried to load localization files!!\n");
  print_error("One or more following problems may caused the failure\n\n");
  if (!print_home()) return;

  std::array<CS_CHAR, kDiagnosisPath + kConfigPathSpare> objects{};
  CS_RETCODE built = com_path_cfgfile(ctx, "objectid.dat", objects.data(), kDiagnosisPath, 0);
  if (!print_unless_readable(built, objects.data())) return;
  DiagnosisPath table{};
  built = com__path_locfile(ctx, nullptr, nullptr, "locales.dat", table.data(), kDiagnosisPath);
  if (!print_unless_readable(built, table.data())) return;

  DiagnosisPath name{};
  if (!print_locale_name(name)) return;
  CsLocNames names;
  if (print_lookup(*ctx, name.data(), table.data(), names)) print_unreadable_files(*ctx, names);
}
