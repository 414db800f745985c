// The shipped character sets against the C library's iconv: every byte sequence and every code
// point. iconv_differences.txt lists where the two do not agree, and why.
#include <gtest/gtest.h>

#include <iconv.h>

#include <fstream>
#include <map>
#include <optional>
#include <sstream>

#include "chars/utf.h"
#include "intl/xlate.h"
#include "intl_host.h"

namespace {

using comnlib::Encoding;

// A conversion of single characters; without a value where there is none, or only to a similar one.
class Iconv {
 public:
  Iconv(const char* to, const char* from) : handle_(iconv_open(to, from)) {
    EXPECT_NE(reinterpret_cast<iconv_t>(-1), handle_) << from << " to " << to;
  }
  ~Iconv() { iconv_close(handle_); }
  Iconv(const Iconv&) = delete;
  Iconv& operator=(const Iconv&) = delete;

  std::optional<std::string_view> operator()(std::string_view text) {
    char* in = const_cast<char*>(text.data());
    std::size_t left = text.size(), room = sizeof out_;
    char* out = out_;
    iconv(handle_, nullptr, nullptr, nullptr, nullptr);
    if (iconv(handle_, &in, &left, &out, &room) != 0 || left != 0) return std::nullopt;
    if (iconv(handle_, nullptr, nullptr, &out, &room) != 0) return std::nullopt;
    return std::string_view(out_, static_cast<std::size_t>(out - out_));
  }

 private:
  iconv_t handle_;
  char out_[16];
};

struct Group {
  unsigned first, last;
  int listed, found;
};

// The groups of a set and direction ("sjis from").
using Groups = std::map<std::string, std::vector<Group>>;

Groups listed_groups() {
  Groups groups;
  std::ifstream list(HOME_TESTS "/iconv_differences.txt");
  for (std::string line; std::getline(list, line);) {
    if (line.empty() || line[0] == '#') continue;
    std::istringstream fields(line);
    std::string set, direction;
    Group group{};
    fields >> set >> direction >> std::hex >> group.first >> group.last >> std::dec >> group.listed;
    EXPECT_TRUE(fields) << line;
    groups[set + ' ' + direction].push_back(group);
  }
  return groups;
}

class Comparison {
 public:
  Comparison(Groups& groups, CS_CONTEXT* context, Encoding set, const char* iconv_name,
             std::string charset)
      : groups_(groups),
        context_(context),
        set_(set),
        decode_("UTF-16LE", iconv_name),
        encode_(iconv_name, "UTF-32LE"),
        charset_(std::move(charset)) {}

  // Whether the sequence is a character of either.
  bool sequence(unsigned number, std::size_t length) {
    std::string bytes;
    for (std::size_t at = length; at-- > 0;) bytes += static_cast<char>(number >> 8 * at);
    const auto ours = translated(set_, kUnicode, bytes);
    const auto theirs = decode_(bytes);
    if (ours != theirs) differ(charset_ + " from", number);
    return ours || theirs;
  }

  void code_point(char32_t code) {
    char wide[4];
    const auto room = std::span(reinterpret_cast<CS_BYTE*>(wide), sizeof wide);
    const std::size_t length = comnlib::encode_utf16(code, room);
    const auto ours = translated(kUnicode, set_, {wide, length});
    const auto theirs = encode_({reinterpret_cast<const char*>(&code), sizeof code});
    if (ours != theirs) differ(charset_ + " to", code);
  }

 private:
  static constexpr Encoding kUnicode{nullptr, true};

  std::optional<std::string_view> translated(Encoding from, Encoding to, std::string_view text) {
    const auto result = comnlib::translate(
        context_, from, to, {reinterpret_cast<const CS_BYTE*>(text.data()), text.size()}, out_);
    if (result.code != CS_SUCCEED) return std::nullopt;
    return std::string_view(reinterpret_cast<const char*>(out_), result.written);
  }

  void differ(const std::string& what, unsigned number) {
    for (Group& group : groups_[what]) {
      if (number < group.first || number > group.last) continue;
      ++group.found;
      return;
    }
    ADD_FAILURE() << what << ' ' << std::hex << number << " is not listed";
  }

  Groups& groups_;
  CS_CONTEXT* context_;
  Encoding set_;
  Iconv decode_, encode_;
  std::string charset_;
  CS_BYTE out_[16];
};

struct Set {
  const char *charset, *iconv_name;
  bool has_triples = false, has_ranges = false;
};
constexpr Set kSets[] = {{"ascii", "ASCII"},        {"iso_1", "ISO-8859-1"},
                         {"iso_2", "ISO-8859-2"},   {"iso_3", "ISO-8859-3"},
                         {"iso_4", "ISO-8859-4"},   {"iso_5", "ISO-8859-5"},
                         {"iso_6", "ISO-8859-6"},   {"iso_7", "ISO-8859-7"},
                         {"iso_8", "ISO-8859-8"},   {"iso_9", "ISO-8859-9"},
                         {"iso10", "ISO-8859-10"},  {"iso11", "ISO-8859-11"},
                         {"iso13", "ISO-8859-13"},  {"iso14", "ISO-8859-14"},
                         {"iso15", "ISO-8859-15"},  {"iso16", "ISO-8859-16"},
                         {"cp437", "CP437"},        {"cp850", "CP850"},
                         {"cp852", "CP852"},        {"cp855", "CP855"},
                         {"cp857", "CP857"},        {"cp858", "CP858"},
                         {"cp866", "CP866"},        {"cp874", "CP874"},
                         {"cp1250", "CP1250"},      {"cp1251", "CP1251"},
                         {"cp1252", "CP1252"},      {"cp1253", "CP1253"},
                         {"cp1254", "CP1254"},      {"cp1255", "CP1255"},
                         {"cp1256", "CP1256"},      {"cp1257", "CP1257"},
                         {"cp1258", "CP1258"},      {"koi8", "KOI8-R"},
                         {"koi8u", "KOI8-U"},       {"macroman", "MACINTOSH"},
                         {"sjis", "SJIS"},          {"cp932", "CP932"},
                         {"eucjp", "EUC-JP", true}, {"cp936", "GBK"},
                         {"big5", "BIG5"},          {"gb18030", "GB18030", false, true},
                         {"euckr", "EUC-KR"},       {"big5hkscs", "BIG5-HKSCS"},
                         {"cp949", "CP949"},        {"euctw", "EUC-TW"},
                         {"utf8", "UTF-8"}};

TEST(ShippedSets, AgreeWithIconv) {
  intl_host::ShippedContext context;
  Groups groups = listed_groups();
  for (const Set& set : kSets) {
    SCOPED_TRACE(set.charset);
    CsLocCache* entry = nullptr;
    ASSERT_EQ(CS_SUCCEED, context.load(set.charset, set.charset, "us_english", "binary", &entry));
    Comparison compare(groups, context, {entry->locchardesc, false}, set.iconv_name, set.charset);
    for (unsigned byte = 0; byte < 256; ++byte) {
      if (compare.sequence(byte, 1) || byte < 0x80) continue;
      for (unsigned pair = byte << 8; pair < (byte + 1) << 8; ++pair) {
        if (compare.sequence(pair, 2) || !set.has_triples || byte != 0x8F) continue;
        for (unsigned third = 0; third < 256; ++third) compare.sequence(pair << 8 | third, 3);
      }
    }
    const char32_t end = set.has_ranges ? 0x110000 : 0x10000;
    for (char32_t code = 0; code < end; ++code)
      if (code < 0xD800 || code >= 0xE000) compare.code_point(code);
  }
  for (const auto& [what, listed] : groups)
    for (const Group& group : listed)
      EXPECT_EQ(group.listed, group.found) << what << ' ' << std::hex << group.first;
}

}  // namespace
