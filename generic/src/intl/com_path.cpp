// Path builders: which pieces follow the home, and which of them need a byte to spare.
#include "intl/com_path.h"

#include <array>
#include <string_view>

#include "intl/text.h"

namespace comnlib {
namespace {

struct LocdataKind {
  std::string_view directory;
  std::string_view extension;
};
constexpr CS_INT kFirstKind = COM_LC_MONETARY;
constexpr std::array<LocdataKind, 3> kLocdataKinds{
    {{"money", "mon"}, {"numeric", "num"}, {"datetime", "dt"}}};

constexpr std::string_view kUsEnglish = "us_english";

}  // namespace
}  // namespace comnlib

using namespace comnlib;

CS_RETCODE com_path_anyfile(CS_CONTEXT* ctx, CS_CHAR* buf, CS_INT buflen, const CS_CHAR* name,
                            CS_INT namelen) {
  return trace(HomePath(ctx, buf, buflen).add(text_of(name, namelen)).result());
}

CS_RETCODE com_path_ifile(CS_CONTEXT* ctx, CS_CHAR* buf, CS_INT buflen) {
  return trace(HomePath(ctx, buf, buflen).add("interfaces").result());
}

CS_RETCODE com_path_cfgfile(CS_CONTEXT* ctx, const CS_CHAR* name, CS_CHAR* buf, CS_INT buflen,
                            CS_BOOL use_nuv) {
  const std::string_view file = text_of(name);
  return trace(build_config_path(ctx, file, buf, buflen, use_nuv != 0));
}

CS_RETCODE com__path_locfile(CS_CONTEXT* ctx, const CS_CHAR* language, const CS_CHAR* charset,
                             const CS_CHAR* file, CS_CHAR* buf, CS_INT buflen) {
  const std::string_view last = text_of(file);
  HomePath path(ctx, buf, buflen);
  path.add("locales");
  if (language != nullptr) {
    path.add(language);
    if (charset != nullptr) path.add(charset);
  }
  return trace(path.add(last).result());
}

CS_RETCODE comn__path_msgfile(CS_CONTEXT* ctx, const CS_CHAR* language, CS_INT langlen,
                              const CS_CHAR* file, CS_INT filelen, CS_CHAR* buf, CS_INT buflen) {
  std::string_view directory = text_of(language, langlen);
  const std::string_view last = text_of(file, filelen);
  check_pointer(buf);
  require(buflen > 0);
  std::memset(buf, 0, static_cast<std::size_t>(buflen));
  // Hosts name the language "us" and rely on finding its messages.
  if (kUsEnglish.starts_with(directory)) directory = kUsEnglish;
  return trace(HomePath(ctx, buf, buflen)
                   .add("locales")
                   .add("message")
                   .add(directory)
                   .add(last, Fit::kSpare)
                   .result());
}

CS_RETCODE com__path_charfile(CS_CONTEXT* ctx, const CS_CHAR* charset, const CS_CHAR* file,
                              const CS_CHAR* ext, CS_CHAR* buf, CS_INT buflen) {
  const std::string_view last = text_of(file);
  HomePath path(ctx, buf, buflen);
  path.add("charsets", Fit::kSpare);
  if (charset != nullptr) path.add(charset, Fit::kSpare);
  path.add(last, Fit::kSpare);
  if (ext != nullptr) path.add(ext, Fit::kExact, '.');
  return trace(path.result());
}

CS_RETCODE comn__path_locdata(CS_CONTEXT* ctx, CS_INT kind, const CS_CHAR* name, CS_CHAR* buf,
                              CS_INT buflen) {
  require(kind >= COM_LC_MONETARY && kind <= COM_LC_TIME);
  const std::string_view file = text_of(name);
  const LocdataKind& entry = kLocdataKinds[static_cast<std::size_t>(kind - kFirstKind)];
  return trace(HomePath(ctx, buf, buflen)
                   .add("locales")
                   .add(entry.directory)
                   .add(file, Fit::kSpare)
                   .add(entry.extension, Fit::kSpare, '.')
                   .result());
}
