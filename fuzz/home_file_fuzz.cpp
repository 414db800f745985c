// Any bytes as a file of the localization home; the first byte says as which. The file is refused,
// or every question that it answers is answered from within it, and nothing is left behind. The
// companion library's openers are replaced: every file that is opened holds the input.
#include <algorithm>
#include <array>
#include <cstring>
#include <new>
#include <string>
#include <string_view>

#include "comnlib/memory.h"
#include "comnlib/thread.h"
#include "fuzz.h"
#include "intl.h"
#include "intl/charset.h"
#include "intl/com_intl.h"
#include "intl/convcfg.h"
#include "intl/convtable.h"
#include "intl/errmsg.h"
#include "intl/locdata.h"
#include "intl/message.h"
#include "intl/objectid.h"
#include "intl/sortorder.h"
#include "reader.h"

using namespace comnlib;
using fuzz::check;

namespace {

std::span<const std::uint8_t> file;
int open_files = 0;

struct Host {
  Host() {
    check(comn_create_mutex(&globals.cmg_mtx) == CS_SUCCEED);
    context.ctxglobals = &globals;
    entry.charname = entry.sortname = entry.langname = name;
    entry.charnamelen = entry.sortnamelen = entry.langnamelen = 1;
  }
  ~Host() {
    check(com_intl_loccache_drop(&context) == CS_SUCCEED);
    check(com_intl_chardesc_drop(&context) == CS_SUCCEED);
    comn_delete_mutex(globals.cmg_mtx);
    check(open_files == 0);
  }
  Host(const Host&) = delete;
  Host& operator=(const Host&) = delete;

  CS_CONTEXT context{};
  CsCtxGlobals globals{};
  CsLocCache entry{};
  char name[2] = "x";
};

// Every pair of bytes would take milliseconds: each file is asked about some, which its size
// shifts.
template <class Ask>
void for_some_pairs(Ask ask) {
  constexpr unsigned kStep = 61;
  for (auto pair = static_cast<unsigned>(file.size() % kStep); pair <= 0xFFFF; pair += kStep)
    ask(pair);
}

void character_set(Host& host) {
  auto* desc = static_cast<CsCharDesc*>(comn_calloc(1, sizeof(CsCharDesc)));
  host.entry.locchardesc = desc;
  if (comn__get_charset(&host.context, &host.entry, nullptr, 0) == CS_SUCCEED) {
    const char_attrib& set = *desc->char_attrib;
    for_some_pairs([&set](unsigned pair) {
      const CS_BYTE ch[16] = {static_cast<CS_BYTE>(pair >> 8), static_cast<CS_BYTE>(pair)};
      CS_BYTE out[16];
      comn_toupper(&set, ch, out);
      static_cast<void>(comn_isalpha(&set, ch));
      check(comn_char_width(&set, ch) <= 0x0F);
      check(comn_to_ascii(&set, ch) <= 255);
      CS_INT whole = 0, partial = 0, excess = 0, count = 0;
      comn_whole_char(&set, ch, ch + 3, &whole, &partial, &excess, &count);
      check(whole + partial == 3);
    });
  }
  check(comn__chardesc_drop(desc) == CS_SUCCEED);
}

void locales_table(Host& host) {
  // A value of 256 bytes or more stops the process, as it must; no line that long is looked at.
  std::size_t length = 0;
  for (const std::uint8_t byte : file) {
    length = byte == '\n' ? 0 : length + 1;
    if (length >= COM_LOC_NAMESIZE) return;
  }
  CsLocNames names;
  const CS_RETCODE result = comn__intl_lookup(&host.context, "x", 1, &names, nullptr, 0);
  check((result == CS_INTL_LIBERR) == (host.context.ctxintlerr < 0));
  if (result != CS_SUCCEED) return;
  check(names.sortorderlen > 0);
  check(std::strlen(names.charset) == static_cast<std::size_t>(names.charsetlen));
  check(std::strlen(names.money) == static_cast<std::size_t>(names.moneylen));
}

// What a byte sequence converts to leads back to one that converts to the same.
void conversion_table(Host& host) {
  const ConvTable* table = nullptr;
  if (load_table(host.context, "x", "x", table, {nullptr, 0}) != CS_SUCCEED) return;
  const auto leads_back = [&table](CS_USHORT unit) {
    check(unit < 0xD800 || unit > 0xDFFF);
    check(unit == kNoCharacter || table->reverse.at(unit) != kNoCharacter);
  };
  std::ranges::for_each(table->single, leads_back);
  for_some_pairs([&](unsigned pair) { leads_back(table->pairs.at(static_cast<CS_USHORT>(pair))); });
  for (char32_t code = 0x80; code < 0x110000; code += 61) {
    const CS_UINT value = encode_longer(*table, code);
    if (value == 0) continue;
    std::array<CS_BYTE, 4> bytes;
    const std::size_t length = value > 0xFFFFFF ? 4 : 3;
    for (std::size_t i = 0; i < length; ++i)
      bytes[i] = static_cast<CS_BYTE>(value >> 8 * (length - 1 - i));
    check(decode_longer(*table, std::span(bytes).first(length)).bytes == length);
  }
}

void conversion_configuration(Host& host) {
  CsConvConfig* config = nullptr;
  if (load_conv_config(host.context, "x", config, {nullptr, 0}) != CS_SUCCEED) return;
  check(config->replacement_length >= 0 && config->replacement_length <= 4);
  static_cast<void>(converts_to(*config, "utf8"));
  drop_conv_config(config);
}

void sort_order(Host& host) {
  if (comn__intl_load_sortorder(&host.context, {}, &host.entry, nullptr, 0) != CS_SUCCEED) return;
  const auto half = file.size() / 2;
  const auto left = file.first(half), right = file.subspan(half);
  const int order = compare_text(*host.entry.locsortorder, nullptr, left, right);
  const int back = compare_text(*host.entry.locsortorder, nullptr, right, left);
  check((order > 0) == (back < 0) && (order == 0) == (back == 0));
}

void conventions(Host& host) {
  if (comn__read_common(&host.context, &host.entry, nullptr, 0) != CS_SUCCEED) return;
  check(host.entry.locnuminfo->digits.group_size >= 0);
  check(host.entry.locmoninfo->digits.decimal_point.size() <= file.size());
  const auto& months = host.entry.locdateinfo->conventions.months;
  check(std::ranges::all_of(months, [](auto month) { return month.size() <= file.size(); }));
}

void messages(Host& host) {
  if (comn__intl_load_message(&host.context, {}, &host.entry, nullptr, 0) != CS_SUCCEED) return;
  for (CS_INT number = 0; number < 10; ++number) {
    const CS_CHAR* text = message_text(*host.entry.locmessage, MessageFile::kCommon, number);
    check(text == nullptr || std::strlen(text) <= file.size());
    const com_argument argument{COM_ARGUMENT_NUMBER, number, nullptr, 0};
    std::array<CS_CHAR, 20> room{};
    MessageWriter out(host.context, {nullptr, false}, room);
    if (text != nullptr) static_cast<void>(out.add_pattern(text, {&argument, 1}));
    check(static_cast<std::size_t>(out.end_text()) < room.size());
  }
}

void object_ids(Host& host) {
  CsOid first{}, again{};
  const CS_RETCODE result = global_id(host.context, "charset", "x", first, {nullptr, 0});
  check(global_id(host.context, "charset", "x", again, {nullptr, 0}) == result);
  check(std::memcmp(&first, &again, sizeof first) == 0);
}

// Any walk through the sections ends, and every piece lies in the text with its NUL. Four bytes of
// choices in front: which entries' values are read, and which sections' entries.
void sections(Host&) {
  const std::string_view bytes(reinterpret_cast<const char*>(file.data()), file.size());
  std::string text(bytes.substr(std::min<std::size_t>(4, bytes.size())));
  companion::SectionedText walked(text.data(), text.size());
  std::size_t steps = 0;
  const auto skips = [&] {
    return bytes.size() > 4 && (bytes[steps / 8 % 4] >> steps % 8 & 1) != 0;
  };
  const auto next = [&](auto step) {
    CS_INT status = 0;
    char words[100];
    const char* piece = (walked.*step)(status);
    check(++steps <= 2 * text.size() + 6);
    check(piece == nullptr || (status == 0 && piece >= text.data() &&
                               std::strlen(piece) <= text.size() - (piece - text.data())));
    check(status == 0 || (status < 0 && intl_errstr(status, words, sizeof words) > 0 &&
                          std::strcmp(words, "unknown status") != 0));
    return piece != nullptr || status < 0;
  };
  using companion::SectionedText;
  while (next(&SectionedText::next_section))
    while (!skips() && next(&SectionedText::next_entry))
      while (!skips() && next(&SectionedText::next_value)) {
      }
}

constexpr std::array kReaders = {
    character_set, locales_table, conversion_table, conversion_configuration,
    sort_order,    conventions,   messages,         object_ids,
    sections};

}  // namespace

CS_INT intl_home(CS_CHAR* buffer, CS_INT buflen) {
  check(buflen > 1);
  std::memcpy(buffer, "/", 2);
  return 1;
}

CS_INT intl_open(const CS_CHAR*, INTL_HANDLE* handle) {
  using namespace comnlib::companion;
  auto* block = static_cast<char*>(comn_malloc(sizeof(SectionedText) + file.size() + 1));
  char* text = block + sizeof(SectionedText);
  if (!file.empty()) std::memcpy(text, file.data(), file.size());
  *handle = new (block) SectionedText(text, file.size());
  ++open_files;
  return 0;
}

CS_INT intl_close(INTL_HANDLE handle) {
  comnlib::companion::close_sectioned(static_cast<comnlib::companion::SectionedText*>(handle));
  --open_files;
  return 0;
}

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size == 0) return 0;
  file = {data + 1, size - 1};
  Host host;
  kReaders[(*data - unsigned{'0'}) % kReaders.size()](host);
  return 0;
}
