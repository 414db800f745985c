// Opening and releasing a parse, the scanner's window, the collected texts, and error reports.
#include "config/comcfg.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>

#include "diag/diag.h"
#include "diag/uncancelled.h"
#include "file.h"

namespace comnlib {
namespace {

constexpr std::size_t kWindow = 16384;
constexpr std::size_t kPathShown = 512;
constexpr CS_INT kWordsRoom = 256;

void set_sentinel(CfgParseInfo& parse) {
  parse.window.items[parse.window.count] = '\n';
}

// Drops the bytes before the token.
void slide(CfgParseInfo& parse) {
  ByteBuffer& window = parse.window;
  if (parse.token == 0) return;
  std::memmove(window.items, window.items + parse.token, window.count - parse.token);
  window.count -= parse.token;
  parse.mark -= parse.token;
  parse.at -= parse.token;
  parse.token = 0;
  set_sentinel(parse);
}

// What a report shows of a path: all of it, or the end of a very long one.
std::string_view tail_of(std::string_view path) {
  return path.substr(path.size() - std::min(path.size(), kPathShown));
}

bool fail(CfgParseInfo& parse, CS_RETCODE failure) {
  parse.failure = failure;
  parse.drained = true;
  return false;
}

CS_RETCODE failure_of(CS_INT status) {
  return status == INTL_NO_MEMORY ? CS_MEM_ERROR : CS_FAIL;
}

void report_unopened(CS_INT status, std::string_view path) {
  std::array<char, kWordsRoom> words;
  intl_errstr(status, words.data(), kWordsRoom);
  const std::string_view shown = tail_of(path);
  print_error("cannot open configuration file %.*s: %s\n", static_cast<int>(shown.size()),
              shown.data(), words.data());
}

}  // namespace

bool refill(CfgParseInfo& parse) {
  if (parse.drained) return false;
  const Uncancelled uncancelled;
  slide(parse);
  ByteBuffer& window = parse.window;
  // One byte is kept for the sentinel.
  if (window.capacity - window.count < 2 && !window.reserve(window.capacity))
    return fail(parse, CS_MEM_ERROR);
  const std::size_t room = std::min<std::size_t>(window.capacity - window.count - 1, INT32_MAX);
  const CS_INT got =
      intl_iocsfread(parse.file, window.items + window.count, static_cast<CS_INT>(room));
  if (got > 0) {
    const auto count = static_cast<std::size_t>(got);
    require(count <= room);
    parse.size += count;
    const bool too_large = parse.size > companion::kMaxFile;
    if (!too_large) window.count += count;
    set_sentinel(parse);
    return !too_large || fail(parse, CS_FAIL);
  }
  set_sentinel(parse);
  if (got < 0) {
    parse.read_status = got;
    return fail(parse, failure_of(got));
  }
  parse.drained = true;
  return false;
}

CS_RETCODE open_parse(CS_CONTEXT* context, CsConfig* config, std::string_view path,
                      const CfgParseInfo* includer, CfgParseInfo*& parse) {
  ByteBuffer name{};
  if (!name.append(path) || !name.append({"", 1})) {
    name.clear();
    return CS_MEM_ERROR;
  }
  INTL_HANDLE file = nullptr;
  const CS_INT status = intl_iocsfopen(name.text().data(), &file);
  if (status < 0) {
    keep_status(context, status);
    if (status != INTL_NO_MEMORY) report_unopened(status, path);
    name.clear();
    return failure_of(status);
  }
  CfgParseInfo* opened = cfg__init_parse(config, file);
  if (opened == nullptr) {
    intl_iocsfclose(file);
    name.clear();
    return CS_MEM_ERROR;
  }
  opened->context = context;
  opened->path = name;
  opened->includer = includer;
  opened->depth = includer == nullptr ? 0 : includer->depth + 1;
  parse = opened;
  return CS_SUCCEED;
}

}  // namespace comnlib

using namespace comnlib;

CS_INT cfg__debug = 0;

CfgParseInfo* cfg__init_parse(CsConfig* config, CS_VOID* file) {
  check_pointer(file);
  auto* parse = make_record<CfgParseInfo>();
  if (parse == nullptr) return nullptr;
  if (!parse->window.reserve(kWindow)) {
    comn_free(parse);
    return nullptr;
  }
  set_sentinel(*parse);
  parse->config = config;
  parse->file = file;
  parse->failure = CS_SUCCEED;
  parse->line_start = true;
  parse->line = parse->next_line = 1;
  return parse;
}

CS_RETCODE cfg__open_parse(CS_CONTEXT* context, const CS_CHAR* path, CfgParseInfo** parse) {
  check_pointer(context);
  check_pointer(path);
  check_pointer(parse);
  const Uncancelled uncancelled;
  return trace(open_parse(context, nullptr, path, nullptr, *parse));
}

CS_RETCODE cfg__clean_parse(CfgParseInfo* parse) {
  check_pointer(parse);
  const Uncancelled uncancelled;
  const CS_INT status = intl_iocsfclose(parse->file);
  if (status < 0) keep_status(parse->context, status);
  parse->path.clear();
  parse->window.clear();
  parse->text.clear();
  comn_free(parse);
  return trace(status < 0 ? CS_FAIL : CS_SUCCEED);
}

CS_INT cfg__getc(CfgParseInfo* parse) {
  check_pointer(parse);
  return next_byte(*parse);
}

CS_VOID cfg__marktok(CfgParseInfo* parse) {
  mark_token(*parse);
}

CS_VOID cfg__nexttok(CfgParseInfo* parse) {
  begin_token(*parse);
}

CS_VOID cfg__newtok(CfgParseInfo* parse) {
  require(parse->tok_count < kMaxToks);
  parse->toks[parse->tok_count++] = {parse->text.count, 0};
}

CS_RETCODE cfg__catbuf(CfgParseInfo* parse, const CS_CHAR* bytes, CS_INT length) {
  require(parse->tok_count > 0 && length >= 0);
  return collect(*parse, {bytes, static_cast<std::size_t>(length)}) ? CS_SUCCEED : CS_MEM_ERROR;
}

CS_RETCODE cfg__cat(CfgParseInfo* parse, CS_BOOL blank) {
  require(parse->tok_count > 0);
  const bool kept = (blank == 0 || collect(*parse, " ")) && collect(*parse, token_text(*parse));
  return kept ? CS_SUCCEED : CS_MEM_ERROR;
}

CS_VOID cfg__parse_error(CfgParseInfo* parse, const CS_CHAR* text) {
  check_pointer(parse);
  check_pointer(text);
  const std::string_view path =
      path_of(*parse).empty() ? "configuration file" : tail_of(path_of(*parse));
  print_error("%.*s, line %d: %.800s\n", static_cast<int>(path.size()), path.data(),
              static_cast<int>(parse->line), text);
}
