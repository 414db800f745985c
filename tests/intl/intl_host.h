// A host for the localization tests: a context whose home is the shipped one or a copy to break,
// and a companion library that counts its files, hands out every text in one buffer, and fails to
// close on demand.
#pragma once

#include <gtest/gtest.h>

#include <atomic>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>

#include "comnlib/locale.h"
#include "comnlib/thread.h"
#include "support/scratch.h"

namespace intl_host {

// Sectioned files opened so far, and those open now.
inline std::atomic<int> files_opened{0}, files_open{0};

// The steps of readers that succeed before all others find no memory; -1 for no end of them.
inline std::atomic<int> steps_left{-1};

// While it is set, every intl_close returns -7, though it closes.
inline std::atomic<bool> close_fails{false};

// A localization context; its destructor releases everything in the documented order.
class Context {
 public:
  Context() {
    EXPECT_EQ(CS_SUCCEED, comn_create_mutex(&globals.cmg_mtx));
    context.ctxglobals = &globals;
  }
  ~Context() {
    EXPECT_EQ(0U, globals.cmg_mtx->use_count) << "the mutex is free after every call";
    EXPECT_EQ(CS_SUCCEED, comn_loc_drop_all(&context));
    EXPECT_EQ(CS_SUCCEED, com_intl_loccache_drop(&context));
    EXPECT_EQ(CS_SUCCEED, com_intl_chardesc_drop(&context));
    if (globals.lm != nullptr) {
      EXPECT_EQ(CS_SUCCEED, comn_lm_exit(globals.lm));
    }
    EXPECT_EQ(nullptr, globals.utf8_charset);
    EXPECT_EQ(CS_SUCCEED, comn_delete_mutex(globals.cmg_mtx));
    EXPECT_EQ(0, files_open);
  }
  Context(const Context&) = delete;
  Context& operator=(const Context&) = delete;

  operator CS_CONTEXT*() { return &context; }
  CS_RETCODE init() { return comn_intl_init(&context, error, sizeof error); }
  CS_RETCODE load(const std::string& name, CsLocCache** entry) {
    return comn_intl_load(&context, name.c_str(), CS_NULLTERM, entry, error, sizeof error);
  }
  CS_RETCODE load(const char* name, const char* charset, const char* language, const char* order,
                  CsLocCache** entry) {
    return comn_intl_load_tlvtypes(&context, name, CS_NULLTERM, charset, CS_NULLTERM, language,
                                   CS_NULLTERM, order, CS_NULLTERM, entry, error, sizeof error);
  }

  CS_CONTEXT context{};
  CsCtxGlobals globals{};
  char error[300] = "";
};

// A locale all of whose categories are served by one entry.
inline CS_LOCALE all(CsLocCache* entry) {
  return {entry, entry, entry, entry, entry, entry, nullptr};
}

// Sets TALVEN to the shipped home.
struct ShippedHome : scratch::Variable {
  ShippedHome() : Variable("TALVEN", COMNLIB_HOME) {}
};

// A context set up in the shipped home.
struct ShippedContext : ShippedHome, Context {
  ShippedContext() { EXPECT_EQ(CS_SUCCEED, init()); }
};

// A copy of the shipped home, to which TALVEN points. Directories in which nothing is changed are
// links into the shipped one.
class HomeCopy {
 public:
  HomeCopy() : variable_("TALVEN", directory_.path().c_str()) {
    link_entries(COMNLIB_HOME, directory_.path());
  }
  std::string file(const std::string& name) const { return (directory_.path() / name).string(); }
  std::string read(const std::string& name) const {
    std::ostringstream text;
    text << std::ifstream(file(name), std::ios::binary).rdbuf();
    return text.str();
  }
  void write(const std::string& name, std::string_view text) const {
    remove(name);
    directory_.write(name, text);
  }
  // Only the copy's own link goes, as with any file that is to be written.
  void remove(const std::string& name) const {
    auto path = directory_.path();
    for (const auto& part : std::filesystem::path(name).parent_path()) {
      path /= part;
      if (!std::filesystem::is_symlink(path)) continue;
      const auto shipped = std::filesystem::read_symlink(path);
      std::filesystem::remove(path);
      std::filesystem::create_directory(path);
      link_entries(shipped, path);
    }
    std::filesystem::remove(file(name));
  }
  // Replaces the first `from` in a file, which must hold it.
  void change(const std::string& name, std::string_view from, std::string_view to) const {
    std::string text = read(name);
    const std::size_t at = text.find(from);
    ASSERT_NE(std::string::npos, at) << name << " holds no " << from;
    write(name, text.replace(at, from.size(), to));
  }

 private:
  static void link_entries(const std::filesystem::path& from, const std::filesystem::path& to) {
    for (const auto& entry : std::filesystem::directory_iterator(from))
      std::filesystem::create_symlink(entry.path(), to / entry.path().filename());
  }

  scratch::Directory directory_;
  scratch::Variable variable_;
};

}  // namespace intl_host
