// The matrix against a table of routine names, resolved in the shared object, what hosts change,
// and where routines stop.
#include <dlfcn.h>

#include <map>
#include <set>
#include <sstream>

#include "comnlib/datetime.h"
#include "conv/conversion.h"

namespace {

using namespace conversion;
using Pair = std::pair<CS_INT, CS_INT>;

// Sources with the name before "to", and the names behind it: for destinations 0 2 4, 1 3 5, 6 to
// 15 one by one, 16 17, 18 and so on. "-" is a pair without a routine.
const struct {
  std::vector<std::pair<CS_INT, const char*>> sources;
  const char* to;
} kRows[] = {
    // clang-format off
    {{{0, "char"}, {2, "char"}, {4, "char"}, {18, "varchar"}},
     "char bin i1 i2 i4 flt4 flt8 bit datetime date4 money mny4 num varchar varbin - char char - - unichar"},
    {{{1, "bin"}, {3, "bin"}, {5, "bin"}, {19, "varbin"}},
     "char bin i1 i2 i4 flt4 flt8 bit datetime date4 money mny4 num varchar varbin - - - - - unichar"},
    {{{6, "i1"}, {7, "i2"}, {8, "i4"}, {9, "flt4"}, {10, "flt8"}, {14, "money"}, {15, "mny4"}, {16, "num"}, {17, "num"}},
     "char bin i1 i2 i4 flt4 flt8 bit - - money mny4 num varchar varbin - - - - - unichar"},
    {{{11, "bit"}}, "char bin i1 i2 i4 flt4 flt8 bit - - - - num varchar varbin - - - - - unichar"},
    {{{12, "date"}, {13, "date4"}}, "char - - - - - - - date date4 - - - varchar varbin - - - - - unichar"},
    {{{21, "char"}}, "char - - - - - - - - - - - - varchar - - char - - - -"},
    {{{22, "char"}}, "char - - - - - - - - - - - - varchar - - - char - - -"},
    {{{23, "void"}}, "any any any any any any any any any any any any any any any any any any void any any"},
    {{{25, "unichar"}}, "char bin i1 i2 i4 flt4 flt8 bit datetime date4 money mny4 num varchar varbin i8 - - - - unichar"},
    // clang-format on
};

const std::map<Pair, const char*> kExceptions = {{{12, 25}, "comn_datetimetounichar"},
                                                 {{4, 25}, "comn_texttounichar"},
                                                 {{5, 25}, "comn_imagetounichar"},
                                                 {{25, 4}, "comn_unichartotext"},
                                                 {{25, 5}, "comn_unichartoimage"}};

std::map<Pair, std::string> names_by_pair() {
  std::map<Pair, std::string> names;
  for (const auto& row : kRows) {
    std::istringstream cells(row.to);
    std::string cell;
    for (CS_INT column = 0; cells >> cell; ++column) {
      if (cell == "-") continue;
      const std::vector<CS_INT> destinations =
          column == 0    ? std::vector{0, 2, 4}
          : column == 1  ? std::vector{1, 3, 5}
          : column == 12 ? std::vector{16, 17}
                         : std::vector{column < 12 ? column + 4 : column + 5};
      for (const auto& [source, from] : row.sources)
        for (const CS_INT destination : destinations)
          names[{source, destination}] = std::string("comn_") + from + "to" + cell;
    }
  }
  for (const auto& [pair, name] : kExceptions) names[pair] = name;
  return names;
}

TEST(Matrix, LeadsToTheNamedRoutines) {
  void* library = dlopen(COMNLIB_SHARED_OBJECT, RTLD_NOW | RTLD_LOCAL);
  ASSERT_NE(nullptr, library) << dlerror();
  const auto call = [library](const char* name) {
    return reinterpret_cast<CS_RETCODE (*)(CS_CONTEXT*)>(dlsym(library, name));
  };
  const auto look_up = reinterpret_cast<decltype(&com_conv_func)>(dlsym(library, "com_conv_func"));
  const auto names = names_by_pair();
  CS_CONTEXT context{};
  ASSERT_EQ(CS_SUCCEED, call("com_conv_init")(&context));
  for (const auto& [pair, name] : names)
    EXPECT_NE(nullptr, dlsym(library, name.c_str())) << name << " is not exported";
  for (CS_INT source = 0; source < CS_BUILTIN_TYPES; ++source) {
    for (CS_INT destination = 0; destination < CS_BUILTIN_TYPES; ++destination) {
      const auto name = names.find({source, destination});
      const void* expected = name == names.end() ? nullptr : dlsym(library, name->second.c_str());
      EXPECT_EQ(expected, reinterpret_cast<void*>(look_up(&context, source, destination)))
          << source << " to " << destination;
    }
  }
  call("com_conv_free")(&context);
}

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

TEST(ConversionsDeathTest, EveryRoutineKnowsItsDatatypes) {
  Context context;
  const std::vector<CS_INT> one_of_each{-1, 0, 1, 6, 7, 8, 9, 10, 11, 14, 16, 18, 19, 24, 25};
  const std::string place = "\n\rassertion failed, file 'generic/src/conv/com_";
  std::set<CS_CONV_FUNC> seen{comn_voidtovoid};
  for (CS_INT source = 0; source < CS_BUILTIN_TYPES; ++source) {
    for (CS_INT destination = 0; destination < CS_BUILTIN_TYPES; ++destination) {
      const CS_CONV_FUNC routine = com_conv_func(&context, source, destination);
      if (routine == nullptr || !seen.insert(routine).second) continue;
      EXPECT_TRUE(stop_of(routine, CS_USHORT_TYPE, destination).starts_with(place)) << source;
      if (source == CS_VOID_TYPE) continue;
      for (const CS_INT code :
           source == CS_INT_TYPE ? one_of_each : std::vector<CS_INT>{CS_USHORT_TYPE}) {
        if (com_conv_func(&context, source, code) == routine) continue;
        EXPECT_TRUE(stop_of(routine, source, code).starts_with(place))
            << source << " to " << destination << " called for " << code;
      }
    }
  }
  for (int missing = 0; missing < 6; ++missing)
    EXPECT_TRUE(stop_of(comn_i4toflt8, 8, 10, missing).starts_with("\n\rInvalid pointer 0x0"));
}

// The members into CS_LONG stop at one line for its code and at another for any other.
TEST(ConversionsDeathTest, LongMembersStopAtTwoLines) {
  const std::pair<CS_CONV_FUNC, CS_INT> members[] = {
      {comn_i1toi8, 6},    {comn_i2toi8, 7},   {comn_i4toi8, 8},   {comn_flt4toi8, 9},
      {comn_flt8toi8, 10}, {comn_bittoi8, 11}, {comn_chartoi8, 0}, {comn_varchartoi8, 18}};
  for (const auto& [member, source] : members) {
    const std::string to_long = stop_of(member, source, CS_LONG_TYPE);
    const std::string to_other = stop_of(member, source, CS_INT_TYPE);
    EXPECT_TRUE(to_long != to_other && to_long != "" && to_other != "") << source;
    EXPECT_NE(to_other, stop_of(member, CS_USHORT_TYPE, CS_INT_TYPE)) << source;
  }
}

TEST(ConversionsDeathTest, BrokenPreconditionsStop) {
  for (const CS_CONV_FUNC routine : {comn_chartoi4, comn_bintoi4, comn_unichartoi4}) {
    const CS_INT source = routine == comn_chartoi4 ? 0 : routine == comn_bintoi4 ? 1 : 25;
    EXPECT_NE("", stop_of(routine, source, CS_INT_TYPE, -1, -2)) << source;
  }
  EXPECT_NE("", stop_of(comn_chartoi4, CS_CHAR_TYPE, CS_INT_TYPE, -1, 0)) << "an empty text";
  EXPECT_NE("", stop_of(comn_get_datetochar_fmt, CS_INT_TYPE, CS_CHAR_TYPE));
  EXPECT_NE("", stop_of(comn_get_datetochar_fmt, CS_DATETIME_TYPE, CS_INT_TYPE));
  Context context;
  for (const CS_INT to : {CS_CHAR_TYPE, CS_BINARY_TYPE, CS_UNICHAR_TYPE})
    for (const CS_INT from :
         {CS_CHAR_TYPE, CS_BINARY_TYPE, CS_INT_TYPE, CS_BIT_TYPE, CS_MONEY_TYPE})
      EXPECT_NE("", stop_of(com_conv_func(&context, from, to), from, to, -1, 1, -1))
          << from << " to " << to << ", negative room";
  const auto aborted = testing::KilledBySignal(SIGABRT);
  for (const auto& [source, destination] : {Pair{-1, 0}, {0, -1}, {-1, 30}, {30, -1}})
    EXPECT_EXIT(com_conv_default(&context, source, destination), aborted, "com_conv.cpp");
  EXPECT_EXIT(com_conv_func(nullptr, 0, 0), aborted, "Invalid pointer.*com_conv.cpp");
  EXPECT_EXIT(com_conv_init(nullptr), aborted, "Invalid pointer");
}

}  // namespace
