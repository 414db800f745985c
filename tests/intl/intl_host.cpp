#include "intl_host.h"

#include <gtest/gtest.h>

#include <atomic>
#include <fstream>
#include <sstream>

#include "intl.h"
#include "reader.h"

namespace {

std::atomic<int> opened{0};
std::atomic<int> open{0};
std::atomic<bool> close_fails{false};

}  // namespace

CS_INT intl_open(const CS_CHAR* path, INTL_HANDLE* handle) {
  CS_INT status = 0;
  *handle = comnlib::companion::open_sectioned(path, status);
  if (*handle != nullptr) {
    ++opened;
    ++open;
  }
  return status;
}

CS_INT intl_close(INTL_HANDLE handle) {
  --open;
  comnlib::companion::close_sectioned(static_cast<comnlib::companion::SectionedText*>(handle));
  return close_fails ? -7 : 0;
}

namespace intl_host {

int files_opened() {
  return opened;
}

int files_open() {
  return open;
}

FailingClose::FailingClose() {
  close_fails = true;
}

FailingClose::~FailingClose() {
  close_fails = false;
}

Context::Context() {
  EXPECT_EQ(CS_SUCCEED, comn_create_mutex(&globals.cmg_mtx));
  context.ctxglobals = &globals;
}

Context::~Context() {
  EXPECT_EQ(0U, globals.cmg_mtx->use_count) << "the mutex is free after every call";
  EXPECT_EQ(CS_SUCCEED, comn_loc_drop_all(&context));
  EXPECT_EQ(CS_SUCCEED, com_intl_loccache_drop(&context));
  EXPECT_EQ(CS_SUCCEED, com_intl_chardesc_drop(&context));
  if (globals.lm != nullptr) {
    EXPECT_EQ(CS_SUCCEED, comn_lm_exit(globals.lm));
  }
  EXPECT_EQ(CS_SUCCEED, comn_delete_mutex(globals.cmg_mtx));
  EXPECT_EQ(0, files_open());
}

CS_RETCODE Context::init() {
  return comn_intl_init(&context, error, sizeof error);
}

CS_RETCODE Context::load(const std::string& name, CsLocCache** entry) {
  return comn_intl_load(&context, name.c_str(), CS_NULLTERM, entry, error, sizeof error);
}

ShippedHome::ShippedHome() : variable_("TALVEN", COMNLIB_HOME) {}

HomeCopy::HomeCopy() : variable_("TALVEN", directory_.path().c_str()) {
  std::filesystem::copy(COMNLIB_HOME, directory_.path(), std::filesystem::copy_options::recursive);
}

std::string HomeCopy::read(const std::string& name) const {
  std::ostringstream text;
  text << std::ifstream(file(name), std::ios::binary).rdbuf();
  return text.str();
}

void HomeCopy::change(const std::string& name, std::string_view from, std::string_view to) const {
  std::string text = read(name);
  const std::size_t at = text.find(from);
  ASSERT_NE(std::string::npos, at) << name << " holds no " << from;
  write(name, text.replace(at, from.size(), to));
}

}  // namespace intl_host
