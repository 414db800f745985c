// The hosts of the tests: the allocator and the reader of files that they bring, and the contexts
// that they set up.
#pragma once

#include <gtest/gtest.h>

#include <atomic>
#include <cstddef>
#include <filesystem>
#include <set>
#include <string>
#include <vector>

#include "comnlib/convert.h"
#include "comnlib/locale.h"
#include "comnlib/memory.h"
#include "comnlib/thread.h"
#include "support/scratch.h"

namespace hosts {

// --- The allocator: in place of the library's defaults, it counts blocks and fails on demand -----

extern std::atomic<std::size_t> blocks, requests;

// Blocks that are allocated and not yet freed.
inline std::size_t live_blocks() {
  return blocks;
}

// How often memory has been asked for, in vain or not.
inline std::size_t allocations() {
  return requests;
}

// While it lives, makes allocations fail: the `first`-th from now on (1 is the next one), once or
// from there on.
class Failing {
 public:
  enum class Mode { kOnce, kFromThereOn };
  explicit Failing(std::size_t first, Mode mode = Mode::kOnce)
      : first_(requests + first), mode_(mode) {
    current = this;
  }
  ~Failing() { current = nullptr; }
  Failing(const Failing&) = delete;
  Failing& operator=(const Failing&) = delete;

  // Whether the chosen allocation has been reached.
  bool reached() const { return requests >= first_; }
  bool hits(std::size_t number) const {
    return mode_ == Mode::kOnce ? number == first_ : number >= first_;
  }
  static inline std::atomic<const Failing*> current{nullptr};

 private:
  std::size_t first_;
  Mode mode_;
};

inline std::ptrdiff_t open_files() {
  const std::filesystem::directory_iterator files("/proc/self/fd");
  return std::distance(begin(files), end(files));
}

// Expects when it goes that there are as many blocks and open files as when it came.
class NothingLost {
 public:
  ~NothingLost() {
    EXPECT_EQ(blocks_, live_blocks());
    EXPECT_EQ(files_, open_files());
  }

 private:
  std::size_t blocks_ = live_blocks();
  std::ptrdiff_t files_ = open_files();
};

// --- The reader: a companion library that hands out every text in one buffer (host_reader.cpp) ---

// Sectioned files opened so far, and those open now.
inline std::atomic<int> files_opened{0}, files_open{0};

// The steps of readers that succeed before all others find no memory; -1 for no end of them.
inline std::atomic<int> steps_left{-1};

// While it is set, every intl_close returns -7, though it closes.
inline std::atomic<bool> close_fails{false};

// --- Contexts ------------------------------------------------------------------------------------

// With the default conversions and null values.
struct ConversionContext : CS_CONTEXT {
  ConversionContext() : CS_CONTEXT{} {
    EXPECT_EQ(CS_SUCCEED, com_conv_init(this));
    EXPECT_EQ(CS_SUCCEED, com_null_init(this));
  }
  ~ConversionContext() {
    com_null_free(this);
    com_conv_free(this);
  }
  ConversionContext(const ConversionContext&) = delete;
  ConversionContext& operator=(const ConversionContext&) = delete;
};

// For memory pools: records the chunks that it gives. They begin `shift` bytes after an aligned
// address. A pool locks when `ctxthread` leads to `threads`.
struct PoolContext : CS_CONTEXT {
  explicit PoolContext(int with_shift = 0) : CS_CONTEXT{}, shift(with_shift) {
    ctxversion = 113;
    ctxmalloc = [](CS_CONTEXT* self, CS_INT size) {
      return static_cast<PoolContext*>(self)->give(size);
    };
    ctxfree = [](CS_CONTEXT* self, CS_VOID* block) {
      EXPECT_EQ(1U, static_cast<PoolContext*>(self)->live.erase(block));
      comn_free(static_cast<char*>(block) - static_cast<PoolContext*>(self)->shift);
    };
  }
  PoolContext(const PoolContext&) = delete;
  PoolContext& operator=(const PoolContext&) = delete;
  ~PoolContext() { EXPECT_TRUE(live.empty()) << "everything is given back"; }
  void* give(CS_INT size) {
    requests.push_back(size);
    auto* block = static_cast<char*>(comn_malloc(static_cast<std::size_t>(size + shift)));
    return block == nullptr ? nullptr : *live.insert(block + shift).first;
  }

  int shift;
  CS_THREAD threads = *comn_thread_table();
  std::set<void*> live;
  std::vector<CS_INT> requests;
};

// For localization; what it holds is given back in the documented order.
class LocaleContext {
 public:
  explicit LocaleContext(bool with_mutex = true) {
    context.ctxglobals = &globals;
    EXPECT_TRUE(!with_mutex || comn_create_mutex(&globals.cmg_mtx) == CS_SUCCEED);
  }
  ~LocaleContext() {
    if (globals.cmg_mtx == nullptr) return;
    EXPECT_EQ(0U, globals.cmg_mtx->use_count) << "the mutex is free after every call";
    EXPECT_EQ(CS_SUCCEED, comn_loc_drop_all(&context));
    EXPECT_EQ(CS_SUCCEED, com_intl_loccache_drop(&context));
    EXPECT_EQ(CS_SUCCEED, com_intl_chardesc_drop(&context));
    EXPECT_TRUE(globals.lm == nullptr || comn_lm_exit(globals.lm) == CS_SUCCEED);
    EXPECT_EQ(nullptr, globals.utf8_charset);
    EXPECT_EQ(CS_SUCCEED, comn_delete_mutex(globals.cmg_mtx));
    EXPECT_EQ(0, files_open);
  }
  LocaleContext(const LocaleContext&) = delete;
  LocaleContext& operator=(const LocaleContext&) = delete;

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
  // The entry of a locale of the table, and of one that is put together from names, which must
  // load.
  CsLocCache* entry(const std::string& name) {
    CsLocCache* loaded = nullptr;
    EXPECT_EQ(CS_SUCCEED, load(name, &loaded)) << name << ": " << error;
    return loaded;
  }
  CsLocCache* entry(const char* name, const char* charset, const char* language = "us_english",
                    const char* order = "binary") {
    CsLocCache* loaded = nullptr;
    EXPECT_EQ(CS_SUCCEED, load(name, charset, language, order, &loaded)) << name << ": " << error;
    return loaded;
  }

  CS_CONTEXT context{};
  CsCtxGlobals globals{};
  char error[300] = "";
};

// A locale all of whose categories are served by one entry.
inline CS_LOCALE all(CsLocCache* entry) {
  return {entry, entry, entry, entry, entry, entry, nullptr};
}

// --- Homes ---------------------------------------------------------------------------------------

extern const char* const kShippedHome;

// Sets TALVEN to the shipped home.
struct ShippedHome : scratch::Variable {
  ShippedHome() : Variable("TALVEN", kShippedHome) {}
};

// A context set up in the shipped home.
struct ShippedContext : ShippedHome, LocaleContext {
  ShippedContext() { EXPECT_EQ(CS_SUCCEED, init()); }
};

// A copy of the shipped home, to which TALVEN points. Directories in which nothing is changed are
// links into the shipped one.
class HomeCopy {
 public:
  HomeCopy() : variable_("TALVEN", directory_.path().c_str()) {
    link_entries(kShippedHome, directory_.path());
  }
  std::string file(const std::string& name) const { return (directory_.path() / name).string(); }
  std::string read(const std::string& name) const { return scratch::read(file(name)); }
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

}  // namespace hosts
