// The conversions from both datetime sizes, as a host calls them.
#include "comnlib.h"
#include "conversion.h"
#include "intl/locdata.h"

namespace {

using namespace conversion;

constexpr CS_DATETIME kAfternoon{46205, 16292775};  // 4 July 2026, 15:05:09.250
constexpr CS_DATETIME4 kSmall{46205, 905};

template <class Value>
void expect(const Value& value, CS_DATAFMT to, CS_RETCODE code, CS_INT length,
            const std::string& bytes, CS_LOCALE* of_context = nullptr) {
  Context context;
  context.ctxlocale = of_context;
  const CS_INT type = sizeof value == 8 ? CS_DATETIME_TYPE : CS_DATETIME4_TYPE;
  const Result result = convert(context, type, value, to);
  EXPECT_EQ(code, result.code) << bytes;
  EXPECT_EQ(length, result.length) << bytes;
  EXPECT_EQ(bytes, result.first(bytes.size()));
  EXPECT_TRUE(result.untouched_from(bytes.size())) << bytes;
}

TEST(DateConversions, OutOfRangeAndToBytes) {
  // Rounds to a minute of the next day, which is after the last one.
  expect(CS_DATETIME{65535, 25911000}, format_of(CS_DATETIME4_TYPE), CS_CVT_OVERFLOW, 0, "");
  const CS_DATETIME never{3000000, 0};
  expect(never, format_of(CS_CHAR_TYPE, 30), CS_CVT_DOMAIN, 0, "");
  expect(never, format_of(CS_VARCHAR_TYPE), CS_CVT_DOMAIN, 258, std::string(3, '\0'));
  // To binary, where the matrix has no routine.
  Context context;
  ASSERT_EQ(CS_SUCCEED,
            com_conv_install(&context, CS_DATETIME_TYPE, CS_BINARY_TYPE, comn_datetobin));
  EXPECT_EQ(bytes_of(kAfternoon),
            convert(context, CS_DATETIME_TYPE, kAfternoon, format_of(CS_BINARY_TYPE, 8)).text());
}

// A locale that has only date information.
struct Locale : CS_LOCALE {
  Locale() : CS_LOCALE{} {
    info.conventions = comnlib::kUsEnglish;
    entry.locdateinfo = &info;
    timeptr = &entry;
  }
  Locale(const Locale&) = delete;
  CsDateInfo info{};
  CsLocCache entry{};
};

TEST(DateConversions, FollowTheDestinationsLocaleOrElseTheContexts) {
  Locale iso, odd, bare;
  iso.info.conventions.style = COM_DATESTYLE_ISO;
  odd.info.conventions.style = 9;
  bare.entry.locdateinfo = nullptr;
  const std::string iso_text = "2026-07-04T15:05:00.000";
  const struct {
    CS_LOCALE *context, *destination;
    CS_RETCODE code;
    std::string text;
    CS_INT style;
  } rows[] = {{&iso, nullptr, CS_SUCCEED, iso_text, COM_DATESTYLE_ISO},
              {&odd, &iso, CS_SUCCEED, iso_text, COM_DATESTYLE_ISO},
              {&iso, &bare, CS_SUCCEED, "Jul  4 2026  3:05PM", COM_DATESTYLE_DEFAULT},
              {&odd, nullptr, CS_CVT_STYLE, "", 9}};
  for (const auto& row : rows) {
    CS_DATAFMT from = format_of(CS_DATETIME4_TYPE), to = format_of(CS_CHAR_TYPE, 30);
    to.locale = row.destination;
    expect(kSmall, to, row.code, static_cast<CS_INT>(row.text.size()), row.text, row.context);
    Context context;
    context.ctxlocale = row.context;
    CS_INT style = 7, length = 0;
    EXPECT_EQ(row.code, comn_get_datetochar_fmt(&context, &from, &kSmall, &to, &style, &length));
    EXPECT_EQ(row.style, style) << row.text;
    EXPECT_EQ(4, length) << row.text;
  }
}

}  // namespace
