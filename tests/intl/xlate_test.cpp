// Conversion between character sets: the Unicode forms against their bit layout, room that ends,
// and the loading of tables. Every character of every set is converted by the tests of the home.
#include <gtest/gtest.h>

#include <sstream>
#include <vector>

#include "comnlib/convert.h"
#include "intl/convtable.h"
#include "support/faulty_files.h"
#include "support/hosts.h"
#include "support/stride.h"
#include "support/translated.h"

namespace {

using comnlib::Encoding;

using translated::kUnicode, translated::Output, translated::utf16;

class Sets : public hosts::LocaleContext {
 public:
  Sets() { EXPECT_EQ(CS_SUCCEED, init()); }

  CS_LOCALE locale(const char* charset) { return hosts::all(entry(charset, charset)); }
  Encoding end(const char* charset) { return {entry(charset, charset)->locchardesc, false}; }

  Output translate(Encoding from, Encoding to, std::string_view text, std::size_t room = 64) {
    return translated::translate(*this, from, to, text, room);
  }
};

class Xlate : public testing::Test {
 protected:
  const hosts::ShippedHome home_;
  Sets sets_;
};

std::string utf8(char32_t code) {
  const auto byte = [](char32_t bits) { return static_cast<char>(bits); };
  const auto tail = [&](int shift) { return byte(0x80 | (code >> shift & 0x3F)); };
  if (code < 0x80) return {byte(code)};
  if (code < 0x800) return {byte(0xC0 | code >> 6), tail(0)};
  if (code < 0x10000) return {byte(0xE0 | code >> 12), tail(6), tail(0)};
  return {byte(0xF0 | code >> 18), tail(12), tail(6), tail(0)};
}

// As many leading parts as have room.
std::string fitting(const std::vector<std::string>& parts, std::size_t room = 1000) {
  std::string text;
  for (const std::string& part : parts) {
    if (text.size() + part.size() > room) break;
    text += part;
  }
  return text;
}

TEST_F(Xlate, Utf8IsStrictBothWays) {
  const Encoding set = sets_.end("utf8");
  const auto step = static_cast<char32_t>(stride::between_values());
  for (char32_t code = 0; code < 0x110000; code += step) {
    if (code >= 0xD800 && code < 0xE000) continue;
    const Output wide = sets_.translate(set, kUnicode, utf8(code));
    const Output narrow = sets_.translate(kUnicode, set, utf16(code));
    if (wide.bytes != utf16(code) || narrow.bytes != utf8(code))
      ADD_FAILURE() << static_cast<unsigned>(code);
  }
  std::istringstream refused(
      "\x80 \xBF \xC0\x80 \xC1\xBF \xC3\xA9\xC1\x81 \xC2 \xC2\x7F \xC2\xC0 \xE0\x9F\xBF \xE1\x80 "
      "\xE1\x7F\x80 \xE1\x80\xC0 \xED\xA0\x80 \xED\xBF\xBF \xF0\x8F\xBF\xBF \xF1\x80\x80 "
      "\xF1\xC0\x80\x80 \xF1\x80\x7F\x80 \xF1\x80\x80\xC0 \xF4\x90\x80\x80 \xF5\x80\x80\x80 \xFF");
  for (std::string bad; refused >> bad;)
    for (const std::string& text : {bad, bad + "text behind it"})
      EXPECT_EQ(CS_CVT_BADXLATE, sets_.translate(set, kUnicode, text).code)
          << testing::PrintToString(bad);
}

TEST_F(Xlate, MalformedUtf16AndRoomThatEnds) {
  const Encoding set = sets_.end("utf8");
  for (const std::string& bad :
       {utf16(0xD800), utf16(0xDC00), utf16(0xDC00) + utf16(0xDC00), utf16(0xDC00) + utf16(0xD800),
        utf16(0xD800) + utf16('x'), utf16(0xD800) + utf16(0xE000), std::string("x")}) {
    const Output output = sets_.translate(kUnicode, set, utf16('a') + bad);
    EXPECT_EQ(CS_CVT_BADXLATE, output.code);
    EXPECT_EQ("a", output.bytes) << "what stands before it is converted";
  }
  // ASCII goes by blocks of 16, whose bits show the next word's end; what follows is at every place
  // of one.
  for (std::size_t ascii = 0; ascii < 36; ++ascii) {
    const std::u32string text =
        std::u32string(ascii, 'a') + U"\u0080é€été ôté.😀東京都東京都" + std::u32string(20, 'b');
    std::vector<std::string> narrow_parts, wide_parts;
    for (const char32_t code : text) {
      narrow_parts.push_back(utf8(code));
      wide_parts.push_back(utf16(code));
    }
    for (std::size_t room = 0; room < ascii + 120; ++room) {
      const std::string narrow = fitting(narrow_parts), wide = fitting(wide_parts);
      const std::string fit = fitting(narrow_parts, room);
      const Output output = sets_.translate(kUnicode, set, wide, room);
      EXPECT_EQ(fit == narrow ? CS_SUCCEED : CS_CVT_TRUNCATED, output.code) << room;
      EXPECT_EQ(fit, output.bytes) << room;
      EXPECT_EQ(fit, sets_.translate(set, set, narrow, room).bytes) << room;
      EXPECT_EQ(fitting(wide_parts, room), sets_.translate(kUnicode, kUnicode, wide, room).bytes);
      EXPECT_EQ(fitting(wide_parts, room), sets_.translate(set, kUnicode, narrow, room).bytes);
    }
  }
  // A set of single bytes on its way to UTF-8 has a shorter way.
  const Encoding koi8 = sets_.end("koi8");
  for (std::size_t room = 0; room < 9; ++room)
    EXPECT_EQ(std::string("яяяя").substr(0, room / 2 * 2),
              sets_.translate(koi8, set, "\xD1\xD1\xD1\xD1", room).bytes);
  const Encoding sjis = sets_.end("sjis"), plain{nullptr, false};
  EXPECT_EQ(CS_CVT_TRUNCATED, sets_.translate(kUnicode, sjis, utf16(U'ü'), 1).code);
  EXPECT_EQ("\xFF?", sets_.translate(kUnicode, plain, utf16(0xFF) + utf16(0x100)).bytes);
  for (const std::size_t room : {2, 64})
    EXPECT_EQ(utf16(0xFF), sets_.translate(plain, kUnicode, "\xFF", room).bytes);
  const CsCharDesc unconfigured{};
  EXPECT_EQ(CS_CVT_NOXLATE, sets_.translate(kUnicode, {&unconfigured, false}, "").code);
}

TEST_F(Xlate, ThroughTheConversionRoutines) {
  CS_LOCALE from = sets_.locale("utf8"), to = sets_.locale("iso_1");
  CS_DATAFMT srcfmt{}, destfmt{};
  srcfmt.locale = &from;
  destfmt.locale = &to;
  using namespace std::string_literals;
  std::string dest;
  CS_INT length = -1;
  const auto convert = [&](const std::string& text, CS_INT room, CS_INT format) {
    srcfmt.maxlength = static_cast<CS_INT>(text.size());
    destfmt.maxlength = room;
    destfmt.format = format;
    dest.assign(16, '#');
    return comn_chartochar(sets_, &srcfmt, text.data(), &destfmt, dest.data(), &length);
  };
  const std::tuple<std::string, CS_INT, CS_INT, CS_RETCODE, std::string> rows[] = {
      {"éé", 3, CS_DFMT_PADBLANK, CS_SUCCEED, "\xE9\xE9 "},
      {"é", 1, CS_DFMT_NULLTERM, CS_CVT_TRUNCATED, "\0"s},
      {"é's", 9, CS_DFMT_ESCQUOTE, CS_SUCCEED, "\xE9''s"},
      {"é'", 2, CS_DFMT_ESCQUOTE, CS_CVT_TRUNCATED, "\xE9"},
      {"'\0x"s, 9, CS_DFMT_ESCQUOTE | CS_DFMT_NULLTERM, CS_SUCCEED, "''\0"s},
      {"a€", 4, CS_DFMT_PADNULL, CS_CVT_SUBSTITUTED, "a?\0\0"s},
      {"a€", 2, 0, CS_CVT_SUBSTITUTED, "a?"},
      {"aé\xC3", 9, 0, CS_CVT_BADXLATE, "a\xE9"}};
  for (const auto& [text, room, format, code, bytes] : rows) {
    EXPECT_EQ(code, convert(text, room, format)) << text;
    const auto after = static_cast<std::size_t>(room);
    EXPECT_EQ(bytes, dest.substr(0, static_cast<std::size_t>(length)));
    EXPECT_EQ(std::string(dest.size() - after, '#'), dest.substr(after));
  }
  // Within one set too; a text that does not fit makes only the last byte of the room a NUL.
  destfmt.locale = &from;
  EXPECT_EQ(CS_CVT_TRUNCATED, convert("a😀", 4, CS_DFMT_NULLTERM));
  EXPECT_EQ("a##\0#"s, dest.substr(0, 5));
  EXPECT_EQ(1, length);
}

// In good tables "b" is 41.
TEST(XlateTables, EveryRefusal) {
  using namespace comnlib;
  const hosts::HomeCopy home;
  const std::string file = "charsets/koi8/koi8.ctb";
  home.write(file, "[table]\nsingle = 41, 00620062\n");
  const auto load = [](auto&) {
    Sets sets;
    const ConvTable *table = nullptr, *again = nullptr;
    const CS_RETCODE code = load_table(sets.context, "koi8", "koi8", table, {nullptr, 0});
    const Encoding koi8 = sets.end("koi8");
    EXPECT_EQ(code == CS_SUCCEED ? CS_SUCCEED : CS_CVT_NOXLATE,
              sets.translate(koi8, kUnicode, "A").code);
    if (code != CS_SUCCEED) return code;
    EXPECT_EQ(CS_SUCCEED, load_table(sets.context, "koi8", "koi8", again, {nullptr, 0}));
    EXPECT_EQ(table, again);
    EXPECT_EQ(utf16('b'), sets.translate(koi8, kUnicode, "A").bytes);
    EXPECT_EQ("b", sets.translate(koi8, sets.end("utf8"), "A").bytes);
    EXPECT_EQ("A", sets.translate(kUnicode, koi8, utf16('b')).bytes);
    for (const char* after : {"C", "\x81\x30\x81\x39"})
      EXPECT_EQ(CS_CVT_BADXLATE, sets.translate(koi8, kUnicode, after).code);
    return code;
  };
  const std::string largest = "double = A1, 01, " + std::string(4 * 255, '0') + '\n';
  for (const std::string& more : {std::string(), largest})
    faulty_files::expect(home, file, "CS_SUCCEED", "0062\n", "0062\n" + more, load);
  faulty_files::expect_table(home, "intl/data/faulty_tables.txt", load);
  home.change("charsets/iso15/iso15.cfg", "to = utf8", "to = x");
  Sets sets;
  EXPECT_EQ(CS_CVT_NOXLATE, sets.translate(sets.end("iso15"), kUnicode, "a").code);
  EXPECT_EQ("a", sets.translate(kUnicode, sets.end("iso15"), utf16('a')).bytes);
}

// Such a byte is no letter of ASCII, by which the loops over text go.
TEST(XlateTables, ByteBeyondAsciiMayBeAnAsciiCharacter) {
  const hosts::HomeCopy home;
  for (const auto& [set, byte] : {std::pair{"cp1250", "C1"}, {"sjis", "F5"}}) {
    const std::string file = std::string("charsets/") + set + "/" + set + ".ctb";
    home.write(file, home.read(file) + "single = " + byte + ", 0041\n");
    Sets sets;
    const std::string text = std::string("ab") + (*byte == 'C' ? '\xC1' : '\xF5') + "cd";
    EXPECT_EQ(utf16(U'a') + utf16(U'b') + utf16(U'A') + utf16(U'c') + utf16(U'd'),
              sets.translate(sets.end(set), kUnicode, text).bytes);
    for (const char* target : {"utf8", "cp437"})
      EXPECT_EQ("abAcd", sets.translate(sets.end(set), sets.end(target), text).bytes) << target;
  }
}

}  // namespace
