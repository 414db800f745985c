// Classification, case, stepping and normal form, over the built-in tables and over images of both
// kinds.
#include <gtest/gtest.h>

#include <array>
#include <cctype>
#include <cstring>
#include <string>
#include <string_view>
#include <vector>

#include "chars/iso_1.h"
#include "comnlib/charset.h"
#include "comnlib/result.h"
#include "support/stops.h"
#include "support/two_byte_set.h"

namespace {

using Bytes = std::vector<CS_BYTE>;

const CS_BYTE* at(const char* text) {
  return reinterpret_cast<const CS_BYTE*>(text);
}

void put_big_endian(Bytes& image, std::size_t offset, CS_UINT value) {
  for (int shift = 24; shift >= 0; shift -= 8)
    image[offset++] = static_cast<CS_BYTE>(value >> shift);
}

// The two-byte set as an image, its maps in an order of their own; the sound of "B" is "1", and
// 0x90 has a width of 0 and no case.
constexpr CS_UINT kSoundex = 44, kType = 300, kWidth = 2348, kNorm = 2604, kImageSize = 3116;

Bytes double_byte_image() {
  const TwoByteSet set;
  Bytes image(kImageSize);
  const CS_USHORT status = 0x1234;
  std::memcpy(image.data(), &status, sizeof status);
  for (CS_BYTE at = 2; at < 8; ++at) image[at] = at;
  const CS_UINT maps[] = {kWidth, 256, kNorm, 512, kType, 2048, kSoundex, 256};
  for (std::size_t i = 0; i < std::size(maps); ++i) put_big_endian(image, 12 + 4 * i, maps[i]);
  image[kSoundex + 'B'] = '1';
  std::memcpy(&image[kType], set.attrib()->cs_type_map, 2048);
  std::memcpy(&image[kWidth], set.attrib()->cs_width_map, 256);
  std::memcpy(&image[kNorm], set.attrib()->cs_norm_map, 512);
  std::memset(&image[kType + 4 * 0x90], 0, 4);
  image[kWidth + 0x90] = 0;
  return image;
}

std::vector<int> numbers_of(const char_attrib& set) {
  return {set.cs_status, set.cs_class, set.cs_maxcharlen, set.cs_ncharsize,
          set.cs_ntype,  set.cs_nnorm, set.cs_nsoundex,   static_cast<int>(set.cs_id)};
}

CS_RETCODE build(CS_INT kind, const std::string& name, Bytes& image, char_attrib* set) {
  return com_build_char_attrib(kind, 77, name.c_str(), image.empty() ? nullptr : image.data(), set);
}

class DoubleByte : public testing::Test {
 protected:
  DoubleByte() : image_(double_byte_image()) {
    EXPECT_EQ(CS_SUCCEED, build(COM_IMAGE_MULTIBYTE, "two", image_, &set_));
  }
  Bytes image_;
  char_attrib set_;
};

// The C library's classes are an oracle for the ASCII half; the built-in graphic bit is its own.
TEST(BuiltInTables, AsciiHalfAgreesWithTheCLibrary) {
  const struct {
    const char* name;
    CS_INT (*test)(const char_attrib*, const CS_BYTE*);
    CS_INT (*older)(CS_BYTE);  // null: the older family has none
    int (*oracle)(int);
    int mask;
  } rows[] = {{"isalpha", comn_isalpha, com_isalpha, std::isalpha, 3},
              {"isupper", comn_isupper, com_isupper, std::isupper, 1},
              {"islower", comn_islower, com_islower, std::islower, 2},
              {"isdigit", comn_isdigit, com_isdigit, std::isdigit, 4},
              {"isspace", comn_isspace, com_isspace, std::isspace, 8},
              {"isxdigit", comn_isxdigit, com_isxdigit, std::isxdigit, 16},
              {"ispunct", comn_ispunct, nullptr, std::ispunct, 32},
              {"isgraph", comn_isgraph, com_isgraph, std::isprint, 64}};
  for (CS_BYTE value = 0; value < 128; ++value) {
    const int byte = value;
    for (const auto& row : rows) {
      const bool holds = row.oracle(byte) != 0, built_in_graph = row.mask == COMN_CT_GRAPH;
      EXPECT_EQ(holds && !built_in_graph, row.test(nullptr, &value) != 0) << row.name << byte;
      if (row.older == nullptr) continue;
      EXPECT_EQ(holds, row.older(value) != 0) << "older " << row.name << byte;
      EXPECT_EQ(0, row.older(value) & ~row.mask) << "the masked bits of " << byte;
    }
    EXPECT_EQ(std::toupper(byte), com_toupper(value));
    EXPECT_EQ(std::tolower(byte), com_tolower(value));
    EXPECT_EQ(byte, comn_to_ascii(nullptr, &value)) << "no attributes: the byte itself";
  }
  EXPECT_EQ(3, com_isalpha('a') | com_isalpha('A')) << "bits, not 1";
}

TEST(BuiltInTables, LexicalClassesAndNullAttributes) {
  for (const char_map& entry : ISO_1_type_map) {
    const bool known = entry.char_lex == COMN_LEX_LETTER || entry.char_lex == COMN_LEX_DIGIT ||
                       entry.char_lex == COMN_LEX_SPACE || entry.char_lex == COMN_LEX_PUNCT;
    EXPECT_TRUE(known) << &entry - ISO_1_type_map;
  }
  const char_attrib* attrib = com_get_charattrib();
  EXPECT_EQ(com_get_typemap(), attrib->cs_type_map);
  EXPECT_EQ("iso_1", std::string(attrib->cs_name, attrib->cs_namelen));
  CS_BYTE text[] = {0x81, 0x41};
  CS_BYTE* ch = text;
  EXPECT_EQ(1, comn_char_width(nullptr, ch));
  EXPECT_EQ(1, comn_disp_width(nullptr, ch));
  EXPECT_EQ(nullptr, comn_get_widthmap(nullptr));
  comn_inc_char(nullptr, &ch);
  EXPECT_EQ(0x41, *ch);
  CS_BYTE zero = 0xFF;
  comn_toupper(nullptr, at("\0x"), &zero);
  EXPECT_EQ(0, zero);
  comn_toupper(nullptr, at("x"), ch);
  EXPECT_EQ('X', *ch);
}

TEST(CharsDeathTest, NullPointersStop) {
  const char_attrib* attrib = com_get_charattrib();
  CS_BYTE zero = 0;
  stops::expect({STOP(stops::kPointer, comn_isalpha(nullptr, nullptr)),
                 STOP(stops::kPointer, comn_get_lex(attrib, nullptr)),
                 STOP(stops::kPointer, comn_toupper(attrib, nullptr, &zero)),
                 STOP(stops::kPointer, comn_tolower(attrib, at("x"), nullptr))});
}

TEST_F(DoubleByte, AttributesComeFromTheHeaderAndTheArguments) {
  EXPECT_EQ((std::vector{0x1234, 2, 3, 4, 5, 6, 7, 77}), numbers_of(set_));
  EXPECT_EQ("two", std::string(set_.cs_name, set_.cs_namelen));
  EXPECT_EQ(image_.data() + kWidth, set_.cs_width_map);
  EXPECT_EQ(image_.data() + kNorm, set_.cs_norm_map);
  EXPECT_EQ('1', set_.cs_soundex['B']);
  put_big_endian(image_, 16, 0);
  put_big_endian(image_, 24, 0);
  EXPECT_EQ(CS_SUCCEED, build(COM_IMAGE_MULTIBYTE, "two", image_, &set_));
  EXPECT_EQ(nullptr, set_.cs_width_map);
  EXPECT_EQ(nullptr, set_.cs_norm_map);
  EXPECT_EQ('a', comn_to_ascii(&set_, at("A"))) << "without normalisation tables: char_lower";
}

TEST_F(DoubleByte, ClassesLookTheSecondByteUp) {
  EXPECT_EQ(2, comn_char_width(&set_, at("\x81\x30")));
  EXPECT_EQ(2, comn_disp_width(&set_, at("\x81\x30")));
  const CS_BYTE* const narrow = at("\x90");
  auto* next = const_cast<CS_BYTE*>(narrow);
  EXPECT_EQ(0, comn_char_width(&set_, narrow)) << "as the map says";
  comn_inc_char(&set_, &next);
  EXPECT_EQ(narrow + 1, next) << "no walk may stand still";
  EXPECT_NE(0, comn_isupper(&set_, at("\x81\x41")));
  EXPECT_EQ(0, comn_isxdigit(&set_, at("\x81\x41"))) << "not the ASCII letter's entry";
  EXPECT_NE(0, comn_isdigit(&set_, at("\x81\x30")));
  EXPECT_EQ(COMN_LEX_DIGIT, comn_get_lex(&set_, at("\x81\x30")));
  EXPECT_EQ(0, comn_isalpha(&set_, at("\x81\x20"))) << "a lead byte whatever follows";
  EXPECT_NE(0, comn_isgraph(&set_, at("\x81\x61")));
}

TEST_F(DoubleByte, CaseAndNormalForm) {
  const auto expect = [this](std::string_view from, std::string upper, std::string lower,
                             int ascii) {
    char seen[2][4] = {};
    comn_toupper(&set_, at(from.data()), reinterpret_cast<CS_BYTE*>(seen[0]));
    comn_tolower(&set_, at(from.data()), reinterpret_cast<CS_BYTE*>(seen[1]));
    EXPECT_EQ(upper.append(4 - upper.size(), '\0'), std::string(seen[0], 4)) << from;
    EXPECT_EQ(lower.append(4 - lower.size(), '\0'), std::string(seen[1], 4)) << from;
    EXPECT_EQ(ascii, comn_to_ascii(&set_, at(from.data()))) << from;
  };
  expect("q", "Q", "q", 'q');
  expect("\x81\x61", "\x81\x41", "\x81\x61", 'a');
  expect("\x81\x27", "\x81", "\x81", '\'');  // to a second byte of 0
  expect("\x90", "\x90", "\x90", 0);         // mapped to 0
  expect("\x83\x30", "\x83", "\x83", 0);     // a lead byte without a table
  const auto ascii_of = [this](std::string_view text, CS_INT room) {
    std::string form(static_cast<std::size_t>(room) + 1, '#');
    const CS_INT length =
        comn_str_to_ascii(&set_, at(text.data()), static_cast<CS_INT>(text.size()),
                          reinterpret_cast<CS_BYTE*>(form.data()), room);
    EXPECT_EQ(length, static_cast<CS_INT>(form.find('#'))) << text;
    return form.substr(0, form.find('#'));
  };
  EXPECT_EQ("x0y", ascii_of("x\x81\x30y\x81", 8)) << "a cut last character is left out";
  EXPECT_EQ("x0", ascii_of("x\x81\x30y", 2));
  EXPECT_EQ("y1", ascii_of("y\x81\x31", 8)) << "whole at the end";
}

TEST_F(DoubleByte, Stepping) {
  using Told = std::array<CS_INT, 4>;  // whole and partial length, excess, count
  const auto walk = [](const char_attrib* set, std::string_view text) {
    Told told{-1, -1, -1, -1};
    comn_whole_char(set, at(text.data()), at(text.data()) + text.size(), &told[0], &told[1],
                    &told[2], &told[3]);
    return told;
  };
  EXPECT_EQ((Told{0, 0, 0, 0}), walk(&set_, ""));
  EXPECT_EQ((Told{3, 0, 0, 2}), walk(&set_, "a\x81\x41"));
  EXPECT_EQ((Told{3, 1, 1, 2}), walk(&set_, "a\x81\x41\x81"));
  EXPECT_EQ((Told{0, 1, 1, 0}), walk(&set_, "\x81"));
  EXPECT_EQ((Told{2, 0, 0, 2}), walk(&set_, "\x90\x90"));
  EXPECT_EQ((Told{4, 0, 0, 4}), walk(nullptr, "a\x81\x41\x81"));
  CS_INT told = 0;
  const CS_BYTE* const start = at("ab") + 1;
  const std::uintptr_t far = reinterpret_cast<std::uintptr_t>(start) + 0x80000000U;
  for (const CS_BYTE* end : {start - 1, reinterpret_cast<const CS_BYTE*>(far)})
    EXPECT_DEATH(comn_whole_char(&set_, start, end, &told, &told, &told, &told), "assertion");
}

TEST(Build, SingleByteImageAndRefusals) {
  Bytes image(COMN_CS_IMAGE1_SIZE), none;
  image[COMN_CS_IMAGE1_TYPES + 5] = 9;
  char_attrib set;
  std::memset(&set, 0xEE, sizeof set);
  EXPECT_EQ(CS_SUCCEED, build(COM_IMAGE_SINGLEBYTE, std::string(40, 'n'), image, &set));
  EXPECT_EQ((std::vector{0, 1, 1, 1, 1, 0, 1, 77}), numbers_of(set));
  EXPECT_EQ(std::string(30, 'n'), std::string(set.cs_name, set.cs_namelen));
  EXPECT_EQ(9, set.cs_soundex[5]);
  EXPECT_EQ(nullptr, set.cs_width_map);
  EXPECT_EQ(CS_FAIL, build(1003, "n", image, &set));
  EXPECT_EQ(CS_FAIL, build(COM_IMAGE_SINGLEBYTE, "n", none, &set));
  EXPECT_EQ(CS_FAIL, build(COM_IMAGE_SINGLEBYTE, "n", image, nullptr));
}

}  // namespace
