// Messages: the words of result codes in every language that has them, arguments in their places,
// texts cut at whole characters, and what is said where a language or the home is missing.
#include <gtest/gtest.h>

#include <set>
#include <string>
#include <vector>

#include "comnlib/diag.h"
#include "comnlib/message.h"
#include "intl/message.h"
#include "support/hosts.h"
#include "support/stops.h"

namespace {

using hosts::HomeCopy;

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

class Speaker : public hosts::LocaleContext {
 public:
  // Speaks the language of a locale, in its character set.
  explicit Speaker(const char* name = nullptr) {
    if (name == nullptr) return;
    EXPECT_EQ(CS_SUCCEED, init());
    speak(name);
  }
  void speak(const std::string& name) {
    locale_ = hosts::all(entry(name));
    context.ctxlocale = &locale_;
  }
  const CS_CHAR* own_text(comnlib::MessageFile file, CS_INT number) {
    return comnlib::message_text(*locale_.messageptr->locmessage, file, number);
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

// Every result code that has a name has a message, and every message's number a name.
TEST(Messages, EveryResultCodeInEveryLanguageThatHasThem) {
  const hosts::ShippedHome home;
  Speaker speaker("us_english");
  std::set<std::string> divisions;
  for (const std::string language :
       {"us_english", "chinese", "chinese_traditional", "french", "german", "italian", "japanese",
        "korean", "polish", "portuguese", "russian", "spanish", "turkish"}) {
    SCOPED_TRACE(language);
    speaker.speak(language + ".utf8");
    std::set<std::string> texts;
    std::size_t codes = 0;
    for (CS_RETCODE code = -2000; code < 2000; ++code) {
      const CS_CHAR* text = speaker.own_text(comnlib::MessageFile::kCommonServices, code);
      const bool is_code = *comn_result_name(code) != '\0';
      EXPECT_EQ(is_code, text != nullptr) << code;
      EXPECT_EQ(is_code ? CS_SUCCEED : CS_FAIL, speaker.words(code).code) << code;
      if (text == nullptr) continue;
      ++codes;
      EXPECT_EQ(text, speaker.words(code).text) << code;
      texts.insert(text);
    }
    EXPECT_LT(30U, codes);
    EXPECT_EQ(codes, texts.size()) << "no two codes have one text";
    for (CS_INT severity = 1; severity <= 4; ++severity)
      EXPECT_NE(nullptr, speaker.own_text(comnlib::MessageFile::kCommon, severity));
    EXPECT_TRUE(divisions.insert(speaker.words(CS_CVT_DIVZERO).text).second);
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
  const HomeCopy home;
  home.change(kClient, "[messages]\n", "[messages]\n9 = \"{1}!\"\n");
  Speaker speaker("japanese");
  const std::string whole = "\x83\x5B\x83\x8D\x82\xC9\x82\xE6\x82\xE9\x8F\x9C\x8E\x5A";
  for (CS_INT room = 1; room <= 16; ++room) {
    const auto length = std::min(static_cast<std::size_t>(room - 1) / 2 * 2, whole.size());
    const CS_RETCODE code = length < whole.size() ? CS_CVT_TRUNCATED : CS_SUCCEED;
    EXPECT_EQ((Told{code, whole.substr(0, length)}), speaker.words(CS_CVT_DIVZERO, room));
  }
  // An argument is in the character set already, and is cut by its characters too.
  const std::string head = "\x83\x47\x83\x89\x81\x5B: cslib 9: ", pairs = "\x82\xA0\x82\xA2";
  const com_argument argument = text(pairs.c_str());
  const std::tuple<CS_INT, CS_RETCODE, std::string> rows[] = {{6, CS_SUCCEED, pairs + "!"},
                                                              {5, CS_CVT_TRUNCATED, pairs},
                                                              {4, CS_CVT_TRUNCATED, "\x82\xA0"},
                                                              {2, CS_CVT_TRUNCATED, ""}};
  for (const auto& [more, code, words] : rows)
    EXPECT_EQ((Told{code, head + words}),
              speaker.build(3, 2, 9, {argument}, static_cast<CS_INT>(head.size()) + more));
}

// Only places of arguments that there are have a meaning; a translation may reorder them. A text
// that is empty or not UTF-8 is as good as none.
TEST(Messages, ArgumentsInTheirPlaces) {
  const std::tuple<std::string, std::vector<com_argument>, std::string> rows[] = {
      {"{2} of {1}", {text("files"), number(-3)}, "-3 of files"},
      {"{1}{1}", {number(INT32_MIN)}, "-2147483648-2147483648"},
      {"{1} {2} {3}", {text(""), text("{1}")}, " {1} {3}"},
      {"{} {0} {01} {001} { 1} {1 {1}} {100} {x}",
       {number(5)},
       "{} {0} 5 {001} { 1} {1 5} {100} {x}"},
      {"100% %s %n {-1} {", {number(5)}, "100% %s %n {-1} {"},
      {"\u00e4{1}\u00f6", {text("\xFC")}, "\xE4\xFC\xF6"},
      {"{12}", std::vector<com_argument>(12, number(7)), "7"},
      {"a{1}\xFF", {number(5)}, "cslib message 17"},
      {"\u0434", {}, "?"},
      {"", {}, "cslib message 19"}};
  std::string file = "[messages]\n";
  CS_INT message = 10;
  for (const auto& row : rows)
    file += std::to_string(message++) + " = \"" + std::get<0>(row) + "\"\n";
  const HomeCopy home;
  home.write(kClient, file);
  Speaker speaker("us_english");
  message = 10;
  for (const auto& [pattern, arguments, words] : rows) {
    const CS_RETCODE code = words.starts_with("cslib") ? CS_FAIL : CS_SUCCEED;
    EXPECT_EQ((Told{code, "warning: cslib " + std::to_string(message) + ": " + words}),
              speaker.build(COM_SEVERITY_WARNING, COM_LAYER_CLIENT, message, arguments));
    ++message;
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
  Speaker german("german");
  home.change("locales/message/german/comnlib.loc", "-108 =", "-109 =");
  home.change("locales/message/german/comnlib.loc", "-104 = \"", "-104 = \"\xFF");
  home.remove(kClient);
  Speaker late("german");
  EXPECT_EQ((Told{CS_SUCCEED, "Division durch null"}), german.words(-108));
  late.context.ctxintlerr = 5;
  EXPECT_EQ((Told{CS_FAIL, "comnlib message -108 (CS_CVT_DIVZERO)"}), late.words(-108));
  EXPECT_EQ(5, late.context.ctxintlerr);
  home.write(kClient, "[messages]\n");
  EXPECT_EQ((Told{CS_SUCCEED, "division by zero"}), late.words(-108));
  EXPECT_EQ((Told{CS_SUCCEED, "the scale is not valid"}), late.words(-104)) << "not UTF-8";
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
  using stops::kAssertion, stops::kPointer;
  stops::expect({
      STOP(kAssertion, build(0, 1, nullptr, 0, 10)),
      STOP(kAssertion, build(5, 1, nullptr, 0, 10)),
      STOP(kAssertion, build(1, 0, nullptr, 0, 10)),
      STOP(kAssertion, build(1, 4, nullptr, 0, 10)),
      STOP(kAssertion, build(1, 1, nullptr, -1, 10)),
      STOP(kPointer, build(1, 1, nullptr, 1, 10)),
      STOP(kAssertion, build(1, 1, &odd, 1, 10)),
      STOP(kPointer, build(1, 1, &none, 1, 10)),
      STOP(kAssertion, build(1, 1, &negative, 1, 10)),
      STOP(kAssertion, build(1, 1, nullptr, 0, 0)),
  });
}

}  // namespace
