// Any bytes as the text of a message, with arguments of all kinds, into a buffer of any size. What
// is written is what a plain replacement of the places gives, cut to the room, and nothing is read
// or written beyond.
#include <string>
#include <vector>

#include "fuzz.h"
#include "intl/errmsg.h"
#include "intl/text.h"
#include "support/two_byte_set.h"

using namespace comnlib;
using fuzz::check;

namespace {

// "{n}" with n of one or two digits, for the arguments that there are.
std::string replaced(std::string text, const std::vector<std::string>& arguments) {
  for (std::size_t at = 0; (at = text.find('{', at)) != text.npos; ++at) {
    const std::size_t end = text.find('}', at);
    if (end == text.npos || end == at + 1 || end > at + 3) continue;
    const std::string digits = text.substr(at + 1, end - at - 1);
    if (digits.find_first_not_of("0123456789") != digits.npos) continue;
    const auto number = static_cast<std::size_t>(std::stoi(digits));
    if (number == 0 || number > arguments.size()) continue;
    text.replace(at, end + 1 - at, arguments[number - 1]);
    at += arguments[number - 1].size() - 1;
  }
  return text;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const TwoByteSet two_byte_set;
  fuzz::Input input(data, size);
  const unsigned room_size = 1 + input.take_upto(200);
  CsCharDesc charset{};
  charset.char_attrib = const_cast<char_attrib*>(two_byte_set.attrib());
  const bool two_bytes = input.take_upto(1) == 1;

  std::vector<std::string> words;
  std::vector<com_argument> arguments(input.take_upto(3));
  for (com_argument& argument : arguments) {
    argument.type = input.take_upto(1) == 1 ? COM_ARGUMENT_TEXT : COM_ARGUMENT_NUMBER;
    argument.number = input.take<CS_INT>();
    const auto bytes = input.take_bytes(input.take_upto(20));
    words.emplace_back(argument.type == COM_ARGUMENT_NUMBER
                           ? std::to_string(argument.number)
                           : std::string(bytes.begin(), bytes.end()));
  }
  for (std::size_t i = 0; i < arguments.size(); ++i) {
    arguments[i].text = words[i].data();
    arguments[i].length = static_cast<CS_INT>(words[i].size());
  }

  CS_CONTEXT context{};
  std::string pattern(input.text());
  for (char& byte : pattern) byte &= 0x7F;  // ASCII, which every set has
  std::vector<CS_CHAR> room(room_size);
  // Without its configuration the set has no translation: only the arguments are cut by its
  // characters.
  MessageWriter out(context, {two_bytes ? &charset : nullptr, false}, room);
  const bool good = out.add_pattern(pattern, arguments);
  const auto length = static_cast<std::size_t>(out.end_text());
  check(length < room.size() && room[length] == '\0');
  if (!good) {
    check(two_bytes && length == 0);
    for (const com_argument& argument : arguments) out.add(argument);
    check(static_cast<std::size_t>(out.end_text()) < room.size());
    return 0;
  }
  const std::string expected = replaced(pattern, words);
  check(out.cut() == (expected.size() >= room.size()));
  check(expected.substr(0, room.size() - 1) == std::string_view(room.data(), length));
  return 0;
}
