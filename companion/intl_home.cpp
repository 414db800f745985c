// Weak default of intl_home.
#include <dlfcn.h>
#include <pwd.h>
#include <sys/stat.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <climits>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string_view>

#include "diag/diag.h"
#include "intl.h"
#include "status.h"

namespace comnlib::companion {
namespace {

// Where the installed home is: relative to the folder of the shared object, and to that of a
// program.
constexpr std::string_view kHomeFromLibrary = COMNLIB_HOME_FROM_LIBRARY;
constexpr std::string_view kHomeFromProgram = COMNLIB_HOME_FROM_PROGRAM;

CS_INT write_home(std::string_view home, CS_CHAR* buffer, CS_INT buflen) {
  if (home.size() > INT32_MAX) return make_status(Fault::kNoHome);
  const auto room = static_cast<std::size_t>(buflen);
  home.copy(buffer, std::min(home.size(), room));
  if (home.size() < room) buffer[home.size()] = '\0';
  return static_cast<CS_INT>(home.size());
}

[[gnu::noinline]] CS_INT home_of_user(CS_CHAR* buffer, CS_INT buflen) {
  // Larger than any record expected; a longer one counts as no home.
  std::array<char, 4096> strings;
  passwd record{};
  passwd* found = nullptr;
  const int failure = getpwnam_r("talven", &record, strings.data(), strings.size(), &found);
  if (failure != 0 || found == nullptr || *found->pw_dir == '\0')
    return make_status(Fault::kNoHome);
  return write_home(found->pw_dir, buffer, buflen);
}

// The home that was installed with the shared object, or with the program that the archive is part
// of.
[[gnu::noinline]] CS_INT home_beside_library(CS_CHAR* buffer, CS_INT buflen) {
  Dl_info object{};
  if (dladdr(reinterpret_cast<const void*>(&write_home), &object) == 0)
    return make_status(Fault::kNoHome);
  // For a program dladdr gives the name that it was called by, which need not be a path.
  const bool is_program = std::strcmp(object.dli_fname, program_invocation_name) == 0;
  char path[PATH_MAX];
  if (::realpath(is_program ? "/proc/self/exe" : object.dli_fname, path) == nullptr)
    return make_status(Fault::kNoHome);
  const std::string_view relative = is_program ? kHomeFromProgram : kHomeFromLibrary;
  const std::size_t folder = std::string_view(path).rfind('/') + 1;
  if (folder + relative.size() >= sizeof path) return make_status(Fault::kNoHome);
  path[folder + relative.copy(path + folder, relative.size())] = '\0';
  char home[PATH_MAX];
  struct stat facts {};
  const bool is_there =
      ::realpath(path, home) != nullptr && ::stat(home, &facts) == 0 && S_ISDIR(facts.st_mode);
  return is_there ? write_home(home, buffer, buflen) : make_status(Fault::kNoHome);
}

}  // namespace
}  // namespace comnlib::companion

using namespace comnlib;

__attribute__((weak)) CS_INT intl_home(CS_CHAR* buffer, CS_INT buflen) {
  check_pointer(buffer);
  require(buflen >= 0);
  const char* home = std::getenv("TALVEN");
  if (home != nullptr && *home != '\0') return companion::write_home(home, buffer, buflen);

  const CS_INT length = companion::home_of_user(buffer, buflen);
  return length >= 0 ? length : companion::home_beside_library(buffer, buflen);
}
