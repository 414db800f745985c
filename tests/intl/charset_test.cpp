// The loader of character sets: every refusal by a small broken file, and the shipped sets against
// what is known of them.
#include <gtest/gtest.h>

#include <cstdio>
#include <functional>
#include <string>
#include <vector>

#include "chars/com_attr.h"
#include "chars/iso_1.h"
#include "comnlib/memory.h"
#include "intl/charset.h"
#include "intl/convcfg.h"
#include "intl_host.h"
#include "support/host_alloc.h"

namespace {

using namespace std::string_literals;

std::string definition(const std::string& text) {
  return "definition = " + text + "\n";
}

const std::string kTypes(2 * 1028, '0'), kSounds(2 * 257, '1');

std::string class1(const std::string& images, const std::string& keys = "image_size = 1285\n") {
  return "[other]\nx = y\n[charset]\nclass = 1\nname = x\n" + keys + images;
}

// The sizes of the maps of widths, normal forms, types and sounds, and what the header counts.
struct Sizes {
  CS_UINT width, norm, type, soundex;
  CS_BYTE ntype, nnorm, nsoundex;
};

std::string header(const Sizes& of) {
  char text[100];
  std::snprintf(text, sizeof text,
                "0909010202%02x%02x%02X00000000FFFFFFFF%08xFFFFFFFF%08XFFFFFFFF%08xFFFFFFFF%08X",
                of.ntype, of.nnorm, of.nsoundex, of.width, of.norm, of.type, of.soundex);
  return text;
}

std::string class2(const std::vector<std::string>& image, const std::string& size = "1324") {
  std::string text = "[charset]\nstatus = 258\nclass = 2\nimage_size = " + size + "\n";
  for (const std::string& part : image)
    if (!part.empty()) text += definition(part);
  return text;
}

std::string zeros(std::size_t bytes) {
  return std::string(2 * bytes, '0');
}

// A class 2 file whose maps are as large as its header says.
std::string sized(const Sizes& of) {
  return class2({header(of), zeros(of.width), zeros(of.norm), zeros(of.type), zeros(of.soundex)});
}

// Reads a charset.loc alone, as the first step of a load does.
CS_RETCODE read(const std::string& text,
                const std::function<void(const char_attrib&)>& inspect = nullptr) {
  const scratch::Directory directory;
  directory.write("charsets/x/charset.loc", text);
  const scratch::Variable home("TALVEN", directory.path().c_str());
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
  if (inspect && result == CS_SUCCEED) inspect(*desc->char_attrib);
  EXPECT_EQ(CS_SUCCEED, comn__chardesc_drop(desc));
  EXPECT_EQ(0, intl_host::files_open);
  EXPECT_EQ(0U, host_alloc::live_blocks());
  return result;
}

TEST(CharsetFile, EveryRefusal) {
  const std::string types = definition(kTypes), sounds = definition(kSounds), good = types + sounds;
  const std::string head = header({0, 0, 1024, 256, 1, 0, 1}), name30(30, 'n');
  const std::string size = "\nimage_size = 1285\n";
  const std::string whole[] = {
      class1(good), class1(good, "id = 0XFF\nimage_size = 0x505\n"),
      class1(good, "name = " + name30 + size),
      // Split in mid-byte; only a first value counts; other keys behind.
      class1(definition(kTypes.substr(0, 99)) + definition("") + definition(kTypes.substr(99)) +
             sounds),
      class1(definition(kTypes + ", 00") + sounds), class1(good + "x = y\n"),
      sized({0, 0, 1024, 256, 1, 0, 1}), sized({256, 512, 2048, 256, 2, 2, 1}),
      class2({head.substr(0, 7), head.substr(7), zeros(1024), zeros(256)})};
  for (const std::string& text : whole) EXPECT_EQ(CS_SUCCEED, read(text)) << text;
  for (const std::string& keys :
       {"name = x" + name30 + size, "image_size = 1286\n"s, ""s, "class = 3" + size,
        "class = 0" + size, "id = 256" + size, "status = -1" + size, "status = 65536" + size,
        "image = 1" + size})
    EXPECT_EQ(CS_FAIL, read(class1(good, keys))) << keys;
  const std::string refused[] = {
      "[charset]" + size + good, "[charsets]\n", class1(""),
      // A definition across two maps, too long, too short, interrupted, and no digit.
      class1(definition(kTypes + kSounds)), class1(good + definition("00")),
      class1(types + definition(kSounds + "0")), class1(types + definition(kSounds.substr(1))),
      class1(types + "x = " + kSounds + "\n"), class1(definition("g" + kTypes.substr(1)) + sounds),
      class2({head, zeros(1024), zeros(256)}, "1323"),
      class2({header({0, 0xFFFFFF00, 1024, 256, 1, 255, 1}), zeros(256), zeros(1024), zeros(256)})};
  for (const std::string& text : refused) EXPECT_EQ(CS_FAIL, read(text)) << text;
  for (const Sizes& sizes : {Sizes{0, 0, 0, 256, 0, 0, 1},
                             {0, 0, 1024, 256, 2, 0, 1},
                             {0, 0, 1024, 256, 1, 0, 2},
                             {0, 0, 1024, 0, 1, 0, 0},
                             {16, 0, 1024, 256, 1, 0, 1}})
    EXPECT_EQ(CS_FAIL, read(sized(sizes))) << header(sizes);
  for (const std::string& text :
       {class1(good, "name = \"x" + size), class1(good + "x\n"), class1(types + "definition\n")})
    EXPECT_EQ(CS_INTL_LIBERR, read(text)) << text;
  intl_host::close_fails = true;
  EXPECT_EQ(CS_INTL_LIBERR, read(class1(good)));
  intl_host::close_fails = false;
}

// A first byte may name a table that the file does not have: it is as good as empty.
TEST(CharsetFile, TablesThatTheFileLacks) {
  std::string lead = std::string(2048, '7');
  lead.replace(8 * 0x81, 8, "FF0000FF");
  std::string widths = std::string(512, '1'), norms = std::string(512, '2');
  widths.replace(2 * 0x81, 2, "12");
  norms.replace(2 * 0x81, 2, "FF");
  const auto inspect = [](const char_attrib& set) {
    const CS_BYTE ch[] = {0x81, 0xFF};
    EXPECT_EQ(0, comn_isgraph(&set, ch));
    EXPECT_EQ(0, comn_to_ascii(&set, ch));
    EXPECT_EQ(1, set.cs_ntype);
    EXPECT_EQ(0x77, set.cs_type_map[255].char_type) << "the file's own table stays";
  };
  EXPECT_EQ(CS_SUCCEED,
            read(class1(definition(lead + "00000000") + definition(kSounds)), [](const auto& set) {
              const CS_BYTE ch[] = {0x81, 0xFF};
              EXPECT_EQ(0, comn_isalpha(&set, ch));
            }));
  const std::string text =
      class2({header({256, 256, 1024, 256, 1, 1, 1}), widths, norms, lead, zeros(256)});
  EXPECT_EQ(CS_SUCCEED, read(text, inspect));
}

class ShippedSets : public testing::Test {
 protected:
  const char_attrib* load(const char* charset) {
    CsLocCache* entry = nullptr;
    EXPECT_EQ(CS_SUCCEED, context_.load(charset, charset, "us_english", "binary", &entry))
        << charset;
    const CS_LOCALE locale = intl_host::all(entry);
    return com_intl_charattr(&locale);
  }
  intl_host::ShippedContext context_;
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
  for (const char* name : {"iso_1", "utf8", "sjis"}) {
    CsLocCache* entry = nullptr;
    ASSERT_EQ(CS_SUCCEED, context_.load(name, name, "us_english", "binary", &entry));
    EXPECT_TRUE(comnlib::is_ascii_based(entry->locchardesc)) << name;
  }
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
  const struct {
    const char* set;
    std::string_view character;
    int width, columns, letter, digit, ascii;
    std::string_view upper;
  } rows[] = {{"utf8", "a", 1, 1, 1, 0, 'a', "A"},
              {"utf8", "\u00e9", 2, 1, 1, 0, 0, "\u00c9"},
              {"utf8", "\u0431", 2, 1, 1, 0, 0, "\u0411"},
              {"utf8", "\u00a0", 2, 1, 0, 0, ' ', "\u00a0"},
              {"utf8", "\u65e5", 3, 2, 1, 0, 0, "\u65e5"},
              {"utf8", "\U0001F600", 4, 2, 1, 0, 0, "\U0001F600"},
              {"sjis", "\x82\x81", 2, 2, 1, 0, 'a', "\x82\x60"},
              {"sjis", "\x82\x4f", 2, 2, 0, 1, '0', "\x82\x4f"},
              {"sjis", "\x93\xfa", 2, 2, 1, 0, 0, "\x93\xfa"},
              {"sjis", "\xb1", 1, 1, 1, 0, 0, "\xb1"},
              {"cp936", "\xa3\xb9", 2, 2, 0, 1, '9', "\xa3\xb9"},
              {"koi8", "\xc1", 1, 1, 1, 0, 0xc1, "\xe1"}};
  for (const auto& row : rows) {
    SCOPED_TRACE(std::string(row.set) + ' ' + std::string(row.character));
    const char_attrib* set = load(row.set);
    const auto* ch = reinterpret_cast<const CS_BYTE*>(row.character.data());
    CS_BYTE upper[8] = {};
    comn_toupper(set, ch, upper);
    EXPECT_EQ(row.width, comn_char_width(set, ch));
    EXPECT_EQ(row.columns, comn_disp_width(set, ch));
    EXPECT_EQ(row.letter, comn_isalpha(set, ch) != 0);
    EXPECT_EQ(row.digit, comn_isdigit(set, ch) != 0);
    EXPECT_EQ(row.ascii, comn_to_ascii(set, ch));
    EXPECT_STREQ(std::string(row.upper).c_str(), reinterpret_cast<const char*>(upper));
  }
}

}  // namespace
