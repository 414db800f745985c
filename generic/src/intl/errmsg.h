// Building of messages from texts with places for arguments.
#pragma once

#include <span>
#include <string_view>

#include "comnlib/message.h"
#include "intl/xlate.h"

namespace comnlib {

// A message that grows in a caller's buffer, in one character set. A text that does not fit is cut
// after its last whole character, and nothing is added after it.
class MessageWriter {
 public:
  // `room` has one byte more than the text may take, for the NUL.
  MessageWriter(CS_CONTEXT& ctx, const Encoding& encoding, std::span<CS_CHAR> room)
      : ctx_(ctx), encoding_(encoding), room_(room) {}

  // Adds text in UTF-8. False, with nothing added, when it cannot be translated.
  bool add_utf8(std::string_view text);
  // Adds text in the character set of the message.
  void add(std::string_view text);
  void add(CS_INT number);
  void add(const com_argument& argument);

  // Adds a text in UTF-8, with the arguments in the places of "{1}", "{2}" and so on.
  bool add_pattern(std::string_view pattern, std::span<const com_argument> arguments);

  bool cut() const { return cut_; }
  // Adds the NUL and returns the length before it.
  CS_INT end_text();

 private:
  CS_CONTEXT& ctx_;
  Encoding encoding_;
  std::span<CS_CHAR> room_;
  std::size_t used_ = 0;
  bool cut_ = false;
};

}  // namespace comnlib
