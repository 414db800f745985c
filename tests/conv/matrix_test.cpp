// What hosts change in the matrix, what no result shows of it, and where routines stop.
#include <set>

#include "comnlib/datetime.h"
#include "conv/conversion.h"
#include "conv/extending.h"

namespace {

using namespace conversion;
using Pair = std::pair<CS_INT, CS_INT>;

constexpr CS_CONV_FUNC first = comn_chartochar, second = comn_chartobin;

TEST(UserConversions, KeepTheOrderOfInstallation) {
  Context context;
  EXPECT_EQ(nullptr, com_conv_func(&context, 30, 0)) << "nothing installed";
  for (const auto& [source, destination] : {Pair{30, 0}, {30, 1}, {31, 0}, {5, 30}, {30, 40}})
    ASSERT_EQ(CS_SUCCEED, com_conv_install(&context, source, destination, first));
  ASSERT_EQ(CS_SUCCEED, com_conv_install(&context, 30, 0, second)) << "replaces";

  std::vector<Pair> walked;
  for (const CsUsrCvtFunc* spine = context.ctxusrcvttbl; spine != nullptr; spine = spine->nextsrc) {
    for (const CsUsrCvtFunc* node = spine; node != nullptr; node = node->nextdest) {
      walked.emplace_back(node->srctype, node->desttype);
      EXPECT_TRUE(node == spine || node->nextsrc == nullptr);
    }
  }
  EXPECT_EQ((std::vector<Pair>{{30, 0}, {30, 1}, {30, 40}, {31, 0}, {5, 30}}), walked);
  EXPECT_EQ(second, com_conv_func(&context, 30, 0));
  EXPECT_EQ(first, com_conv_func(&context, 5, 30));
  EXPECT_EQ(nullptr, com_conv_func(&context, 31, 1)) << "source without that destination";

  EXPECT_EQ(CS_SUCCEED, com_conv_default(&context, 30, 0));
  EXPECT_EQ(nullptr, com_conv_func(&context, 30, 0));
  EXPECT_EQ(nullptr, context.ctxusrcvttbl->cvtfunc) << "the node stays";
  EXPECT_EQ(CS_SUCCEED, com_conv_default(&context, 77, 0)) << "without a node";
}

TEST(UserConversions, ReplaceBuiltInPairsOfOneContext) {
  Context context;
  Context other;
  const CS_CONV_FUNC built_in = com_conv_func(&context, CS_INT_TYPE, CS_FLOAT_TYPE);
  ASSERT_EQ(CS_SUCCEED, com_conv_install(&context, CS_INT_TYPE, CS_FLOAT_TYPE, first));
  EXPECT_EQ(first, com_conv_func(&context, CS_INT_TYPE, CS_FLOAT_TYPE));
  EXPECT_EQ(built_in, com_conv_func(&other, CS_INT_TYPE, CS_FLOAT_TYPE));
  ASSERT_EQ(CS_SUCCEED, com_conv_install(&context, CS_INT_TYPE, CS_FLOAT_TYPE, nullptr));
  EXPECT_EQ(nullptr, com_conv_func(&context, CS_INT_TYPE, CS_FLOAT_TYPE));
  ASSERT_EQ(CS_SUCCEED, com_conv_default(&context, CS_INT_TYPE, CS_FLOAT_TYPE));
  EXPECT_EQ(built_in, com_conv_func(&context, CS_INT_TYPE, CS_FLOAT_TYPE));
  EXPECT_EQ(nullptr, context.ctxusrcvttbl);
  EXPECT_EQ(nullptr, com_conv_func(&context, -1, 0));
  EXPECT_EQ(nullptr, com_conv_func(&context, 30, -1));
}

// Twins convert alike, so that no result shows which of the two a pair has.
TEST(Matrix, KeepsTwinsApart) {
  Context context;
  const struct {
    CS_INT source, destination;
    CS_CONV_FUNC routine;
  } cells[] = {{CS_CHAR_TYPE, CS_UNICHAR_TYPE, comn_chartounichar},
               {CS_LONGCHAR_TYPE, CS_UNICHAR_TYPE, comn_chartounichar},
               {CS_TEXT_TYPE, CS_UNICHAR_TYPE, comn_texttounichar},
               {CS_BINARY_TYPE, CS_UNICHAR_TYPE, comn_bintounichar},
               {CS_LONGBINARY_TYPE, CS_UNICHAR_TYPE, comn_bintounichar},
               {CS_IMAGE_TYPE, CS_UNICHAR_TYPE, comn_imagetounichar},
               {CS_UNICHAR_TYPE, CS_CHAR_TYPE, comn_unichartochar},
               {CS_UNICHAR_TYPE, CS_LONGCHAR_TYPE, comn_unichartochar},
               {CS_UNICHAR_TYPE, CS_TEXT_TYPE, comn_unichartotext},
               {CS_UNICHAR_TYPE, CS_BINARY_TYPE, comn_unichartobin},
               {CS_UNICHAR_TYPE, CS_LONGBINARY_TYPE, comn_unichartobin},
               {CS_UNICHAR_TYPE, CS_IMAGE_TYPE, comn_unichartoimage}};
  for (const auto& [source, destination, routine] : cells)
    EXPECT_EQ(routine, com_conv_func(&context, source, destination))
        << source << " to " << destination;
}

// The example of docs/extending.md.
TEST(Extending, GivesADatatypeItsConversions) {
  Context context;
  const auto with = [&](CS_CONV_FUNC routine, CS_INT from, const auto& value, CS_INT to) {
    EXPECT_EQ(CS_SUCCEED, com_conv_install(&context, from, to, routine));
    return convert(context, from, value, format_of(to, 8));
  };
  const CS_USHORT largest = 65535;
  EXPECT_EQ(65535, with(comn_ushorttoi4, CS_USHORT_TYPE, largest, CS_INT_TYPE).as<CS_INT>());
  EXPECT_EQ("65535", with(comn_ushorttochar, CS_USHORT_TYPE, largest, CS_CHAR_TYPE).text());
  const Result clamped = with(comn_i4toushort, CS_INT_TYPE, -1, CS_USHORT_TYPE);
  EXPECT_EQ(CS_CVT_OVERFLOW, clamped.code);
  EXPECT_EQ(0, clamped.as<CS_USHORT>());
  const Result rounded = with(comn_flt8toushort, CS_FLOAT_TYPE, 2.5, CS_USHORT_TYPE);
  EXPECT_EQ(3, rounded.as<CS_USHORT>());
  EXPECT_EQ(2, rounded.length);
}

TEST(TypeLength, FixedOrTheCallers) {
  const CS_INT fixed[] = {1, 2, 4, 4, 8, 1, 8, 4, 8, 4, 35, 35, 258, 258};
  for (CS_INT code = -3; code < 40; ++code) {
    const CS_INT expected = code >= 6 && code <= 19 ? fixed[code - 6] : code == 25 ? 2 : -77;
    EXPECT_EQ(expected, comn_typelen(code, -77)) << code;
  }
}

// What a routine says that is called with these datatypes, and with a null pointer in one place.
std::string stop_of(CS_CONV_FUNC routine, CS_INT source, CS_INT destination, int missing = -1,
                    CS_INT length = 1, CS_INT room = 40) {
  Context context;
  const CS_DATAFMT from = format_of(source, length), to = format_of(destination, room);
  const double value[40] = {};
  char dest[300];
  CS_INT written = 0;
  const auto unless = [&](int at, auto* pointer) { return missing == at ? nullptr : pointer; };
  return stop_text([&] {
    routine(unless(0, &context), unless(1, &from), unless(2, &value), unless(3, &to),
            unless(4, &dest[0]), unless(5, &written));
  });
}

// Members that no cell of the matrix leads to, with their datatypes.
const struct {
  CS_CONV_FUNC routine;
  CS_INT source, destination;
  bool converts = false;
} kOutside[] = {{comn_i1toi8, CS_TINYINT_TYPE, CS_LONG_TYPE},
                {comn_i2toi8, CS_SMALLINT_TYPE, CS_LONG_TYPE},
                {comn_i4toi8, CS_INT_TYPE, CS_LONG_TYPE},
                {comn_flt4toi8, CS_REAL_TYPE, CS_LONG_TYPE},
                {comn_flt8toi8, CS_FLOAT_TYPE, CS_LONG_TYPE},
                {comn_bittoi8, CS_BIT_TYPE, CS_LONG_TYPE},
                {comn_bittomoney, CS_BIT_TYPE, CS_MONEY_TYPE},
                {comn_bittomny4, CS_BIT_TYPE, CS_MONEY4_TYPE},
                {comn_chartoi8, CS_CHAR_TYPE, CS_LONG_TYPE},
                {comn_varchartoi8, CS_VARCHAR_TYPE, CS_LONG_TYPE},
                {comn_numtoi8, CS_NUMERIC_TYPE, CS_LONG_TYPE, true},
                {comn_moneytoi8, CS_MONEY_TYPE, CS_LONG_TYPE, true},
                {comn_mny4toi8, CS_MONEY4_TYPE, CS_LONG_TYPE, true},
                {comn_datetobin, CS_DATETIME_TYPE, CS_BINARY_TYPE, true},
                {comn_date4tobin, CS_DATETIME4_TYPE, CS_BINARY_TYPE, true}};

// Each routine stops at a line of its own, whatever is wrong with its datatypes and lengths.
class StopPlaces {
 public:
  void check(CS_CONV_FUNC routine, CS_INT source, CS_INT destination) {
    SCOPED_TRACE(testing::Message() << source << " to " << destination);
    const std::string place = stop_of(routine, CS_USHORT_TYPE, destination);
    add(place);
    if (routine == comn_voidtoany) return;
    if (source == CS_UNICHAR_TYPE) {
      EXPECT_NE(std::string::npos, place.find("com_uchr.cpp")) << place;
    }
    for (const CS_INT code : {CS_INT{CS_USHORT_TYPE}, CS_INT{CS_USER_TYPE}, -1})
      EXPECT_EQ(place, stop_of(routine, source, code)) << code;
    if (has_length(source)) {
      EXPECT_EQ(place, stop_of(routine, source, destination, -1, -2));
    }
    if (has_length(destination)) {
      EXPECT_EQ(place, stop_of(routine, source, destination, -1, 1, -1));
    }
  }
  void add(const std::string& place) {
    EXPECT_TRUE(place.starts_with("\n\rassertion failed, file 'generic/src/conv/com_")) << place;
    EXPECT_TRUE(seen_.insert(place).second) << place << " is another routine's";
  }

 private:
  std::set<std::string> seen_;
};

TEST(ConversionsDeathTest, EveryRoutineStopsAtItsOwnLine) {
  Context context;
  StopPlaces places;
  std::set<CS_CONV_FUNC> seen{nullptr, comn_voidtovoid};
  for (CS_INT source = 0; source < CS_BUILTIN_TYPES; ++source) {
    for (CS_INT destination = 0; destination < CS_BUILTIN_TYPES; ++destination) {
      const CS_CONV_FUNC routine = com_conv_func(&context, source, destination);
      EXPECT_TRUE(source != CS_VOID_TYPE ||
                  routine == (destination == CS_VOID_TYPE ? comn_voidtovoid : comn_voidtoany))
          << destination;
      if (seen.insert(routine).second) places.check(routine, source, destination);
    }
  }
  EXPECT_EQ(224U, seen.size()) << "with the null pointer: no routine of the matrix is missing";
  for (const auto& [routine, source, destination, converts] : kOutside) {
    if (converts) {
      places.check(routine, source, destination);
    } else {
      places.add(stop_of(routine, CS_USHORT_TYPE, destination));
      places.add(stop_of(routine, source, destination));
      places.add(stop_of(routine, source, CS_INT_TYPE));
    }
  }
  // A routine of one datatype serves none of the others.
  const std::string place = stop_of(comn_i4toi4, CS_USHORT_TYPE, CS_INT_TYPE);
  for (CS_INT code = -1; code <= CS_USER_TYPE; ++code) {
    if (code == CS_INT_TYPE) continue;
    EXPECT_EQ(place, stop_of(comn_i4toi4, CS_INT_TYPE, code)) << code;
    EXPECT_EQ(place, stop_of(comn_i4toi4, code, CS_INT_TYPE)) << code;
  }
  for (int missing = 0; missing < 6; ++missing)
    EXPECT_TRUE(stop_of(comn_i4toflt8, CS_INT_TYPE, CS_FLOAT_TYPE, missing)
                    .starts_with("\n\rInvalid pointer 0x0"));
}

TEST(ConversionsDeathTest, BrokenPreconditionsStop) {
  EXPECT_NE("", stop_of(comn_chartoi4, CS_CHAR_TYPE, CS_INT_TYPE, -1, 0)) << "an empty text";
  EXPECT_NE("", stop_of(comn_get_datetochar_fmt, CS_INT_TYPE, CS_CHAR_TYPE));
  EXPECT_NE("", stop_of(comn_get_datetochar_fmt, CS_DATETIME_TYPE, CS_INT_TYPE));
  Context context;
  const auto aborted = testing::KilledBySignal(SIGABRT);
  for (const auto& [source, destination] : {Pair{-1, 0}, {0, -1}, {-1, 30}, {30, -1}})
    EXPECT_EXIT(com_conv_default(&context, source, destination), aborted, "com_conv.cpp");
  EXPECT_EXIT(com_conv_func(nullptr, 0, 0), aborted, "Invalid pointer.*com_conv.cpp");
  EXPECT_EXIT(com_conv_init(nullptr), aborted, "Invalid pointer");
}

}  // namespace
