// The parser, by recursive descent over the scanner's tokens:
//
//   file     = { blank | section | entry | include }
//   blank    = [ space ] newline
//   section  = "[" ident "]" newline
//   entry    = ident "=" value newline
//   include  = include value newline
//   value    = piece { [ space ] piece }
//   piece    = ident | include | value | string
//   string   = start { string-value | escaped-quote | continuation } end
//
// Space may occur between any two tokens, a continuation anywhere in a value, and the end of the
// file in place of a newline. The first error ends the parse.
#include <array>
#include <cstdio>

#include "config/cfgstore.h"
#include "config/comcfg.h"
#include "diag/diag.h"
#include "diag/uncancelled.h"

namespace comnlib {
namespace {

CS_RETCODE fail_expecting(CfgParseInfo& parse, const char* what) {
  if (parse.failure == CS_MEM_ERROR) return CS_MEM_ERROR;
  std::array<char, 512> text;
  if (parse.failure == CS_SUCCEED) {
    std::snprintf(text.data(), text.size(), "expected %s, found %s", what, token_name(parse.code));
  } else if (parse.read_status == 0) {
    std::snprintf(text.data(), text.size(), "cannot read on: the file has more than 256 MB");
  } else {
    std::array<char, 256> words;
    intl_errstr(parse.read_status, words.data(), static_cast<CS_INT>(words.size()));
    std::snprintf(text.data(), text.size(), "cannot read on: %s", words.data());
    keep_status(parse.context, parse.read_status);
  }
  cfg__parse_error(&parse, text.data());
  return CS_FAIL;
}

void advance(CfgParseInfo& parse) {
  parse.code = cfg__lex(&parse);
}

// Advances to the next token that is not space.
void advance_over_space(CfgParseInfo& parse) {
  do advance(parse);
  while (parse.code == CFG_SPACE);
}

CS_RETCODE end_line(CfgParseInfo& parse) {
  if (parse.code == CFG_SPACE) advance_over_space(parse);
  const bool ended =
      parse.code == CFG_NEWLINE || (parse.code == CFG_END && parse.failure == CS_SUCCEED);
  return ended ? CS_SUCCEED : fail_expecting(parse, "the end of the line");
}

// Parses a string after its opening quote, and appends its text to the newest collected text.
CS_RETCODE parse_string(CfgParseInfo& parse) {
  for (;;) {
    advance(parse);
    CS_RETCODE result = CS_SUCCEED;
    switch (parse.code) {
      case CFG_STRING_VALUE:
        result = cfg__cat(&parse, 0);
        break;
      case CFG_ESCAPED_QUOTE:
        result = cfg__catbuf(&parse, "\"", 1);
        break;
      case CFG_CONTINUATION:
        break;
      case CFG_STRING_END:
        return CS_SUCCEED;
      default:
        return fail_expecting(parse, "the closing quote of a string");
    }
    if (result != CS_SUCCEED) return result;
  }
}

CS_RETCODE parse_quoted(CfgParseInfo& parse, bool blank) {
  if (blank && cfg__catbuf(&parse, " ", 1) != CS_SUCCEED) return CS_MEM_ERROR;
  return parse_string(parse);
}

// Collects a value, starting at the token before it; ends at the first token that is not part of
// it.
CS_RETCODE parse_value(CfgParseInfo& parse, const char* what) {
  cfg__newtok(&parse);
  bool any = false;
  bool blank = false;
  for (;;) {
    advance(parse);
    CS_RETCODE result = CS_SUCCEED;
    switch (parse.code) {
      case CFG_SPACE:
        blank = any;
        continue;
      case CFG_CONTINUATION:
        continue;
      case CFG_IDENT:
      case CFG_INCLUDE:
      case CFG_VALUE:
        result = cfg__cat(&parse, blank);
        break;
      case CFG_STRING_START:
        result = parse_quoted(parse, blank);
        break;
      default:
        return any ? CS_SUCCEED : fail_expecting(parse, what);
    }
    if (result != CS_SUCCEED) return result;
    any = true;
    blank = false;
  }
}

CS_RETCODE parse_section(CfgParseInfo& parse) {
  cfg__check_section(&parse);
  advance_over_space(parse);
  if (parse.code != CFG_IDENT) return fail_expecting(parse, "the name of a section");
  cfg__newtok(&parse);
  CS_RETCODE result = cfg__cat(&parse, 0);
  if (result != CS_SUCCEED) return result;
  advance_over_space(parse);
  if (parse.code != CFG_CLOSE) return fail_expecting(parse, "']' after the section's name");
  advance(parse);
  result = end_line(parse);
  if (result != CS_SUCCEED) return result;
  const std::string_view name = collected(parse, 0);
  return cfg__add_section(&parse, name.data(), static_cast<CS_INT>(name.size()));
}

CS_RETCODE parse_entry(CfgParseInfo& parse) {
  parse.entry_line = parse.line;
  cfg__newtok(&parse);
  CS_RETCODE result = cfg__cat(&parse, 0);
  if (result != CS_SUCCEED) return result;
  advance_over_space(parse);
  if (parse.code != CFG_EQUALS) return fail_expecting(parse, "'=' after the entry's name");
  result = parse_value(parse, "a value after '='");
  if (result != CS_SUCCEED) return result;
  result = end_line(parse);
  if (result != CS_SUCCEED) return result;
  const std::string_view name = collected(parse, 0);
  const std::string_view text = collected(parse, 1);
  return cfg__add_entry(&parse, name.data(), static_cast<CS_INT>(name.size()), text.data(),
                        static_cast<CS_INT>(text.size()));
}

CS_RETCODE parse_include(CfgParseInfo& parse) {
  CS_RETCODE result = parse_value(parse, "the path of the file to include");
  if (result != CS_SUCCEED) return result;
  const CS_INT line = parse.line;
  result = end_line(parse);
  if (result != CS_SUCCEED) return result;
  parse.line = line;  // reports name the line of the path
  const std::string_view path = collected(parse, 0);
  return cfg__add_include(&parse, path.data(), static_cast<CS_INT>(path.size()));
}

// Parses one line that is not blank. CS_END_DATA at the end of the file.
CS_RETCODE parse_statement(CfgParseInfo& parse) {
  parse.text.count = 0;
  parse.tok_count = 0;
  advance_over_space(parse);
  switch (parse.code) {
    case CFG_NEWLINE:
      return CS_SUCCEED;
    case CFG_OPEN:
      return parse_section(parse);
    case CFG_IDENT:
      return parse_entry(parse);
    case CFG_INCLUDE:
      return parse_include(parse);
    case CFG_END:
      if (parse.failure == CS_SUCCEED) return CS_END_DATA;
      [[fallthrough]];
    default:
      return fail_expecting(parse, "a section, an entry, an include or a comment");
  }
}

}  // namespace
}  // namespace comnlib

using namespace comnlib;

CS_RETCODE cfg__parse(CfgParseInfo* parse) {
  check_pointer(parse);
  const Uncancelled uncancelled;
  CS_RETCODE result = CS_SUCCEED;
  while (result == CS_SUCCEED) result = parse_statement(*parse);
  if (result == CS_MEM_ERROR) cfg__parse_error(parse, "out of memory");
  if (result != CS_END_DATA) return trace(result);
  cfg__check_section(parse);
  return trace(CS_SUCCEED);
}
