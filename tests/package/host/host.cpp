// A host in C++20, whose owners give the library's objects back: adds exact numerics, and sorts by
// a locale of the home that was installed along.
//   host HOME
#include <comnlib.h>

#include <algorithm>
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
  Context() { require(com_conv_init(&context_) == CS_SUCCEED, "a conversion matrix"); }
  ~Context() {
    if (globals_.cmg_mtx != nullptr) {
      comn_loc_drop_all(&context_);
      com_intl_loccache_drop(&context_);
      com_intl_chardesc_drop(&context_);
      if (globals_.lm != nullptr) comn_lm_exit(globals_.lm);
      comn_delete_mutex(globals_.cmg_mtx);
    }
    com_conv_free(&context_);
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
    CS_LOCALE* made = nullptr;
    require(comn_loc_alloc(&context_, &made) == CS_SUCCEED, "a locale");
    const CS_LOCALE all{entry, entry, entry, entry, entry, entry, nullptr};
    comn_loc_copy(made, &all);
    return made;
  }

  CS_NUMERIC numeric(std::string_view text) {
    CS_DATAFMT from{}, to{};
    from.datatype = CS_CHAR_TYPE;
    from.maxlength = size_of(text);
    to.datatype = CS_NUMERIC_TYPE;
    to.precision = to.scale = CS_USE_SRCVALUE;
    CS_NUMERIC value{};
    convert(from, text.data(), to, &value);
    return value;
  }

  std::string text(const CS_NUMERIC& value) {
    CS_DATAFMT from{}, to{};
    std::array<CS_CHAR, 80> buffer;
    from.datatype = CS_NUMERIC_TYPE;
    to.datatype = CS_CHAR_TYPE;
    to.maxlength = buffer.size();
    return {buffer.data(), convert(from, &value, to, buffer.data())};
  }

 private:
  std::size_t convert(const CS_DATAFMT& from, const void* src, const CS_DATAFMT& to, void* dest) {
    const CS_CONV_FUNC routine = com_conv_func(&context_, from.datatype, to.datatype);
    CS_INT length = 0;
    require(routine != nullptr, "a conversion");
    require(routine(&context_, &from, src, &to, dest, &length) == CS_SUCCEED, "CS_SUCCEED");
    return static_cast<std::size_t>(length);
  }

  CS_CONTEXT context_{};
  CsCtxGlobals globals_{};
};

void add(Context& context) {
  const CS_NUMERIC tenth = context.numeric("0.1"), fifth = context.numeric("0.2");
  CS_NUMERIC sum{};
  require(comn_numadd(&tenth, &fifth, &sum) == CS_SUCCEED, "a sum");
  require(context.text(sum) == "0.3", "0.1 + 0.2 = 0.3");
}

void sort(Context& context) {
  const CS_LOCALE* locale = context.locale("us_english.nocase");
  std::array<std::string_view, 3> names{"wing", "Beak", "airport"};
  std::ranges::sort(names, [&](std::string_view a, std::string_view b) {
    const auto bytes = [](std::string_view s) {
      return reinterpret_cast<const CS_BYTE*>(s.data());
    };
    return com_intl_compare(locale, bytes(a), size_of(a), bytes(b), size_of(b)) < 0;
  });
  require(names[0] == "airport" && names[1] == "Beak", "an order that knows no case");
}

}  // namespace

int main(int argc, char** argv) try {
  require(argc == 2 && setenv("TALVEN", argv[1], 1) == 0, "a localization home");
  Context context;
  add(context);
  sort(context);
} catch (const std::exception& fault) {
  std::fprintf(stderr, "host: expected: %s\n", fault.what());
  return EXIT_FAILURE;
}
