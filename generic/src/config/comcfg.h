// A parse over one configuration file: the scanner's window on the file, and the texts that the
// parser collects from tokens.
#pragma once

#include <array>
#include <cstddef>
#include <string_view>

#include "comnlib/config.h"
#include "intl.h"
#include "runtime/podvector.h"

// A text that is collected piece by piece, as a part of the parse's text buffer.
struct CfgTok {
  std::size_t start;
  std::size_t length;
};

namespace comnlib {

// A growing text, or a window on one.
struct ByteBuffer : PodVector<CS_BYTE> {
  bool append(std::string_view text) {
    if (!reserve(text.size())) return false;
    append_reserved(text);
    return true;
  }
  void append_reserved(std::string_view text) {
    count += text.copy(reinterpret_cast<char*>(items) + count, text.size());
  }
  std::string_view text() const { return text(0, count); }
  std::string_view text(std::size_t start, std::size_t length) const {
    return {reinterpret_cast<const char*>(items) + start, length};
  }
};

enum class ScanState : CS_INT { kNormal = 0, kString = 1 };

// At most a name and a value are collected at a time.
inline constexpr std::size_t kMaxToks = 2;

}  // namespace comnlib

// The window holds file bytes [token, end); token <= mark <= at <= end. window.items[end] is always
// a line feed, so that no loop over characters runs past it.
struct _cfgparseinfo {
  CS_CONTEXT* context;  // null: the status of a failed read is not kept
  CsConfig* config;     // null: the file is checked only
  INTL_HANDLE file;
  comnlib::ByteBuffer path;  // NUL-terminated; empty: not known
  const CfgParseInfo* includer;
  CS_INT depth;

  comnlib::ByteBuffer window;
  std::size_t token;   // where the token begins
  std::size_t mark;    // where its longest match so far ends
  std::size_t at;      // the next byte to look at
  std::size_t size;    // bytes read so far
  bool drained;        // the file has no more bytes
  CS_RETCODE failure;  // CS_SUCCEED, or why the file could not be read to its end
  CS_INT read_status;  // of the companion library; 0: the file is too large
  comnlib::ScanState state;
  bool line_start;   // the token begins a line
  CS_INT line;       // where the token begins
  CS_INT next_line;  // where it ends

  CS_INT code;        // the parser's current token
  CS_UINT source;     // the store's number of the file's path
  CS_UINT section;    // the store's number of the current section, 0 before the first one
  CS_INT entry_line;  // where the current entry begins
  comnlib::ByteBuffer text;
  std::array<CfgTok, comnlib::kMaxToks> toks;
  std::size_t tok_count;
};

extern "C" {

// Makes a parse over an open file, and the parse will close it. Null when there is no memory; the
// caller then still owns the file.
CfgParseInfo* cfg__init_parse(CsConfig* config, CS_VOID* file);

// Puts the scanner into a state: 0 normal, 1 inside a string. Any other stops the process.
CS_VOID cfg__lexstate(CfgParseInfo* parse, CS_INT state);

// The next byte, or -1 at the file's end. Refills the window, which doubles when a token fills it.
CS_INT cfg__getc(CfgParseInfo* parse);

// Marks the end of the longest match so far.
CS_VOID cfg__marktok(CfgParseInfo* parse);

// The next token begins where the last one ended.
CS_VOID cfg__nexttok(CfgParseInfo* parse);

// Starts the next collected text, empty.
CS_VOID cfg__newtok(CfgParseInfo* parse);

// Appends bytes to the newest collected text. CS_SUCCEED or CS_MEM_ERROR.
CS_RETCODE cfg__catbuf(CfgParseInfo* parse, const CS_CHAR* bytes, CS_INT length);

// Appends the scanner's token to the newest collected text, after one blank when `blank` is not 0.
CS_RETCODE cfg__cat(CfgParseInfo* parse, CS_BOOL blank);

// Reports `text` with the place of the current token.
CS_VOID cfg__parse_error(CfgParseInfo* parse, const CS_CHAR* text);
}

namespace comnlib {

// Reads more bytes into the window; false at the end of the file or on a failure.
bool refill(CfgParseInfo& parse);

inline CS_INT next_byte(CfgParseInfo& parse) {
  if (parse.at == parse.window.count && !refill(parse)) [[unlikely]]
    return -1;
  return parse.window.items[parse.at++];
}

inline void begin_token(CfgParseInfo& parse) {
  parse.token = parse.at = parse.mark;
  parse.line = parse.next_line;
}

inline void mark_token(CfgParseInfo& parse) {
  parse.mark = parse.at;
}

// Appends to the newest collected text; false when there is no memory.
inline bool collect(CfgParseInfo& parse, std::string_view text) {
  if (!parse.text.append(text)) return false;
  parse.toks[parse.tok_count - 1].length += text.size();
  return true;
}

inline std::string_view token_text(const CfgParseInfo& parse) {
  return parse.window.text(parse.token, parse.mark - parse.token);
}

inline std::string_view collected(const CfgParseInfo& parse, std::size_t which) {
  const CfgTok& tok = parse.toks[which];
  return parse.text.text(tok.start, tok.length);
}

// Empty when it is not known.
inline std::string_view path_of(const CfgParseInfo& parse) {
  return parse.path.text(0, parse.path.count == 0 ? 0 : parse.path.count - 1);
}

// Stores a status of the companion library in the context, if there is one.
inline void keep_status(CS_CONTEXT* context, CS_INT status) {
  if (context != nullptr) context->ctxintlerr = status;
}

// Opens a file that `includer` includes, or the first file when that is null. CS_SUCCEED; CS_FAIL,
// reported, when it cannot be opened; CS_MEM_ERROR.
CS_RETCODE open_parse(CS_CONTEXT* context, CsConfig* config, std::string_view path,
                      const CfgParseInfo* includer, CfgParseInfo*& parse);

// The name by which the debug output and reports call a token.
const char* token_name(CS_INT code);

}  // namespace comnlib
