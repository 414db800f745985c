// The shipped home: its character sets against the C library's iconv, its names against the C
// library's list of locales, what the locales write and read, and what a context costs.
#include <gtest/gtest.h>

#include <iconv.h>
#include <malloc.h>

#include <fstream>
#include <map>
#include <optional>
#include <set>
#include <sstream>

#include "comnlib/message.h"
#include "intl/com_intl.h"
#include "support/dates.h"
#include "support/hosts.h"
#include "support/stride.h"
#include "support/table.h"
#include "support/translated.h"

namespace {

using comnlib::Encoding;
using translated::kUnicode, translated::translate, translated::utf16;

// The name for iconv of each character set.
const std::map<std::string, std::string>& iconv_names() {
  static const auto names = [] {
    std::map<std::string, std::string> read;
    table::for_each_line("home/charsets.txt",
                         [&](const table::Fields& row) { read[row[0]] = row[1]; });
    return read;
  }();
  return names;
}

constexpr const char* kNone = "none";
const auto kStride = static_cast<unsigned>(stride::between_values());

// A conversion of single characters by iconv; kNone where there is none, or only to a similar one.
class Iconv {
 public:
  Iconv(const char* to, const char* from) : handle_(iconv_open(to, from)) {
    EXPECT_NE(reinterpret_cast<iconv_t>(-1), handle_) << from << " to " << to;
  }
  ~Iconv() { iconv_close(handle_); }
  Iconv(const Iconv&) = delete;
  Iconv& operator=(const Iconv&) = delete;

  std::string operator()(std::string text) {
    char bytes[16];
    char *in = text.data(), *out = bytes;
    std::size_t left = text.size(), room = sizeof bytes;
    iconv(handle_, nullptr, nullptr, nullptr, nullptr);
    const bool converted = iconv(handle_, &in, &left, &out, &room) == 0 && left == 0 &&
                           iconv(handle_, nullptr, nullptr, &out, &room) == 0;
    return converted ? std::string(bytes, out) : kNone;
  }

 private:
  iconv_t handle_;
};

// Byte sequences or code points of which some are expected to differ.
struct Group {
  unsigned first, last;
  int listed, found;
};

class ShippedSets : public testing::Test {
 protected:
  ShippedSets() {
    const auto bytes = [](const std::string& hex) {
      return static_cast<unsigned>(std::stoul(hex, nullptr, 16));
    };
    table::for_each_line("home/iconv_differences.txt", [&](const table::Fields& row) {
      groups_[row[0]].push_back({bytes(row[1]), bytes(row[2]), table::number(row[3]), 0});
    });
  }
  ~ShippedSets() override {
    for (const auto& [what, groups] : groups_)
      for (const Group& group : groups)
        EXPECT_TRUE(group.found == group.listed || (kStride > 1 && group.found < group.listed))
            << what << ' ' << std::hex << group.first << ": " << std::dec << group.found;
  }

  // A difference must be one of those that are listed.
  void compare(const std::string& what, unsigned number, std::string_view ours,
               std::string_view theirs) {
    if (ours == theirs) return;
    for (Group& group : groups_[what])
      if (number >= group.first && number <= group.last) return void(++group.found);
    ADD_FAILURE() << what << ' ' << std::hex << number << " is not listed";
  }
  // A character, or kNone.
  std::string character(Encoding from, Encoding to, std::string_view text) {
    const auto [code, bytes] = translate(context_, from, to, text, 16);
    return code == CS_SUCCEED ? bytes : kNone;
  }

  hosts::ShippedContext context_;
  std::map<std::string, std::vector<Group>> groups_;  // by set and direction: "sjis from"
};

TEST_F(ShippedSets, AgreeWithIconv) {
  const Encoding utf8{context_.globals.utf8_charset, false};
  for (const auto& [name, iconv_name] : iconv_names()) {
    SCOPED_TRACE(name);
    const Encoding own{context_.entry(name.c_str(), name.c_str())->locchardesc, false};
    Iconv decode("UTF-16LE", iconv_name.c_str()), encode(iconv_name.c_str(), "UTF-32LE");
    // Whether the sequence is a character of either.
    const auto sequence = [&](unsigned number, std::size_t length) {
      std::string bytes;
      for (std::size_t at = length; at-- > 0;) bytes += static_cast<char>(number >> 8 * at);
      const std::string ours = character(own, kUnicode, bytes), theirs = decode(bytes);
      compare(name + " from", number, ours, theirs);
      return ours != kNone || theirs != kNone;
    };
    for (unsigned byte = 0; byte < 256; ++byte) {
      if (sequence(byte, 1) || byte < 0x80) continue;
      for (unsigned pair = (byte << 8) + byte % kStride; pair < (byte + 1) << 8; pair += kStride) {
        if (sequence(pair, 2)) continue;
        for (unsigned third = 0; third < 256 && byte == 0x8F; ++third)
          sequence(pair << 8 | third, 3);
        const unsigned second = pair & 0xFF;
        if (name != "gb18030" || second < '0' || second > '9') continue;
        for (unsigned third = 0x80; third < 256; ++third)
          for (unsigned last = '0'; last <= '9'; ++last)
            sequence(pair << 16 | third << 8 | last, 4);
      }
    }
    // All in one text, which goes by blocks and runs: what the set lacks is replaced, the rest
    // comes back.
    const std::string missing = utf16(name == "sjis" ? U'〓' : U'?');
    std::string all, expected;
    const char32_t end = name == "gb18030" ? 0x110000 : 0x10400;
    for (char32_t code = 0; code < end; code += kStride) {
      if (code >= 0xD800 && code < 0xE000) continue;
      const std::string ours = character(kUnicode, own, utf16(code));
      compare(name + " to", code, ours, encode({reinterpret_cast<char*>(&code), sizeof code}));
      all += utf16(code);
      expected += ours == kNone ? missing : utf16(code);
    }
    const auto convert = [&](Encoding from, Encoding to, std::string_view text) {
      const auto [code, bytes] = translate(context_, from, to, text, 2 * all.size());
      EXPECT_EQ(from.utf16 && all != expected ? CS_CVT_SUBSTITUTED : CS_SUCCEED, code);
      return bytes;
    };
    const std::string there = convert(kUnicode, own, all), by_utf8 = convert(own, utf8, there);
    EXPECT_TRUE(expected == convert(own, kUnicode, there));
    EXPECT_TRUE(expected == convert(utf8, kUnicode, by_utf8));
    EXPECT_TRUE(there == convert(utf8, own, by_utf8));
  }
}

// The languages that the home has, by their codes in the C library's list.
const std::set<std::string> kLanguages{"ar", "bn", "de", "en", "es", "fa", "fil", "fr", "gu",
                                       "ha", "hi", "id", "it", "ja", "kn", "ko",  "ml", "mr",
                                       "ms", "or", "pa", "pl", "ps", "pt", "ru",  "sd", "sw",
                                       "ta", "te", "th", "tr", "ur", "vi", "yue", "zh"};

std::string charset_of(const std::string& codeset) {
  if (codeset == "TIS-620") return "iso11";
  if (codeset == "GB2312") return "cp936";
  for (const auto& [name, iconv_name] : iconv_names())
    if (codeset == iconv_name) return name;
  return "none";
}

// What a locale's name is in the table.
CsLocNames look_up(CS_CONTEXT* context, const std::string& name) {
  CsLocNames names;
  EXPECT_EQ(CS_SUCCEED, comn__intl_lookup(context, name.c_str(), CS_NULLTERM, &names, nullptr, 0))
      << name;
  return names;
}

TEST(ShippedNames, ServeTheCLibrarysList) {
  hosts::ShippedContext context;
  std::ifstream list("/usr/share/i18n/SUPPORTED");
  EXPECT_TRUE(list) << "the Debian package locales is missing";
  int known = 0;
  for (std::string line; std::getline(list, line);) {
    std::istringstream fields(line);
    std::string name, codeset;
    if (line.empty() || line[0] == '#' || !(fields >> name >> codeset)) continue;
    SCOPED_TRACE(name);
    ++known;
    const bool shipped = kLanguages.contains(name.substr(0, name.find_first_of("_.@")));
    if (!shipped && codeset != "UTF-8") continue;
    // As the list has it, and as systems print it: the code set in small letters and digits.
    std::string printed = name.substr(0, name.find_first_of(".@")) + '.';
    for (const char c : codeset)
      if (std::isalnum(static_cast<unsigned char>(c)) != 0)
        printed += static_cast<char>(std::tolower(c));
    if (name.find('@') != name.npos) printed += name.substr(name.find('@'));
    for (const std::string& asked : {name, printed}) {
      const CsLocNames names = look_up(context, asked);
      EXPECT_EQ(charset_of(codeset), names.charset);
      EXPECT_EQ(!shipped || name.starts_with("en_"), std::string("us_english") == names.lang);
    }
  }
  EXPECT_GT(known, 400);
}

TEST(ShippedNames, UsualSpellings) {
  hosts::ShippedContext context;
  table::for_each_line("home/spellings.txt", [&](const table::Fields& row) {
    const CsLocNames names = look_up(context, row[0]);
    EXPECT_EQ(row[1], names.lang);
    EXPECT_EQ(row[2], names.charset);
  });
}

// The locales of locales.dat, the first name of each.
std::vector<std::string> shipped_locales() {
  std::vector<std::string> names;
  std::set<std::string> seen;
  std::ifstream file(COMNLIB_HOME "/locales/locales.dat");
  for (std::string line; std::getline(file, line);) {
    const std::string key = "locale = ";
    const std::size_t comma = line.find(',');
    if (line.starts_with(key) && seen.insert(line.substr(comma)).second)
      names.push_back(line.substr(key.size(), comma - key.size()));
  }
  return names;
}

// What a locale writes of a date it reads back, in each month, morning and afternoon.
TEST(ShippedNames, DatesThereAndBack) {
  hosts::ShippedContext context;
  for (const std::string& name : shipped_locales()) {
    SCOPED_TRACE(name);
    CsLocCache* entry = context.entry(name);
    for (int month = 0; month < 12; ++month) {
      // The 12th and the 28th and a half of a day, so that day, month and year tell apart.
      const CS_DATETIME value{45'000 + 31 * month, month % 2 == 0 ? 3 * 3'600 * 300 : 64'800 * 300};
      const auto written = dates::write(context, entry, value);
      EXPECT_EQ(CS_SUCCEED, written.code) << month;
      EXPECT_EQ(value.dttime, written.read.dttime) << month;
    }
  }
}

// Territories that differ from their language have conventions of their own.
TEST(ShippedNames, DatesOfTerritories) {
  hosts::ShippedContext context;
  table::for_each_line("home/dates.txt", [&](const table::Fields& row) {
    const CS_DATETIME value{45'304, 184 * 60 * 300};
    const std::u16string text = std::filesystem::path(row[1]).u16string();
    EXPECT_EQ(text, dates::write(context, context.entry(row[0]), value).text);
  });
}

std::size_t memory_in_use() {
  const auto facts = mallinfo2();
  return facts.uordblks + facts.hblkhd;
}

// A context for each locale of a single-byte set: with a date, a message and the digits of numbers,
// which it reads late, it takes less than 80 kB. The benches measure how fast that is.
TEST(ShippedNames, AContextIsSmall) {
  const hosts::ShippedHome home;
  for (const std::string& name : shipped_locales()) {
    const std::size_t before = memory_in_use();
    hosts::LocaleContext context;
    ASSERT_EQ(CS_SUCCEED, context.init());
    CS_LOCALE locale = hosts::all(context.entry(name));
    if (locale.ctypeptr->locchardesc->char_attrib->cs_class != COMN_CS_SINGLEBYTE) continue;
    context.context.ctxlocale = &locale;
    com_digits digits;
    EXPECT_EQ(CS_SUCCEED, comn_loc_digits(context, nullptr, COM_LC_NUMERIC, &digits)) << name;
    CS_CHAR words[200];
    CS_INT length = 0;
    EXPECT_EQ(CS_SUCCEED, comn_result_text(context, CS_CVT_DIVZERO, words, 200, &length)) << name;
    EXPECT_EQ(CS_SUCCEED, dates::write(context, locale.timeptr, {}).code) << name;
    EXPECT_LT(memory_in_use() - before, 80'000U) << name;
    context.context.ctxlocale = nullptr;
  }
}

}  // namespace
