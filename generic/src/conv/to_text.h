// The text targets of every family whose values have a textual form. A Form is made of a value and
// the destination's format and converts to the text, which is ASCII; `kCut` says whether text that
// does not fit is cut or becomes "*".
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
    const Form text(value, *call.destfmt);
    return place<Form::kCut>(text.view(), call, setup.room);
  }
};

template <class Form>
struct ToVarchar : Varchar {
  static CS_RETCODE convert(const auto& value, const Conversion& call) {
    return place_varchar(Form(value, *call.destfmt).view(), call);
  }
};

template <class Form>
struct ToUnichar : Unichar {
  static CS_RETCODE convert(const auto& value, const Conversion& call) {
    const Form text(value, *call.destfmt);
    std::array<CS_UNICHAR, 96> units;
    require(text.view().size() <= units.size());
    std::ranges::copy(text.view(), units.begin());
    const CodeUnits wide(units.data(), text.view().size());
    return Form::kCut ? place_cut(wide, call) : place_text(wide, call);
  }
};

}  // namespace comnlib
