// Messages in the context's language. Message files are data: a text cannot name more arguments
// than there are, and the only thing in it that is not literal is a number in braces.
#include "intl/errmsg.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <optional>

#include "comnlib/diag.h"
#include "intl/com_intl.h"
#include "intl/kept_status.h"
#include "intl/locking.h"
#include "intl/message.h"
#include "intl/objectid.h"
#include "intl/text.h"

namespace comnlib {
namespace {

constexpr std::array<std::string_view, 3> kLayers{"common", "cslib", "comnlib"};
constexpr CS_INT kMostPlaceDigits = 2;

// A place for an argument at the front of a text: the argument's number, from 1, and the bytes that
// the place takes.
struct ArgumentPlace {
  std::size_t number;
  std::size_t bytes;
};

std::optional<ArgumentPlace> place_at(std::string_view text) {
  std::size_t number = 0, at = 1;
  for (; at <= kMostPlaceDigits && at < text.size() && text[at] >= '0' && text[at] <= '9'; ++at)
    number = number * 10 + static_cast<std::size_t>(text[at] - '0');
  if (number == 0 || at == text.size() || text[at] != '}') return std::nullopt;
  return ArgumentPlace{number, at + 1};
}

bool is_layer(CS_INT layer) {
  return layer >= COM_LAYER_COMMON && layer <= COM_LAYER_COMNLIB;
}

std::string_view layer_name(CS_INT layer) {
  return kLayers[static_cast<std::size_t>(layer - COM_LAYER_COMMON)];
}

MessageFile file_of(CS_INT layer) {
  return static_cast<MessageFile>(layer - COM_LAYER_COMMON);
}

// The English messages, or null when they cannot be loaded. The caller holds the context's mutex.
const CsMessage* load_english(CS_CONTEXT& ctx) {
  std::array<CS_CHAR, 16> language{"us_english"};
  CsLocCache entry{};
  entry.langname = language.data();
  entry.langnamelen = 10;
  CsOid oid = 0;
  if (global_id(ctx, "natlang", language.data(), oid, {nullptr, 0}) != CS_SUCCEED) return nullptr;
  if (comn__intl_load_message(&ctx, oid, &entry, nullptr, 0) != CS_SUCCEED) return nullptr;
  return entry.locmessage;
}

// The text in UTF-8 in English, null when it has none or cannot be loaded.
const CS_CHAR* english_text(CS_CONTEXT& ctx, CS_INT layer, CS_INT number) {
  const GlobalsLock lock(ctx);
  const KeptStatus kept(ctx);
  const CsMessage* english = lock.taken() ? load_english(ctx) : nullptr;
  return english == nullptr ? nullptr : message_text(*english, file_of(layer), number);
}

// The text in UTF-8 in the context's language, null when it has none.
const CS_CHAR* own_text(CS_CONTEXT& ctx, CS_INT layer, CS_INT number) {
  const CsLocCache* entry = ctx.ctxlocale == nullptr ? nullptr : ctx.ctxlocale->messageptr;
  if (entry == nullptr || entry->locmessage == nullptr) return nullptr;
  return message_text(*entry->locmessage, file_of(layer), number);
}

Encoding encoding_of(const CS_CONTEXT& ctx) {
  const CsLocCache* entry = ctx.ctxlocale == nullptr ? nullptr : ctx.ctxlocale->ctypeptr;
  return {entry == nullptr ? nullptr : entry->locchardesc, false};
}

void add_fixed(MessageWriter& out, CS_INT layer, CS_INT number) {
  out.add(layer_name(layer));
  out.add(" message ");
  out.add(number);
  const std::string_view name = layer == COM_LAYER_COMNLIB ? comn_result_name(number) : "";
  if (name.empty()) return;
  out.add(" (");
  out.add(name);
  out.add(")");
}

// Adds the text of a message; where there is none adds the fixed text and returns false. An empty
// text and one that cannot be translated count as none.
bool add_text(CS_CONTEXT& ctx, MessageWriter& out, CS_INT layer, CS_INT number,
              std::span<const com_argument> arguments) {
  if (ctx.ctxglobals != nullptr && ctx.ctxglobals->utf8_charset != nullptr) {
    for (auto* const text_in : {own_text, english_text}) {
      const CS_CHAR* text = text_in(ctx, layer, number);
      if (text != nullptr && *text != '\0' && out.add_pattern(text, arguments)) return true;
    }
  }
  add_fixed(out, layer, number);
  return false;
}

CS_RETCODE result_of(const MessageWriter& out, bool is_text) {
  if (!is_text) return CS_FAIL;
  return out.cut() ? CS_CVT_TRUNCATED : CS_SUCCEED;
}

std::span<CS_CHAR> buffer_of(CS_CHAR* buf, CS_INT buflen, CallSite site = CallSite::current()) {
  check_pointer(buf, site);
  require(buflen > 0, site);
  return {buf, static_cast<std::size_t>(buflen)};
}

CS_RETCODE write_text(CS_CONTEXT& ctx, CS_INT layer, CS_INT number, std::span<CS_CHAR> room,
                      CS_INT& length) {
  MessageWriter out(ctx, encoding_of(ctx), room);
  const bool is_text = add_text(ctx, out, layer, number, {});
  length = out.end_text();
  return result_of(out, is_text);
}

}  // namespace

bool MessageWriter::add_utf8(std::string_view text) {
  if (cut_) return true;
  const CsCtxGlobals* globals = ctx_.ctxglobals;
  const Encoding utf8{globals == nullptr ? nullptr : globals->utf8_charset, false};
  const std::span bytes(reinterpret_cast<const CS_BYTE*>(text.data()), text.size());
  const std::span left(reinterpret_cast<CS_BYTE*>(room_.data()) + used_, room_.size() - 1 - used_);
  const Translated done = translate(&ctx_, utf8, encoding_, bytes, left);
  cut_ = done.code == CS_CVT_TRUNCATED;
  if (!cut_ && done.code != CS_SUCCEED && done.code != CS_CVT_SUBSTITUTED) return false;
  used_ += done.written;
  return true;
}

void MessageWriter::add(std::string_view text) {
  if (cut_) return;
  std::size_t length = text.size();
  const std::size_t left = room_.size() - 1 - used_;
  if (length > left) {
    cut_ = true;
    const auto* start = reinterpret_cast<const CS_BYTE*>(text.data());
    const char_attrib* attrib =
        encoding_.charset == nullptr ? nullptr : encoding_.charset->char_attrib;
    CS_INT whole = 0, partial = 0, excess = 0, count = 0;
    comn_whole_char(attrib, start, start + left, &whole, &partial, &excess, &count);
    length = static_cast<std::size_t>(whole);
  }
  used_ += text.copy(room_.data() + used_, length);
}

void MessageWriter::add(CS_INT number) {
  std::array<CS_CHAR, 12> digits;
  const auto end = std::to_chars(digits.begin(), digits.end(), number).ptr;
  add({digits.data(), static_cast<std::size_t>(end - digits.data())});
}

void MessageWriter::add(const com_argument& argument) {
  if (argument.type == COM_ARGUMENT_NUMBER) return add(argument.number);
  add(text_of(argument.text, argument.length));
}

bool MessageWriter::add_pattern(std::string_view pattern, std::span<const com_argument> arguments) {
  const std::size_t used_before = used_;
  const bool cut_before = cut_;
  std::size_t literal = 0;  // where the text that is not written yet begins
  bool good = true;
  for (std::size_t at = pattern.find('{'); good && at != pattern.npos;
       at = pattern.find('{', at + 1)) {
    const auto place = place_at(pattern.substr(at));
    if (!place || place->number > arguments.size()) continue;
    good = add_utf8(pattern.substr(literal, at - literal));
    add(arguments[place->number - 1]);
    literal = at + place->bytes;
  }
  if (good && add_utf8(pattern.substr(literal))) return true;
  used_ = used_before;
  cut_ = cut_before;
  return false;
}

CS_INT MessageWriter::end_text() {
  room_[used_] = '\0';
  return static_cast<CS_INT>(used_);
}

}  // namespace comnlib

using namespace comnlib;

CS_RETCODE com_err_msg(CS_CONTEXT* ctx, CS_INT layer, CS_INT number, CS_CHAR* buf, CS_INT buflen,
                       CS_INT* outlen) {
  check_pointer(ctx);
  check_pointer(outlen);
  require(is_layer(layer));
  return trace(write_text(*ctx, layer, number, buffer_of(buf, buflen), *outlen));
}

CS_RETCODE com_build_errmsg(CS_CONTEXT* ctx, CS_INT severity, CS_INT layer, CS_INT number,
                            const com_argument* args, CS_INT argcount, CS_CHAR* buf, CS_INT buflen,
                            CS_INT* outlen) {
  check_pointer(ctx);
  check_pointer(outlen);
  require(is_layer(layer) && argcount >= 0);
  require(severity >= COM_SEVERITY_INFORMATION && severity <= COM_SEVERITY_FATAL);
  if (argcount > 0) check_pointer(args);
  const std::span arguments(args, static_cast<std::size_t>(argcount));
  for (const com_argument& argument : arguments) {
    require(argument.type == COM_ARGUMENT_NUMBER || argument.type == COM_ARGUMENT_TEXT);
    if (argument.type == COM_ARGUMENT_TEXT)
      static_cast<void>(text_of(argument.text, argument.length));
  }
  MessageWriter out(*ctx, encoding_of(*ctx), buffer_of(buf, buflen));
  static_cast<void>(add_text(*ctx, out, COM_LAYER_COMMON, severity, {}));
  out.add(": ");
  out.add(layer_name(layer));
  out.add(" ");
  out.add(number);
  out.add(": ");
  const bool is_text = add_text(*ctx, out, layer, number, arguments);
  *outlen = out.end_text();
  return trace(result_of(out, is_text));
}

CS_RETCODE comn_result_text(CS_CONTEXT* ctx, CS_RETCODE code, CS_CHAR* buf, CS_INT buflen,
                            CS_INT* outlen) {
  check_pointer(ctx);
  check_pointer(outlen);
  return trace(write_text(*ctx, COM_LAYER_COMNLIB, code, buffer_of(buf, buflen), *outlen));
}
