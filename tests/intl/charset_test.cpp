// The loader of character sets: every refusal by a small broken file, and the shipped sets against
// what is known of them.
#include <gtest/gtest.h>

#include <string>

#include "chars/com_attr.h"
#include "chars/iso_1.h"
#include "comnlib/memory.h"
#include "intl/charset.h"
#include "intl/convcfg.h"
#include "support/faulty_files.h"
#include "support/hosts.h"

namespace {

const std::string kFile = "charsets/x/charset.loc";

class CharsetFile : public testing::Test {
 protected:
  // Reads the charset.loc alone, as the first step of a load does.
  CS_RETCODE read() {
    CS_CONTEXT context{};
    CsCtxGlobals globals{};
    context.ctxglobals = &globals;
    char name[] = "x";
    auto* desc = static_cast<CsCharDesc*>(comn_calloc(1, sizeof(CsCharDesc)));
    CsLocCache entry{};
    entry.charname = name;
    entry.charnamelen = 1;
    entry.locchardesc = desc;
    const CS_RETCODE result = comn__get_charset(&context, &entry, nullptr, 0);
    EXPECT_EQ(result == CS_INTL_LIBERR, context.ctxintlerr < 0);
    if (result == CS_SUCCEED) inspect_(*desc->char_attrib);
    EXPECT_EQ(CS_SUCCEED, comn__chardesc_drop(desc));
    EXPECT_EQ(0, hosts::files_open);
    return result;
  }
  // Reads one of the files of data/charsets in which a text is replaced.
  void expect(const std::string& file, std::string_view code, std::string_view text = "",
              std::string_view replacement = "") {
    const std::string good = scratch::read(COMNLIB_TESTS "/intl/data/charsets/" + file + ".loc");
    ASSERT_NE("", good) << file;
    home_.write(kFile, good);
    faulty_files::expect(home_, kFile, code, text, replacement, [this](auto&) { return read(); });
  }

  const hosts::HomeCopy home_;
  std::function<void(const char_attrib&)> inspect_ = [](const char_attrib&) {};
};

TEST_F(CharsetFile, EveryRefusal) {
  table::for_each_line("intl/data/faulty_charsets.txt", [&](const table::Fields& row) {
    expect(row[0], row[1], table::text_of(row[2]), table::text_of(row[3]));
  });
  hosts::close_fails = true;
  expect("single_bytes", "CS_INTL_LIBERR");
  hosts::close_fails = false;
}

// A first byte may name a table that the file does not have: it is as good as empty.
TEST_F(CharsetFile, TablesThatTheFileLacks) {
  const CS_BYTE ch[] = {0x81, 0xFF};
  inspect_ = [&](const char_attrib& set) { EXPECT_EQ(0, comn_isalpha(&set, ch)); };
  expect("lead_byte", "CS_SUCCEED");
  inspect_ = [&](const char_attrib& set) {
    EXPECT_EQ(0, comn_isgraph(&set, ch));
    EXPECT_EQ(0, comn_to_ascii(&set, ch));
    for (unsigned second = 0; second < 256; ++second) {
      const CS_BYTE next[] = {0x82, static_cast<CS_BYTE>(second)};
      EXPECT_EQ(0, comn_to_ascii(&set, next)) << second;
    }
    EXPECT_EQ(1, set.cs_ntype);
    EXPECT_EQ(0x77, set.cs_type_map[255].char_type) << "the file's own table stays";
  };
  expect("lead_bytes", "CS_SUCCEED");
}

class ShippedSets : public testing::Test {
 protected:
  const char_attrib* load(const char* charset) {
    const CS_LOCALE locale = hosts::all(context_.entry(charset, charset));
    return com_intl_charattr(&locale);
  }
  hosts::ShippedContext context_;
};

TEST_F(ShippedSets, Iso1IsTheBuiltInSetWithGraphicBits) {
  const char_attrib* set = load("iso_1");
  for (int byte = 0; byte < 256; ++byte) {
    const char_map& file = set->cs_type_map[byte];
    const char_map& built_in = ISO_1_type_map[byte];
    const bool soft_hyphen = byte == 0xAD;  // no class in the Unicode tables
    EXPECT_EQ(built_in.char_upper, file.char_upper) << byte;
    EXPECT_EQ(built_in.char_lower, file.char_lower) << byte;
    if (soft_hyphen) continue;
    EXPECT_EQ(built_in.char_lex, file.char_lex & ~COMN_LEX_CURRENCY) << byte;
    EXPECT_EQ(Com_charmap[byte].char_type, file.char_type) << byte;
  }
}

TEST_F(ShippedSets, BeginWithAsciiInEveryTable) {
  for (const char* name : {"iso_1", "utf8", "sjis"})
    EXPECT_TRUE(comnlib::is_ascii_based(context_.entry(name, name)->locchardesc)) << name;
  const char_attrib& utf8 = *load("utf8");
  using Types = std::array<char_map, COMN_CS_MAPSIZE>;
  using Bytes = std::array<CS_BYTE, COMN_CS_MAPSIZE>;
  const auto is_ascii_with = [&utf8](auto change) {
    Types types;
    Bytes widths, norms;
    std::copy_n(utf8.cs_type_map, types.size(), types.begin());
    std::copy_n(utf8.cs_width_map, widths.size(), widths.begin());
    std::copy_n(utf8.cs_norm_map, norms.size(), norms.begin());
    change(types, widths, norms);
    char_attrib set = utf8;
    set.cs_type_map = types.data();
    set.cs_width_map = widths.data();
    set.cs_norm_map = norms.data();
    return comnlib::is_ascii_based(set);
  };
  EXPECT_TRUE(is_ascii_with([](Types&, Bytes&, Bytes& norms) { norms['E'] = 'e'; }));
  EXPECT_FALSE(is_ascii_with([](Types&, Bytes&, Bytes& norms) { norms[0x7F] = 0; }));
  EXPECT_FALSE(is_ascii_with([](Types&, Bytes& widths, Bytes&) { widths['~'] = 0x12; }));
  EXPECT_FALSE(is_ascii_with([](Types& types, auto&, auto&) { types[1].char_type = 128; }));
  EXPECT_FALSE(is_ascii_with([](Types& types, auto&, auto&) { types[' '].char_type = 0; }));
  EXPECT_FALSE(is_ascii_with([](Types& types, auto&, auto&) { types['$'].char_lex = 32; }));
}

TEST_F(ShippedSets, MultibyteCharacters) {
  table::for_each_line("intl/data/characters.txt", [&](const table::Fields& row) {
    const char_attrib* set = load(row[0].c_str());
    const std::string character = table::text_of(row[1]), ascii = table::text_of(row[5]);
    const auto* ch = reinterpret_cast<const CS_BYTE*>(character.data());
    CS_BYTE upper[8] = {};
    comn_toupper(set, ch, upper);
    EXPECT_EQ(table::number(row[2]), comn_char_width(set, ch));
    EXPECT_EQ(table::number(row[3]), comn_disp_width(set, ch));
    EXPECT_EQ(row[4] == "letter", comn_isalpha(set, ch) != 0);
    EXPECT_EQ(row[4] == "digit", comn_isdigit(set, ch) != 0);
    EXPECT_EQ(static_cast<CS_BYTE>(ascii[0]), comn_to_ascii(set, ch));
    EXPECT_EQ(table::text_of(row[6]), reinterpret_cast<const char*>(upper));
  });
}

}  // namespace
