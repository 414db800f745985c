// Messages: the words of result codes in every language that has them, arguments in their places,
// texts cut at whole characters, and what is said where a language or the home is missing.
#include <gtest/gtest.h>

#include <string>
#include <thread>
#include <vector>

#include "comnlib/diag.h"
#include "comnlib/message.h"
#include "intl_host.h"
#include "support/host_alloc.h"

namespace {

using intl_host::all;
using intl_host::Context;
using intl_host::HomeCopy;
using intl_host::ShippedContext;

struct Told {
  CS_RETCODE code;
  std::string text;
  bool operator==(const Told&) const = default;
};

std::ostream& operator<<(std::ostream& out, const Told& told) {
  return out << told.code << " \"" << told.text << '"';
}

// A call into a buffer of `room` bytes, of which it leaves no other.
template <class Call>
Told tell(Call call, CS_INT room = 200) {
  std::string buffer(static_cast<std::size_t>(room) + 1, '#');
  CS_INT length = -1;
  const CS_RETCODE code = call(buffer.data(), room, &length);
  EXPECT_EQ('#', buffer.back());
  EXPECT_LT(length, room);
  EXPECT_EQ('\0', buffer[static_cast<std::size_t>(length)]);
  return {code, buffer.substr(0, static_cast<std::size_t>(length))};
}

class Speaker : public Context {
 public:
  // The language and character set of `locale` from here on.
  void speak(const char* name) {
    CsLocCache* entry = nullptr;
    ASSERT_EQ(CS_SUCCEED, load(name, &entry)) << name;
    locale_ = all(entry);
    context.ctxlocale = &locale_;
  }
  Told words(CS_RETCODE code, CS_INT room = 200) {
    return tell([&](auto... to) { return comn_result_text(&context, code, to...); }, room);
  }
  Told build(CS_INT severity, CS_INT layer, CS_INT number, std::vector<com_argument> arguments,
             CS_INT room = 200) {
    const auto count = static_cast<CS_INT>(arguments.size());
    return tell(
        [&](auto... to) {
          return com_build_errmsg(&context, severity, layer, number, arguments.data(), count,
                                  to...);
        },
        room);
  }

 private:
  CS_LOCALE locale_{};
};

com_argument text(const char* value) {
  return {COM_ARGUMENT_TEXT, 0, value, CS_NULLTERM};
}
com_argument number(CS_INT value) {
  return {COM_ARGUMENT_NUMBER, value, nullptr, 0};
}

const char* const kClient = "locales/message/us_english/cslib.loc";

TEST(Messages, EveryResultCodeInEveryLanguageThatHasThem) {
  const intl_host::ShippedHome home;
  Speaker speaker;
  ASSERT_EQ(CS_SUCCEED, speaker.init());
  std::string english;
  for (const std::string name :
       {"us_english", "chinese", "chinese_traditional", "french", "german", "italian", "japanese",
        "korean", "polish", "portuguese", "russian", "spanish", "turkish"}) {
    speaker.speak((name + ".utf8").c_str());
    int codes = 0;
    for (CS_RETCODE code = 1; code > -500; --code) {
      const bool is_code = *comn_result_name(code) != '\0';
      const Told told = speaker.words(code);
      EXPECT_EQ(is_code ? CS_SUCCEED : CS_FAIL, told.code) << name << ' ' << code;
      codes += is_code;
    }
    EXPECT_LT(30, codes);
    const std::string words = speaker.words(CS_CVT_DIVZERO).text;
    EXPECT_NE(english, words) << name;
    english = speaker.words(CS_CVT_DIVZERO).text;
  }
  speaker.speak("french");
  EXPECT_EQ((Told{CS_SUCCEED, "division par z\xE9ro"}), speaker.words(CS_CVT_DIVZERO));
  speaker.speak("hindi.utf8");
  EXPECT_EQ((Told{CS_SUCCEED, "division by zero"}), speaker.words(CS_CVT_DIVZERO))
      << "a language without messages";
  speaker.context.ctxlocale = nullptr;
  EXPECT_EQ((Told{CS_SUCCEED, "division by zero"}), speaker.words(CS_CVT_DIVZERO));
  EXPECT_EQ((Told{CS_FAIL, "comnlib message -999"}), speaker.words(-999));
}

TEST(Messages, CutAtWholeCharacters) {
  const intl_host::ShippedHome home;
  Speaker speaker;
  ASSERT_EQ(CS_SUCCEED, speaker.init());
  speaker.speak("japanese");
  const std::string whole = "\x83\x5B\x83\x8D\x82\xC9\x82\xE6\x82\xE9\x8F\x9C\x8E\x5A";
  for (CS_INT room = 1; room <= 16; ++room) {
    const auto length = std::min(static_cast<std::size_t>(room - 1) / 2 * 2, whole.size());
    const CS_RETCODE code = length < whole.size() ? CS_CVT_TRUNCATED : CS_SUCCEED;
    EXPECT_EQ((Told{code, whole.substr(0, length)}), speaker.words(CS_CVT_DIVZERO, room));
  }
  // An argument is in the character set already, and is cut by its characters too.
  const std::string head = "\x83\x47\x83\x89\x81\x5B: cslib 9: ", pairs = "\x82\xA0\x82\xA2";
  const com_argument argument = text(pairs.c_str());
  HomeCopy copy;
  copy.change(kClient, "[messages]\n", "[messages]\n9 = \"{1}!\"\n");
  Speaker other;
  ASSERT_EQ(CS_SUCCEED, other.init());
  other.speak("japanese");
  const auto room = static_cast<CS_INT>(head.size());
  EXPECT_EQ((Told{CS_SUCCEED, head + pairs + "!"}), other.build(3, 2, 9, {argument}, room + 6));
  EXPECT_EQ((Told{CS_CVT_TRUNCATED, head + pairs}), other.build(3, 2, 9, {argument}, room + 5));
  EXPECT_EQ((Told{CS_CVT_TRUNCATED, head + "\x82\xA0"}),
            other.build(3, 2, 9, {argument}, room + 4));
  EXPECT_EQ((Told{CS_CVT_TRUNCATED, head}), other.build(3, 2, 9, {argument}, room + 2));
}

// Only places of arguments that there are have a meaning; a translation may reorder them.
TEST(Messages, ArgumentsInTheirPlaces) {
  const struct {
    const char* pattern;
    std::vector<com_argument> arguments;
    const char* text;
  } rows[] = {{"{2} of {1}", {text("files"), number(-3)}, "-3 of files"},
              {"{1}{1}", {number(INT32_MIN)}, "-2147483648-2147483648"},
              {"{1} {2} {3}", {text(""), text("{1}")}, " {1} {3}"},
              {"{} {0} {01} { 1} {1 {1}} {100} {-1} {x}",
               {text("a")},
               "{} {0} a { 1} {1 a} {100} {-1} {x}"},
              {"100% %s %n {", {}, "100% %s %n {"},
              {"\u00e4{1}\u00f6", {text("\xFC")}, "\xE4\xFC\xF6"},
              {"{12}", std::vector<com_argument>(12, number(7)), "7"},
              {"\u0434", {}, "?"}};
  std::string file = "[messages]\n";
  CS_INT message = 10;
  for (const auto& row : rows)
    file += std::to_string(message++) + " = \"" + std::string(row.pattern) + "\"\n";
  const HomeCopy home;
  home.write(kClient, file);
  Speaker speaker;
  ASSERT_EQ(CS_SUCCEED, speaker.init());
  message = 10;
  for (const auto& row : rows) {
    const std::string text =
        "warning: cslib " + std::to_string(message) + ": " + std::string(row.text);
    EXPECT_EQ((Told{CS_SUCCEED, text}),
              speaker.build(COM_SEVERITY_WARNING, COM_LAYER_CLIENT, message++, row.arguments));
  }
  EXPECT_EQ((Told{CS_SUCCEED, "{2} of {1}"}),
            tell([&](auto... to) { return com_err_msg(speaker, COM_LAYER_CLIENT, 10, to...); }));
}

TEST(Messages, WithoutAHomeOrALanguage) {
  const scratch::Variable nowhere("TALVEN", "/nowhere");
  Speaker speaker;
  EXPECT_EQ((Told{CS_FAIL, "comnlib message -101 (CS_CVT_OVERFLOW)"}), speaker.words(-101));
  EXPECT_EQ(CS_INTL_NOFILE, speaker.init());
  const int status = speaker.context.ctxintlerr;
  EXPECT_EQ(
      (Told{CS_FAIL, "common message 3: comnlib -101: comnlib message -101 (CS_CVT_OVERFLOW)"}),
      speaker.build(COM_SEVERITY_ERROR, COM_LAYER_COMNLIB, -101, {}));
  EXPECT_EQ((Told{CS_FAIL, "comnlib "}), speaker.words(-101, 9));
  CS_CONTEXT bare{};
  EXPECT_EQ((Told{CS_FAIL, "cslib message 1"}),
            tell([&](auto... to) { return com_err_msg(&bare, COM_LAYER_CLIENT, 1, to...); }));
  EXPECT_EQ(status, speaker.context.ctxintlerr) << "as the failed call left it";

  // English is read when it is first needed, and again when that failed.
  HomeCopy home;
  Speaker german;
  ASSERT_EQ(CS_SUCCEED, german.init());
  german.speak("german");
  home.change("locales/message/german/comnlib.loc", "-108 =", "-109 =");
  home.remove(kClient);
  Speaker late;
  ASSERT_EQ(CS_SUCCEED, late.init());
  late.speak("german");
  EXPECT_EQ((Told{CS_SUCCEED, "Division durch null"}), german.words(-108));
  late.context.ctxintlerr = 5;
  EXPECT_EQ((Told{CS_FAIL, "comnlib message -108 (CS_CVT_DIVZERO)"}), late.words(-108));
  EXPECT_EQ(5, late.context.ctxintlerr);
  home.write(kClient, "[messages]\n");
  EXPECT_EQ((Told{CS_SUCCEED, "division by zero"}), late.words(-108));
}

TEST(Messages, FromEightThreads) {
  const intl_host::ShippedHome home;
  Speaker speaker;
  ASSERT_EQ(CS_SUCCEED, speaker.init());
  speaker.speak("thai");  // English texts and a table are loaded by whoever comes first
  std::vector<std::thread> threads;
  for (int i = 0; i < 8; ++i)
    threads.emplace_back([&] {
      for (CS_RETCODE code = -101; code > -108; --code)
        EXPECT_EQ(CS_SUCCEED, speaker.words(code).code);
    });
  for (std::thread& thread : threads) thread.join();
}

TEST(MessagesDeathTest, Preconditions) {
  CS_CONTEXT context{};
  char buffer[10];
  CS_INT length = 0;
  const com_argument odd{3, 0, nullptr, 0}, none{COM_ARGUMENT_TEXT, 0, nullptr, 0},
      negative{COM_ARGUMENT_TEXT, 0, "x", -2};
  const auto build = [&](CS_INT severity, CS_INT layer, const com_argument* argument, CS_INT count,
                         CS_INT room) {
    com_build_errmsg(&context, severity, layer, 1, argument, count, buffer, room, &length);
  };
  EXPECT_DEATH(build(0, 1, nullptr, 0, 10), "assertion");
  EXPECT_DEATH(build(5, 1, nullptr, 0, 10), "assertion");
  EXPECT_DEATH(build(1, 0, nullptr, 0, 10), "assertion");
  EXPECT_DEATH(build(1, 4, nullptr, 0, 10), "assertion");
  EXPECT_DEATH(build(1, 1, nullptr, -1, 10), "assertion");
  EXPECT_DEATH(build(1, 1, nullptr, 1, 10), "Invalid pointer");
  EXPECT_DEATH(build(1, 1, &odd, 1, 10), "assertion");
  EXPECT_DEATH(build(1, 1, &none, 1, 10), "Invalid pointer");
  EXPECT_DEATH(build(1, 1, &negative, 1, 10), "assertion");
  EXPECT_DEATH(build(1, 1, nullptr, 0, 0), "assertion");
}

}  // namespace
