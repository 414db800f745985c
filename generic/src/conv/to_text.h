// The text targets of every family whose values have a textual form. A Form has
//   Buffer                      the room that it may use
//   of(value, format, buffer)   the text of a value, which is ASCII, for a destination's format
//   kCut                        whether text that does not fit is cut, or becomes "*"
#pragma once

#include <algorithm>
#include <array>

#include "conv/placement.h"

namespace comnlib {

template <class Form>
struct ToCharacter : Character {
  using Setup = CharacterSetup;
  [[gnu::always_inline]] static CS_RETCODE convert(const auto& value, const Conversion& call,
                                                   const Setup& setup) {
    typename Form::Buffer buffer;
    return place<Form::kCut>(Form::of(value, *call.destfmt, buffer), call, setup.room);
  }
};

template <class Form>
struct ToVarchar : Varchar {
  static CS_RETCODE convert(const auto& value, const Conversion& call) {
    typename Form::Buffer buffer;
    const std::string_view text = Form::of(value, *call.destfmt, buffer);
    return place_varchar(text, call.dest, call.destlen);
  }
};

template <class Form>
struct ToUnichar : Unichar {
  static CS_RETCODE convert(const auto& value, const Conversion& call) {
    typename Form::Buffer buffer;
    const std::string_view text = Form::of(value, *call.destfmt, buffer);
    std::array<CS_UNICHAR, 96> units;
    require(text.size() <= units.size());
    std::ranges::copy(text, units.begin());
    return place_in_general<Form::kCut>(CodeUnits(units.data(), text.size()), call);
  }
};

}  // namespace comnlib
