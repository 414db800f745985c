// Weak default of intl_home.
#include <pwd.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdlib>
#include <cstring>

#include "diag/diag.h"
#include "intl.h"
#include "status.h"

namespace comnlib::companion {
namespace {

CS_INT write_home(const char* home, CS_CHAR* buffer, CS_INT buflen) {
  const std::size_t length = std::strlen(home);
  if (length > INT32_MAX) return make_status(Fault::kNoHome);
  std::memcpy(buffer, home, std::min(length + 1, static_cast<std::size_t>(buflen)));
  return static_cast<CS_INT>(length);
}

}  // namespace
}  // namespace comnlib::companion

using namespace comnlib;

__attribute__((weak)) CS_INT intl_home(CS_CHAR* buffer, CS_INT buflen) {
  check_pointer(buffer);
  require(buflen >= 0);
  const char* home = std::getenv("TALVEN");
  if (home != nullptr && *home != '\0') return companion::write_home(home, buffer, buflen);

  // The user database gives longer records than this to nobody.
  std::array<char, 16384> strings;
  passwd record{};
  passwd* found = nullptr;
  const int failure = getpwnam_r("talven", &record, strings.data(), strings.size(), &found);
  if (failure != 0 || found == nullptr || *found->pw_dir == '\0')
    return companion::make_status(companion::Fault::kNoHome);
  return companion::write_home(found->pw_dir, buffer, buflen);
}
