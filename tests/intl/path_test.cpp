// Every path builder: its path, the shortest buffer that takes it, and what an exact fit leaves
// behind. Then the openers and the environment.
#include <gtest/gtest.h>

#include <functional>
#include <string>

#include "intl/com_intl.h"
#include "intl/com_loc.h"
#include "intl/com_path.h"
#include "support/hosts.h"
#include "support/stops.h"

namespace {

constexpr const char* kHome = "/h";

struct Builder {
  std::string path;
  int spare;  // bytes beyond the path's length that the shortest sufficient buffer has
  std::function<CS_RETCODE(CS_CONTEXT*, CS_CHAR*, CS_INT)> build;
};

// A builder that takes the buffer after its other arguments.
template <auto Build>
auto with(auto... pieces) {
  return [=](CS_CONTEXT* ctx, CS_CHAR* buf, CS_INT len) { return Build(ctx, pieces..., buf, len); };
}

const Builder kBuilders[] = {
    {"/h/abc", 0, [](auto* c, auto* b, auto n) { return com_path_anyfile(c, b, n, "abcdef", 3); }},
    {"/h/interfaces", 0, com_path_ifile},
    {"/h/config/x.cfg", 0,
     [](auto* c, auto* b, auto n) { return com_path_cfgfile(c, "x.cfg", b, n, 0); }},
    {"/h/locales/t", 0, with<com__path_locfile>(nullptr, "ignored", "t")},
    {"/h/locales/french/f", 0, with<com__path_locfile>("french", nullptr, "f")},
    {"/h/locales/us_english/iso_1/f", 0, with<com__path_locfile>("us_english", "iso_1", "f")},
    {"/h/locales/message/french/c.loc", 1, with<comn__path_msgfile>("french", 6, "c.locXX", 5)},
    {"/h/locales/message/us_english/f", 1,
     with<comn__path_msgfile>("usXX", 2, "f", 1)},  // leading part
    {"/h/locales/message/us_x/f", 1, with<comn__path_msgfile>("us_x", 4, "f", 1)},
    {"/h/charsets/utf8/c.loc", 1, with<com__path_charfile>("utf8", "c.loc", nullptr)},
    {"/h/charsets/utf8/x.srt", 0, with<com__path_charfile>("utf8", "x", "srt")},
    {"/h/charsets/x", 1, with<com__path_charfile>(nullptr, "x", nullptr)},
    {"/h/locales/money/x.mon", 1, with<comn__path_locdata>(4, "x")},
    {"/h/locales/numeric/x.num", 1, with<comn__path_locdata>(5, "x")},
    {"/h/locales/datetime/x.dt", 1, with<comn__path_locdata>(6, "x")},
};

TEST(Path, FitsToTheByte) {
  const scratch::Variable home("TALVEN", kHome);
  CS_CONTEXT context{};
  for (const Builder& builder : kBuilders) {
    const auto length = static_cast<CS_INT>(builder.path.size());
    for (CS_INT room = 2; room <= length + 2; ++room) {
      std::string buffer(200, '#');
      const CS_RETCODE result = builder.build(&context, buffer.data(), room);
      EXPECT_EQ(room >= length + builder.spare ? CS_SUCCEED : CS_FAIL, result)
          << builder.path << " in " << room;
      EXPECT_EQ('#', buffer[static_cast<std::size_t>(room)]) << builder.path << " in " << room;
      if (result != CS_SUCCEED) {
        const std::string held = buffer.substr(0, static_cast<std::size_t>(room)).c_str();
        EXPECT_TRUE(builder.path.starts_with(held)) << builder.path << ": " << held;
        EXPECT_NE(std::string::npos, std::string("/.").find(builder.path[held.size()]))
            << builder.path << " holds whole pieces: " << held;
        continue;
      }
      EXPECT_EQ(builder.path + (room == length ? '#' : '\0'),
                buffer.substr(0, builder.path.size() + 1));
    }
  }
  std::string buffer(30, '#');
  EXPECT_EQ(CS_FAIL, comn__path_msgfile(&context, "french", 6, "file", 4, buffer.data(), 30));
  EXPECT_EQ("/h/locales/message/french" + std::string(5, '\0'), buffer) << "filled with zeros";
  context.ctxintlerr = 0;
  home.set(nullptr);
  for (const Builder& builder : kBuilders)
    EXPECT_EQ(CS_INTL_LIBERR, builder.build(&context, buffer.data(), 30)) << builder.path;
  EXPECT_GT(0, context.ctxintlerr);
}

TEST(Path, NuvIsNeitherCheckedNorCounted) {
  const scratch::Variable home("TALVEN", kHome);
  const scratch::Variable nuv("TALVEN_NUV", "sub");
  CS_CONTEXT context{};
  const std::string counted = "/h/config/f";
  const auto room = static_cast<CS_INT>(counted.size());
  std::string buffer(600, '#');
  EXPECT_EQ(CS_SUCCEED, com_path_cfgfile(&context, "f", buffer.data(), room, 1));
  EXPECT_EQ("/h/sub/config/f#", buffer.substr(0, counted.size() + 5));
  EXPECT_EQ(CS_FAIL, com_path_cfgfile(&context, "f", buffer.data(), room - 1, 1));
  EXPECT_EQ(CS_SUCCEED, com_path_cfgfile(&context, "f", buffer.data(), room + 1, 0));
  EXPECT_STREQ("/h/config/f", buffer.c_str()) << "not asked for";

  const std::string longest(512, 'n');
  nuv.set(longest.c_str());
  buffer.assign(600, '#');
  EXPECT_EQ(CS_SUCCEED, com_path_cfgfile(&context, "f", buffer.data(), room, 1));
  EXPECT_EQ("/h/" + longest + "/config/f#", buffer.substr(0, counted.size() + 514));
  nuv.set((longest + "n").c_str());
  EXPECT_EQ(CS_SUCCEED, com_path_cfgfile(&context, "f", buffer.data(), room + 1, 1));
  EXPECT_STREQ("/h/config/f", buffer.c_str()) << "too long for its buffer: left out";
}

TEST(PathDeathTest, Preconditions) {
  const scratch::Variable home("TALVEN", kHome);
  CS_CONTEXT context{};
  char path[100];
  const auto place = "assertion failed, file 'generic/src/intl/com_path.cpp'";
  stops::expect({
      STOP(place, com_path_ifile(&context, path, 0)),
      STOP(place, com_path_ifile(&context, path, 1)),  // the home alone is longer
      STOP(place, comn__path_locdata(&context, 3, "x", path, 100)),
      STOP(place, comn__path_locdata(&context, 7, "x", path, 100)),
      STOP(stops::kPointer, com_path_ifile(nullptr, path, 100)),
      STOP(stops::kPointer, com_path_anyfile(&context, path, 100, nullptr, 1)),
  });
}

TEST(Open, PathGoesToTheErrorBufferCutToFit) {
  const scratch::Directory directory;
  const scratch::Variable home("TALVEN", directory.path().c_str());
  const std::string path = directory.write("charsets/x/y.srt", "[a]\n");
  CS_CONTEXT context{};
  INTL_HANDLE handle = nullptr;
  char error[100];
  EXPECT_EQ(CS_SUCCEED, com__open_charfile(&context, "x", "y", "srt", &handle, error, 100));
  EXPECT_EQ(path, error);
  EXPECT_EQ(0, intl_close(handle));
  directory.write("sub/config/c", "[a]\n");
  const scratch::Variable nuv("TALVEN_NUV", "sub");
  EXPECT_EQ(CS_INTL_NOFILE, com__open_cfgfile(&context, "c", &handle, 0));
  EXPECT_EQ(CS_SUCCEED, com__open_cfgfile(&context, "c", &handle, 1));
  EXPECT_EQ(0, intl_close(handle));
  EXPECT_EQ(CS_INTL_NOFILE, com__open_charfile(&context, "x", "z", "srt", &handle, error, 6));
  EXPECT_EQ(path.substr(0, 5), error);
  EXPECT_GT(0, context.ctxintlerr);
  EXPECT_EQ(0, hosts::files_open);
  EXPECT_DEATH(com__open_locfile(&context, nullptr, nullptr, "f", &handle, error, 0), "assertion");
  home.set(nullptr);
  EXPECT_EQ(CS_INTL_LIBERR,
            com__open_locfile(&context, nullptr, nullptr, "f", &handle, error, 100));
  EXPECT_STREQ("", error) << "no home, no path";
}

// A path that fills all 1,025 bytes is opened whole.
TEST(Open, LongestPath) {
  const scratch::Directory directory;
  const std::size_t room = 1025 - (directory.path().string() + "/locales/").size();
  std::string name;
  while (name.size() + 201 < room) name += std::string(199, 'd') + "/";
  name.resize(room, 'f');
  directory.write("locales/" + name, "[a]\n");
  const scratch::Variable home("TALVEN", directory.path().c_str());
  CS_CONTEXT context{};
  INTL_HANDLE handle = nullptr;
  EXPECT_EQ(CS_SUCCEED,
            com__open_locfile(&context, nullptr, nullptr, name.c_str(), &handle, nullptr, 0));
  EXPECT_EQ(0, intl_close(handle));
  EXPECT_EQ(CS_FAIL, com__open_locfile(&context, nullptr, nullptr, (name + "f").c_str(), &handle,
                                       nullptr, 0));
}

TEST(Environment, CategoryThenLangThenDefault) {
  const char* names[] = {"LC_COLLATE", "LC_CTYPE", "LC_MESSAGE", "LC_MONETARY",
                         "LC_NUMERIC", "LC_TIME",  "LC_ALL"};
  const scratch::Variable lang("LANG", nullptr);
  CS_CONTEXT context{};
  char name[20];
  for (CS_INT category = 1; category <= 7; ++category) {
    const scratch::Variable variable(names[category - 1], nullptr);
    const scratch::Variable all("LC_ALL", nullptr);
    const auto expect = [&](const char* expected) {
      EXPECT_EQ(CS_SUCCEED, com_intl_envloc(&context, category, name, sizeof name));
      EXPECT_STREQ(expected, name) << category;
    };
    lang.set(nullptr);
    expect("default");
    lang.set("of-lang");
    expect("of-lang");
    all.set("of-all");
    variable.set("of-category");
    expect("of-category");
  }
  lang.set("longer than the buffer");
  EXPECT_EQ(CS_INTL_LIBERR, com_intl_envloc(&context, 1, name, sizeof name));
  EXPECT_GT(0, context.ctxintlerr);
  lang.set(nullptr);
  EXPECT_EQ(CS_SUCCEED, com_intl_envloc(&context, 1, name, 4));
  EXPECT_STREQ("def", name);
  EXPECT_DEATH(com_intl_envloc(&context, 0, name, 4), "assertion");
  EXPECT_DEATH(com_intl_envloc(&context, 8, name, 4), "assertion");
  EXPECT_DEATH(com_intl_envloc(&context, 1, name, 0), "assertion");
}

}  // namespace
