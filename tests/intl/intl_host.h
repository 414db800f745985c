// A host for the localization tests: a context whose home is the shipped one or a copy to break,
// and a companion library that counts its files and fails to close them on demand.
#pragma once

#include <filesystem>
#include <string>

#include "comnlib/locale.h"
#include "comnlib/thread.h"
#include "support/scratch.h"

namespace intl_host {

// Sectioned files opened so far, and those open now.
int files_opened();
int files_open();

// While it lives, every intl_close returns -7, though it closes.
class FailingClose {
 public:
  FailingClose();
  ~FailingClose();
  FailingClose(const FailingClose&) = delete;
  FailingClose& operator=(const FailingClose&) = delete;
};

// A localization context; its destructor releases everything in the documented order.
class Context {
 public:
  Context();
  ~Context();
  Context(const Context&) = delete;
  Context& operator=(const Context&) = delete;

  operator CS_CONTEXT*() { return &context; }
  CS_RETCODE init();
  CS_RETCODE load(const std::string& name, CsLocCache** entry);

  CS_CONTEXT context{};
  CsCtxGlobals globals{};
  char error[300] = "";
};

// Sets TALVEN to the shipped home.
class ShippedHome {
 public:
  ShippedHome();

 private:
  scratch::Variable variable_;
};

// A copy of the shipped home, to which TALVEN points.
class HomeCopy {
 public:
  HomeCopy();
  std::string file(const std::string& name) const { return (directory_.path() / name).string(); }
  std::string read(const std::string& name) const;
  void write(const std::string& name, std::string_view text) const { directory_.write(name, text); }
  void remove(const std::string& name) const { std::filesystem::remove(file(name)); }
  // Replaces the first `from` in a file, which must hold it.
  void change(const std::string& name, std::string_view from, std::string_view to) const;

 private:
  scratch::Directory directory_;
  scratch::Variable variable_;
};

}  // namespace intl_host
