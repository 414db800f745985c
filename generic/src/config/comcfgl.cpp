// The scanner. In both states the longest match counts. Line ends and stoppers:
//
//   blank      blank, tab, form feed
//   line end   LF, CR LF
//   stopper    blank, CR, LF, the quote, [ ] =
//
//   normal
//     include, ident, "=", "[", "]", opening quote, line end
//     value         ( byte that is no stopper and no "\"  |  "\" and a byte that is no stopper )+
//     continuation  "\" and a line end
//     space         blank+, or at the beginning of a line  blank* ";" and all up to a line end
//     unknown       a CR or "\" that begins nothing else
//   string
//     string value  ( byte that is neither quote nor "\"  |  "\" and a quote
//                     |  "\" that no line end follows )+
//     escaped quote, closing quote, continuation
#include <array>
#include <cstring>

#include "config/comcfg.h"
#include "diag/diag.h"

namespace comnlib {
namespace {

enum Class : CS_BYTE {
  kBlank = 1,
  kLetter = 2,
  kIdent = 4,  // may continue an identifier
  kPlain = 8,  // may be part of a value by itself: neither stopper nor backslash
  kText = 16,  // may be part of a string by itself, as a line feed may
};

constexpr std::array<CS_BYTE, 256> make_classes() {
  std::array<CS_BYTE, 256> classes{};
  const auto add = [&classes](std::string_view bytes, int flags) {
    for (const char byte : bytes)
      classes[static_cast<CS_BYTE>(byte)] =
          static_cast<CS_BYTE>(classes[static_cast<CS_BYTE>(byte)] | flags);
  };
  classes.fill(kPlain | kText);
  for (const char byte : std::string_view(" \t\f\r[]="))
    classes[static_cast<CS_BYTE>(byte)] = kText;
  for (const char byte : std::string_view("\n\"\\")) classes[static_cast<CS_BYTE>(byte)] = 0;
  add(" \t\f", kBlank);
  add("abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ", kLetter | kIdent);
  add("0123456789#./_", kIdent);
  return classes;
}

constexpr auto kClasses = make_classes();

bool is(CS_INT byte, Class wanted) {
  return byte >= 0 && (kClasses[static_cast<CS_BYTE>(byte)] & wanted) != 0;
}

// Whether the byte can continue a value, with or without a preceding backslash.
bool continues_value(CS_INT byte) {
  return is(byte, kPlain) || byte == '\\';
}

// Skips the bytes of a class. The sentinel, a line feed, is in no class.
void skip_class(CfgParseInfo& parse, Class wanted) {
  do {
    const CS_BYTE* byte = parse.window.items + parse.at;
    while ((kClasses[*byte] & wanted) != 0) ++byte;
    parse.at = static_cast<std::size_t>(byte - parse.window.items);
  } while (parse.at == parse.window.count && refill(parse));
}

CS_INT accept(CfgParseInfo& parse, CS_INT code) {
  mark_token(parse);
  return code;
}

CS_INT peek(CfgParseInfo& parse) {
  const CS_INT byte = next_byte(parse);
  if (byte >= 0) --parse.at;
  return byte;
}

// Skips a line end at the current place; false, with nothing skipped, when there is none.
bool skip_line_end(CfgParseInfo& parse) {
  const std::size_t matched = parse.at - parse.token;
  CS_INT byte = next_byte(parse);
  if (byte == '\r') byte = next_byte(parse);
  if (byte == '\n') return true;
  parse.at = parse.token + matched;
  return false;
}

// Scans the rest of a value. `code` is the token that has matched so far, in case nothing more
// does.
CS_INT scan_value(CfgParseInfo& parse, CS_INT code) {
  for (;;) {
    const std::size_t before = parse.at - parse.token;
    skip_class(parse, kPlain);
    if (parse.at - parse.token != before) code = CFG_VALUE;
    accept(parse, code);
    if (next_byte(parse) != '\\' || !continues_value(next_byte(parse))) return code;
    code = CFG_VALUE;
  }
}

bool is_include(std::string_view text) {
  constexpr std::string_view kWord = "include";
  if (text.size() != kWord.size()) return false;
  for (std::size_t i = 0; i < kWord.size(); ++i) {
    if ((text[i] | 0x20) != kWord[i]) return false;
  }
  return true;
}

CS_INT scan_word(CfgParseInfo& parse) {
  skip_class(parse, kIdent);
  accept(parse, CFG_IDENT);
  const CS_INT next = peek(parse);
  if (continues_value(next) && scan_value(parse, CFG_IDENT) == CFG_VALUE) return CFG_VALUE;
  return is_include(token_text(parse)) ? CFG_INCLUDE : CFG_IDENT;
}

// Scans up to the line end. A CR is part of it only before an LF.
CS_INT scan_comment(CfgParseInfo& parse) {
  for (;;) {
    const CS_BYTE* from = parse.window.items + parse.at;
    const void* end = std::memchr(from, '\n', parse.window.count - parse.at);
    if (end != nullptr) {
      parse.at += static_cast<std::size_t>(static_cast<const CS_BYTE*>(end) - from);
      if (parse.window.items[parse.at - 1] == '\r') --parse.at;
      return accept(parse, CFG_SPACE);
    }
    parse.at = parse.window.count;
    if (!refill(parse)) return accept(parse, CFG_SPACE);
  }
}

CS_INT scan_blanks(CfgParseInfo& parse) {
  skip_class(parse, kBlank);
  accept(parse, CFG_SPACE);
  if (parse.line_start && next_byte(parse) == ';') return scan_comment(parse);
  return CFG_SPACE;
}

CS_INT scan_backslash(CfgParseInfo& parse) {
  accept(parse, CFG_UNKNOWN);
  if (skip_line_end(parse)) return accept(parse, CFG_CONTINUATION);
  if (continues_value(next_byte(parse))) return scan_value(parse, CFG_VALUE);
  return CFG_UNKNOWN;
}

CS_INT scan_cr(CfgParseInfo& parse) {
  accept(parse, CFG_UNKNOWN);
  return next_byte(parse) == '\n' ? accept(parse, CFG_NEWLINE) : CFG_UNKNOWN;
}

CS_INT scan_normal(CfgParseInfo& parse) {
  const CS_INT first = next_byte(parse);
  if (first < 0) return CFG_END;
  if (is(first, kLetter)) return scan_word(parse);
  if (is(first, kBlank)) return scan_blanks(parse);
  if (first == ';' && parse.line_start) return scan_comment(parse);
  if (is(first, kPlain)) return scan_value(parse, CFG_VALUE);
  switch (first) {
    case '\n':
      return accept(parse, CFG_NEWLINE);
    case '=':
      return accept(parse, CFG_EQUALS);
    case '[':
      return accept(parse, CFG_OPEN);
    case ']':
      return accept(parse, CFG_CLOSE);
    case '"':
      cfg__lexstate(&parse, static_cast<CS_INT>(ScanState::kString));
      return accept(parse, CFG_STRING_START);
    case '\r':
      return scan_cr(parse);
    default:
      return scan_backslash(parse);
  }
}

CS_INT scan_quote(CfgParseInfo& parse) {
  accept(parse, CFG_STRING_END);
  if (next_byte(parse) == '"') return accept(parse, CFG_ESCAPED_QUOTE);
  cfg__lexstate(&parse, static_cast<CS_INT>(ScanState::kNormal));
  return CFG_STRING_END;
}

CS_INT scan_string(CfgParseInfo& parse) {
  CS_INT code = CFG_END;
  for (;;) {
    const std::size_t before = parse.at - parse.token;
    skip_class(parse, kText);
    if (parse.at - parse.token != before) code = accept(parse, CFG_STRING_VALUE);
    const CS_INT byte = next_byte(parse);
    if (byte < 0) return code;
    if (byte == '"') return code == CFG_END ? scan_quote(parse) : code;
    if (byte == '\\') {
      if (skip_line_end(parse)) return code == CFG_END ? accept(parse, CFG_CONTINUATION) : code;
      if (peek(parse) == '"') ++parse.at;
    }
    code = accept(parse, CFG_STRING_VALUE);
  }
}

CS_INT scan(CfgParseInfo& parse) {
  switch (parse.state) {
    case ScanState::kNormal:
      return scan_normal(parse);
    case ScanState::kString:
      return scan_string(parse);
  }
  stop();
}

CS_INT line_feeds(std::string_view text) {
  CS_INT count = 0;
  for (std::size_t at = text.find('\n'); at != text.npos; at = text.find('\n', at + 1)) ++count;
  return count;
}

// Only these tokens hold line feeds.
void count_lines(CfgParseInfo& parse, CS_INT code) {
  parse.line_start = code == CFG_NEWLINE || code == CFG_CONTINUATION;
  if (parse.line_start) {
    ++parse.next_line;
  } else if (code == CFG_STRING_VALUE) {
    parse.next_line += line_feeds(token_text(parse));
  }
}

constexpr std::array kNames = {"include",
                               "line continuation",
                               "=",
                               "escaped quote",
                               "ident",
                               "[",
                               "newline",
                               "]",
                               "string value",
                               "string end",
                               "start string",
                               "unknown token",
                               "value"};

void print_token(const CfgParseInfo& parse, CS_INT code) {
  const std::string_view text = token_text(parse);
  const bool comment = code == CFG_SPACE && text.find(';') != text.npos;
  comn_debug_print("cfg__lex: %s >%.*s<\n", comment ? "comment" : token_name(code),
                   static_cast<int>(text.size()), text.data());
}

}  // namespace

const char* token_name(CS_INT code) {
  if (code == CFG_END) return "end of file";
  if (code == CFG_SPACE) return "whitespace";
  return kNames[static_cast<std::size_t>(code - CFG_INCLUDE)];
}

}  // namespace comnlib

using namespace comnlib;

CS_VOID cfg__lexstate(CfgParseInfo* parse, CS_INT state) {
  require(state == static_cast<CS_INT>(ScanState::kNormal) ||
          state == static_cast<CS_INT>(ScanState::kString));
  parse->state = static_cast<ScanState>(state);
}

CS_INT cfg__lex(CfgParseInfo* parse) {
  check_pointer(parse);
  begin_token(*parse);
  const CS_INT code = scan(*parse);
  count_lines(*parse, code);
  if (cfg__debug != 0 && code != CFG_END) [[unlikely]]
    print_token(*parse, code);
  return code;
}

const CS_CHAR* cfg__toktext(CfgParseInfo* parse, CS_INT* length) {
  check_pointer(parse);
  check_pointer(length);
  const std::string_view text = token_text(*parse);
  *length = static_cast<CS_INT>(text.size());
  return text.data();
}
