// Conversion between character sets: every character of every shipped set against Python's codecs,
// the Unicode forms against their bit layout, and the loading of tables by threads and without
// memory.
#include "intl/xlate.h"

#include <gtest/gtest.h>

#include <map>
#include <sstream>
#include <thread>
#include <vector>

#include "comnlib/convert.h"
#include "intl/convtable.h"
#include "intl_host.h"
#include "support/host_alloc.h"

namespace {

using comnlib::Encoding;

constexpr Encoding kUnicode{nullptr, true};

struct Output {
  CS_RETCODE code;
  std::string bytes;
};

class Sets {
 public:
  explicit Sets(intl_host::Context& context) : context_(context) {}

  CS_LOCALE locale(const std::string& charset) { return intl_host::all(entry(charset)); }
  Encoding end(const std::string& charset) { return {entry(charset)->locchardesc, false}; }

  Output translate(Encoding from, Encoding to, std::string_view text, std::size_t room = 64) {
    std::vector<CS_BYTE> dest(room + 1, 0xA5);
    const auto result = comnlib::translate(
        context_, from, to, {reinterpret_cast<const CS_BYTE*>(text.data()), text.size()},
        std::span(dest).first(room));
    EXPECT_LE(result.written, room);
    EXPECT_EQ(0xA5, dest[room]);
    return {result.code, {dest.begin(), dest.begin() + static_cast<int>(result.written)}};
  }

 private:
  CsLocCache* entry(const std::string& charset) {
    CsLocCache*& known = entries_[charset];
    const char* name = charset.c_str();
    if (known == nullptr) {
      EXPECT_EQ(CS_SUCCEED, context_.load(name, name, "us_english", "binary", &known)) << name;
    }
    return known;
  }
  intl_host::Context& context_;
  std::map<std::string, CsLocCache*> entries_;
};

class Xlate : public testing::Test {
 protected:
  intl_host::ShippedContext context_;
  Sets sets_{context_};
};

std::string utf16(char32_t code) {
  std::u16string units;
  if (code < 0x10000) {
    units = static_cast<char16_t>(code);
  } else {
    units = {static_cast<char16_t>(0xD7C0 + (code >> 10)),
             static_cast<char16_t>(0xDC00 | (code & 0x3FF))};
  }
  return {reinterpret_cast<const char*>(units.data()), 2 * units.size()};
}

constexpr unsigned kChecksumStart = 2166136261U;

unsigned mix(unsigned checksum, unsigned number) {
  return (checksum ^ number) * 16777619U;
}

// Sequences of up to three bytes that are characters, characters of Unicode that have one, and
// checksums of both ways.
const struct Vector {
  const char* charset;
  int sequences, characters;
  unsigned decoding, encoding;
  bool all_planes;
} kVectors[] = {
#include "charset_vectors.inc"
};

std::string_view bytes_of(std::u16string_view units) {
  return {reinterpret_cast<const char*>(units.data()), 2 * units.size()};
}
std::u16string_view units_of(std::string_view bytes) {
  return {reinterpret_cast<const char16_t*>(bytes.data()), bytes.size() / 2};
}

TEST_F(Xlate, EverySequenceOfEverySet) {
  for (const Vector& vector : kVectors) {
    SCOPED_TRACE(vector.charset);
    const Encoding set = sets_.end(vector.charset);
    int sequences = 0;
    unsigned checksum = kChecksumStart;
    const auto is_character = [&](unsigned number, std::size_t length) {
      const CS_BYTE bytes[] = {static_cast<CS_BYTE>(number >> 16),
                               static_cast<CS_BYTE>(number >> 8), static_cast<CS_BYTE>(number)};
      CS_BYTE unit[2];
      const auto result =
          comnlib::translate(context_, set, kUnicode, std::span(bytes).last(length), unit);
      if (result.code != CS_SUCCEED) {
        if (result.code != CS_CVT_BADXLATE) ADD_FAILURE() << number << ' ' << result.code;
        return false;
      }
      ++sequences;
      checksum = mix(mix(checksum, number), static_cast<unsigned>(unit[0] | unit[1] << 8));
      return true;
    };
    const bool has_triples = std::string("eucjp") == vector.charset;
    for (unsigned byte = 0; byte < 256; ++byte) {
      if (is_character(byte, 1)) continue;
      for (unsigned pair = byte << 8; pair < (byte + 1) << 8; ++pair) {
        if (is_character(pair, 2) || !has_triples || byte != 0x8F) continue;
        for (unsigned third = 0; third < 256; ++third) is_character(pair << 8 | third, 3);
      }
    }
    EXPECT_EQ(vector.sequences, sequences);
    EXPECT_EQ(vector.decoding, checksum);
  }
}

// All characters of Unicode in one text: those that a set lacks are replaced, all others come back.
TEST_F(Xlate, EveryCharacterThereAndBack) {
  std::u16string basic, all;
  for (unsigned unit = 0; unit < 0x10000; ++unit)
    if (unit < 0xD800 || unit >= 0xE000) basic += static_cast<char16_t>(unit);
  all = basic;
  for (char32_t code = 0x10000; code < 0x110000; ++code) all += units_of(utf16(code));
  for (const Vector& vector : kVectors) {
    SCOPED_TRACE(vector.charset);
    const Encoding set = sets_.end(vector.charset);
    const std::u16string& text = vector.all_planes ? all : basic;
    const Output there = sets_.translate(kUnicode, set, bytes_of(text), 4 * text.size());
    EXPECT_EQ(vector.all_planes ? CS_SUCCEED : CS_CVT_SUBSTITUTED, there.code);
    unsigned checksum = kChecksumStart;
    for (const char byte : there.bytes) checksum = mix(checksum, static_cast<unsigned char>(byte));
    EXPECT_EQ(vector.encoding, checksum);

    const Output back = sets_.translate(set, kUnicode, there.bytes, 2 * text.size());
    EXPECT_EQ(CS_SUCCEED, back.code);
    const std::u16string_view returned = units_of(back.bytes);
    const char16_t missing = std::string("sjis") == vector.charset ? u'〓' : u'?';
    ASSERT_EQ(text.size(), returned.size());
    int lacking = 0;
    for (std::size_t at = 0; at < text.size(); ++at) {
      if (returned[at] == text[at]) continue;
      ++lacking;
      if (returned[at] != missing) ADD_FAILURE() << static_cast<unsigned>(text[at]);
    }
    EXPECT_EQ(vector.all_planes ? 0 : 0xF800 - vector.characters, lacking);
    if (!vector.all_planes) {
      EXPECT_EQ(sets_.translate(kUnicode, set, bytes_of({&missing, 1})).bytes,
                sets_.translate(kUnicode, set, utf16(0x1F600)).bytes);
    }
  }
}

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
  for (char32_t code = 0; code < 0x110000; ++code) {
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
  // ASCII goes by blocks of 16; what follows stands at every place of one.
  for (std::size_t ascii = 0; ascii < 36; ++ascii) {
    const std::u32string text = std::u32string(ascii, 'a') + U"\u0080é€😀" + std::u32string(20, 'b');
    std::vector<std::string> narrow_parts, wide_parts;
    for (const char32_t code : text) {
      narrow_parts.push_back(utf8(code));
      wide_parts.push_back(utf16(code));
    }
    for (std::size_t room = 0; room < ascii + 100; ++room) {
      const std::string narrow = fitting(narrow_parts), wide = fitting(wide_parts);
      const std::string fit = fitting(narrow_parts, room);
      const Output output = sets_.translate(kUnicode, set, wide, room);
      EXPECT_EQ(fit == narrow ? CS_SUCCEED : CS_CVT_TRUNCATED, output.code) << room;
      EXPECT_EQ(fit, output.bytes) << room;
      EXPECT_EQ(fit, sets_.translate(set, set, narrow, room).bytes) << room;
      EXPECT_EQ(fitting(wide_parts, room), sets_.translate(set, kUnicode, narrow, room).bytes);
    }
  }
  const Encoding sjis = sets_.end("sjis"), plain{nullptr, false};
  EXPECT_EQ(CS_CVT_TRUNCATED, sets_.translate(kUnicode, sjis, utf16(U'ü'), 1).code);
  EXPECT_EQ("\xFF?", sets_.translate(kUnicode, plain, utf16(0xFF) + utf16(0x100)).bytes);
  EXPECT_EQ(utf16(0xFF), sets_.translate(plain, kUnicode, "\xFF").bytes);
  const CsCharDesc unconfigured{};
  EXPECT_EQ(CS_CVT_NOXLATE, sets_.translate(kUnicode, {&unconfigured, false}, "").code);
}

TEST_F(Xlate, ThroughTheConversionRoutines) {
  CS_CONTEXT* context = context_;
  CS_LOCALE from = sets_.locale("utf8"), to = sets_.locale("iso_1");
  CS_DATAFMT srcfmt{}, destfmt{};
  srcfmt.locale = &from;
  destfmt.locale = &to;
  const struct {
    std::string text;
    CS_INT room, format;
    CS_RETCODE code;
    std::string bytes;
  } rows[] = {
      {"éé", 3, CS_DFMT_PADBLANK, CS_SUCCEED, "\xE9\xE9 "},
      {"é", 1, CS_DFMT_NULLTERM, CS_CVT_TRUNCATED, std::string(1, '\0')},
      {"é's", 9, CS_DFMT_ESCQUOTE, CS_SUCCEED, "\xE9''s"},
      {"é'", 2, CS_DFMT_ESCQUOTE, CS_CVT_TRUNCATED, "\xE9"},
      {std::string("'\0x", 3), 9, CS_DFMT_ESCQUOTE | CS_DFMT_NULLTERM, CS_SUCCEED,
       std::string("''\0", 3)},
      {"a€", 4, CS_DFMT_PADNULL, CS_CVT_SUBSTITUTED, std::string("a?\0\0", 4)},
      {"a€", 2, 0, CS_CVT_SUBSTITUTED, "a?"},
      {"aé\xC3", 9, 0, CS_CVT_BADXLATE, "a\xE9"},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.text);
    srcfmt.maxlength = static_cast<CS_INT>(row.text.size());
    destfmt.maxlength = row.room;
    destfmt.format = row.format;
    std::string dest(16, '#');
    CS_INT length = -1;
    EXPECT_EQ(row.code,
              comn_chartochar(context, &srcfmt, row.text.data(), &destfmt, dest.data(), &length));
    EXPECT_EQ(row.bytes, dest.substr(0, static_cast<std::size_t>(length)));
    EXPECT_EQ(std::string(dest.size() - static_cast<std::size_t>(row.room), '#'),
              dest.substr(static_cast<std::size_t>(row.room)));
  }
  // Within one set too; a text that does not fit makes only the last byte of the room a NUL.
  destfmt.locale = &from;
  srcfmt.maxlength = 5;
  destfmt.maxlength = 4;
  destfmt.format = CS_DFMT_NULLTERM;
  std::string dest = "####";
  CS_INT length = -1;
  EXPECT_EQ(CS_CVT_TRUNCATED,
            comn_chartochar(context, &srcfmt, "a😀", &destfmt, dest.data(), &length));
  EXPECT_EQ(std::string("a##\0", 4), dest);
  EXPECT_EQ(1, length);
}

// Month names are text of the locale's character set.
TEST_F(Xlate, DatesOfALocaleInUnicode) {
  CsLocCache* entry = nullptr;
  ASSERT_EQ(CS_SUCCEED, context_.load("fr_FR.UTF-8", &entry));
  CS_LOCALE french = intl_host::all(entry);
  CS_DATAFMT date{}, wide{};
  date.datatype = CS_DATETIME_TYPE;
  wide.datatype = CS_UNICHAR_TYPE;
  wide.maxlength = 80;
  date.locale = wide.locale = &french;
  const CS_DATETIME february{45, 0};
  std::u16string text(40, u'#');
  CS_INT length = 0;
  ASSERT_EQ(CS_SUCCEED,
            comn_datetimetounichar(context_, &date, &february, &wide, text.data(), &length));
  text.resize(static_cast<std::size_t>(length) / 2);
  EXPECT_NE(std::u16string::npos, text.find(u"fév"));
  wide.maxlength = length;
  CS_DATETIME back{};
  EXPECT_EQ(CS_SUCCEED,
            comn_unichartodatetime(context_, &wide, text.data(), &date, &back, &length));
  EXPECT_EQ(february.dtdays, back.dtdays);
}

TEST(XlateTables, EightThreadsOnAFreshContext) {
  intl_host::ShippedContext context;
  Sets sets(context);
  const std::vector<std::string> names{"iso15", "koi8", "sjis", "cp936"};
  std::vector<Encoding> ends;
  for (const std::string& name : names) ends.push_back(sets.end(name));
  const int opened = intl_host::files_opened;
  std::vector<std::thread> threads;
  for (std::size_t t = 0; t < 8; ++t)
    threads.emplace_back([&, t] {
      for (std::size_t i = 0; i < 200; ++i) {
        const Output there = sets.translate(kUnicode, ends[(t + i) % ends.size()], utf16(U'я'));
        const Output back = sets.translate(ends[(t + i) % ends.size()], kUnicode, there.bytes);
        EXPECT_EQ(there.code == CS_SUCCEED ? utf16(U'я') : utf16('?'), back.bytes);
      }
    });
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(opened + 4, intl_host::files_opened) << "each table is read once";
}

TEST(XlateTables, EveryRefusal) {
  using namespace comnlib;
  const intl_host::HomeCopy home;
  const std::pair<std::string, CS_RETCODE> rows[] = {
      {"[table]\nsingle = 41, 00620062\n", CS_SUCCEED},  // "b" is 41
      {"[table]\nsingle = 41, 00620062\ndouble = 81, 01, " + std::string(4 * 255, '0'), CS_SUCCEED},
      {"[tables]\n", CS_FAIL},
      {"[table]\nquadruple = 41, 0062\n", CS_FAIL},
      {"[table]\ntriple = 8F, A1, A1, 0063\ntriple = 8F, A2, A1, 0064\nsingle = 41, 0062\n",
       CS_SUCCEED},
      {"[table]\ntriple = 8F, A1, A1, 0063\ntriple = 8E, A2, A1, 0064\n", CS_FAIL},
      {"[table]\ntriple = 00, A1, A1, 0063\n", CS_FAIL},
      {"[table]\ntriple = 8F, A1, A1\n", CS_FAIL},
      {"[table]\nsingle = 41, 0062\nrange = 81308130, 0x80, 9\nrange = FE39FE30, 0x10FFF6, 10\n",
       CS_SUCCEED},
      {"[table]\nrange = FE39FE30, 0x10FFF6, 11\n", CS_FAIL},
      {"[table]\nrange = FE39FE31, 0x80, 10\n", CS_FAIL},
      {"[table]\nrange = 81308130, 0xD7FF, 2\n", CS_FAIL},
      {"[table]\nrange = 81308130, 0xDFFF, 1\n", CS_FAIL},
      {"[table]\nrange = 81308130, 0x80, 0\n", CS_FAIL},
      {"[table]\nrange = 81308130, 0x110000, 1\n", CS_FAIL},
      {"[table]\nrange = 81308030, 0x80, 1\n", CS_FAIL},
      {"[table]\nrange = 81308130, 0x80, 2\nrange = 81308131, 0x90, 1\n", CS_FAIL},
      {"[table]\nrange = 81308130, 0x80, 2\nrange = 81308132, 0x81, 1\n", CS_FAIL},
      {"[table]\nrange = 813081, 0x80, 1\n", CS_FAIL},
      {"[table]\nrange = 81308130, 0x80\n", CS_FAIL},
      {"[table]\nsingle = 41, 00620\n", CS_FAIL},
      {"[table]\nsingle = 41, 006g\n", CS_FAIL},
      {"[table]\nsingle = 4, 0062\n", CS_FAIL},
      {"[table]\nsingle = FF, 00620063\n", CS_FAIL},
      {"[table]\ndouble = 81, FF, 00620063\n", CS_FAIL},
      {"[table]\ndouble = 00, 41, 0062\n", CS_FAIL},
      {"[table]\nsingle = 00, D800\n", CS_FAIL},
      {"[table]\ndouble = 81, 41\n", CS_FAIL},
      {"[table]\nsingle = 41, \"\n", CS_INTL_LIBERR},
      {"[table]\nsingle = 41, 0062\nsingle\n", CS_INTL_LIBERR}};
  for (const auto& [text, code] : rows) {
    SCOPED_TRACE(text);
    home.write("charsets/koi8/koi8.ctb", text);
    intl_host::Context context;
    ASSERT_EQ(CS_SUCCEED, context.init());
    Sets sets(context);
    const ConvTable* table = nullptr;
    EXPECT_EQ(code, load_table(context.context, "koi8", "koi8", table, {nullptr, 0}));
    EXPECT_EQ(code == CS_SUCCEED ? CS_SUCCEED : CS_CVT_NOXLATE,
              sets.translate(sets.end("koi8"), kUnicode, "A").code);
    if (code != CS_SUCCEED) continue;
    const ConvTable* again = nullptr;
    EXPECT_EQ(CS_SUCCEED, load_table(context.context, "koi8", "koi8", again, {nullptr, 0}));
    EXPECT_EQ(table, again);
    EXPECT_EQ(utf16('b'), sets.translate(sets.end("koi8"), kUnicode, "A").bytes);
    EXPECT_EQ("b", sets.translate(sets.end("koi8"), sets.end("utf8"), "A").bytes);
    EXPECT_EQ("A", sets.translate(kUnicode, sets.end("koi8"), utf16('b')).bytes);
    EXPECT_EQ(CS_CVT_BADXLATE, sets.translate(sets.end("koi8"), kUnicode, "C").code);
  }
  EXPECT_EQ(0U, host_alloc::live_blocks());

  home.change("charsets/iso15/iso15.cfg", "to = utf8", "to = x");
  intl_host::Context context;
  ASSERT_EQ(CS_SUCCEED, context.init());
  Sets sets(context);
  EXPECT_EQ(CS_CVT_NOXLATE, sets.translate(sets.end("iso15"), kUnicode, "a").code);
  EXPECT_EQ("a", sets.translate(kUnicode, sets.end("iso15"), utf16('a')).bytes);
}

}  // namespace
