// A host in C++20, whose owner gives the library's objects back: compares by a locale of the home
// that was installed along.
//   host HOME
#include <comnlib.h>

#include <array>
#include <cstdio>
#include <cstdlib>
#include <stdexcept>
#include <string>
#include <string_view>

namespace {

void require(bool condition, const char* what) {
  if (!condition) throw std::runtime_error(what);
}

CS_INT size_of(std::string_view text) {
  return static_cast<CS_INT>(text.size());
}

class Context {
 public:
  Context() = default;
  ~Context() {
    if (globals_.cmg_mtx == nullptr) return;
    com_intl_loccache_drop(&context_);
    com_intl_chardesc_drop(&context_);
    if (globals_.lm != nullptr) comn_lm_exit(globals_.lm);
    comn_delete_mutex(globals_.cmg_mtx);
  }
  Context(const Context&) = delete;
  Context& operator=(const Context&) = delete;

  const CS_LOCALE* locale(std::string_view name) {
    require(comn_create_mutex(&globals_.cmg_mtx) == CS_SUCCEED, "a mutex");
    context_.ctxglobals = &globals_;
    std::array<CS_CHAR, 1025> path{};
    CsLocCache* entry = nullptr;
    require(comn_intl_init(&context_, path.data(), path.size()) == CS_SUCCEED, "localization");
    require(comn_intl_load(&context_, name.data(), size_of(name), &entry, path.data(),
                           path.size()) == CS_SUCCEED,
            path.data());
    locale_ = {entry, entry, entry, entry, entry, entry, nullptr};
    return &locale_;
  }

 private:
  CS_CONTEXT context_{};
  CsCtxGlobals globals_{};
  CS_LOCALE locale_{};
};

CS_INT compare(const CS_LOCALE* locale, std::string_view a, std::string_view b) {
  const auto bytes = [](std::string_view s) { return reinterpret_cast<const CS_BYTE*>(s.data()); };
  return com_intl_compare(locale, bytes(a), size_of(a), bytes(b), size_of(b));
}

}  // namespace

int main(int argc, char** argv) try {
  require(argc == 2 && setenv("TALVEN", argv[1], 1) == 0, "a localization home");
  Context context;
  require(compare(context.locale("us_english.nocase"), "airport", "Beak") < 0,
          "an order that knows no case");
} catch (const std::exception& fault) {
  std::fprintf(stderr, "host: expected: %s\n", fault.what());
  return EXIT_FAILURE;
}
