// Path builders. A path grows piece by piece; each piece is checked whole before a byte of it is
// written, so a path that does not fit ends behind its last whole piece.
#include "intl/com_path.h"

#include <array>
#include <string_view>

#include "intl.h"
#include "intl/text.h"

namespace comnlib {
namespace {

enum class Fit { kExact, kSpare };

class PathBuilder {
 public:
  PathBuilder(CS_CONTEXT* ctx, CS_CHAR* buf, CS_INT buflen, Place place = Place::current())
      : to_(buf), room_(buflen) {
    check_pointer(ctx, place);
    check_pointer(buf, place);
    require(buflen > 0, place);
    const CS_INT home = intl_home(buf, buflen);
    if (home < 0) {
      ctx->ctxintlerr = home;
      result_ = CS_INTL_LIBERR;
      return;
    }
    require(home <= buflen, place);
    to_ += home;
    counted_ = home;
    terminate();
  }

  // Adds the separator and the piece; after a failure adds nothing more.
  PathBuilder& add(std::string_view piece, Fit fit = Fit::kExact, char separator = '/') {
    if (result_ != CS_SUCCEED) return *this;
    const std::size_t left = static_cast<std::size_t>(room_ - counted_);
    const std::size_t needed = piece.size() + (fit == Fit::kSpare ? 2 : 1);
    if (needed > left) {
      result_ = CS_FAIL;
      return *this;
    }
    write(separator, piece);
    counted_ += length_of(piece) + 1;
    terminate();
    return *this;
  }

  // The piece is neither checked nor counted: later checks go by the length without it.
  PathBuilder& add_uncounted(std::string_view piece) {
    if (result_ == CS_SUCCEED) write('/', piece);
    return *this;
  }

  CS_RETCODE result() const { return result_; }

 private:
  void write(char separator, std::string_view piece) {
    *to_++ = separator;
    to_ += piece.copy(to_, piece.size());
  }
  void terminate() {
    if (counted_ < room_) *to_ = '\0';
  }

  CS_CHAR* to_;
  CS_INT room_;
  CS_INT counted_ = 0;
  CS_RETCODE result_ = CS_SUCCEED;
};

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
  return trace(PathBuilder(ctx, buf, buflen).add(text_of(name, namelen)).result());
}

CS_RETCODE com_path_ifile(CS_CONTEXT* ctx, CS_CHAR* buf, CS_INT buflen) {
  return trace(PathBuilder(ctx, buf, buflen).add("interfaces").result());
}

CS_RETCODE com_path_cfgfile(CS_CONTEXT* ctx, const CS_CHAR* name, CS_CHAR* buf, CS_INT buflen,
                            CS_BOOL use_nuv) {
  const std::string_view file = text_of(name);
  PathBuilder path(ctx, buf, buflen);
  if (use_nuv != 0) {
    std::array<CS_CHAR, COM_NUV_ROOM> value;
    const CS_INT length = intlgetenv(value.data(), COM_NUV_ROOM, "TALVEN_NUV");
    if (length > 0) path.add_uncounted({value.data(), static_cast<std::size_t>(length)});
  }
  return trace(path.add("config").add(file).result());
}

CS_RETCODE com__path_locfile(CS_CONTEXT* ctx, const CS_CHAR* language, const CS_CHAR* charset,
                             const CS_CHAR* file, CS_CHAR* buf, CS_INT buflen) {
  const std::string_view last = text_of(file);
  PathBuilder path(ctx, buf, buflen);
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
  // Hosts name the language "us" and count on its files being found.
  if (kUsEnglish.starts_with(directory)) directory = kUsEnglish;
  return trace(PathBuilder(ctx, buf, buflen)
                   .add("locales")
                   .add("message")
                   .add(directory)
                   .add(last, Fit::kSpare)
                   .result());
}

CS_RETCODE com__path_charfile(CS_CONTEXT* ctx, const CS_CHAR* charset, const CS_CHAR* file,
                              const CS_CHAR* ext, CS_CHAR* buf, CS_INT buflen) {
  const std::string_view last = text_of(file);
  PathBuilder path(ctx, buf, buflen);
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
  return trace(PathBuilder(ctx, buf, buflen)
                   .add("locales")
                   .add(entry.directory)
                   .add(file, Fit::kSpare)
                   .add(entry.extension, Fit::kSpare, '.')
                   .result());
}
