// Datetime text of any bytes under any conventions: parsing accepts valid values only, and what it
// accepts is written in every lossless style and reads itself. The value's bytes are written too,
// valid or not.
#include <array>

#include "fuzz.h"
#include "time/datetext.h"
#include "time/datetime.h"

using namespace comnlib;

namespace {

void check_round_trip(const CS_DATETIME& value, DateConventions conventions) {
  for (const CS_INT style : {COM_DATESTYLE_LONG, COM_DATESTYLE_ISO}) {
    conventions.style = style;
    std::array<char, kDateTextRoom> room;
    const FormattedDate text = format_datetime(value, conventions, room);
    fuzz::check(text.status == DateText::done);
    const ParsedDate again = parse_datetime({room.data(), text.length}, conventions);
    fuzz::check(again.status == DateText::done && com__datecmp(&again.value, &value) == 0);
  }
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  fuzz::Input input(data, size);
  DateConventions conventions = kUsEnglish;
  conventions.order = static_cast<DateOrder>(input.take_upto(5));
  const std::string_view text = input.text();

  CS_DATAFMT format{};
  format.datatype = CS_DATETIME_TYPE;
  const ParsedDate parsed = parse_datetime(text, conventions);
  if (parsed.status == DateText::done) {
    fuzz::check(com__valid_datetime(&format, &parsed.value) != 0);
    check_round_trip(parsed.value, conventions);
  }
  const auto value = input.take<CS_DATETIME>();
  if (com__valid_datetime(&format, &value) != 0) {
    check_round_trip(value, conventions);
  } else {
    std::array<char, kDateTextRoom> room;
    static_cast<void>(format_datetime(value, conventions, room));
  }
  return 0;
}
