// The host's context: conversion matrix, null values and localization, set up in the order that the
// library asks for and released in the reverse one.
#pragma once

#include <string>

#include "comnlib.h"

namespace rowcopy {

class Context {
 public:
  // `home` is the localization home; when it is empty, the one that TALVEN names or else the one
  // shipped with this program. The context's locale is the one that the environment asks for; where
  // the home has no such locale, US English in UTF-8 after a line of warning. A home without the
  // files for that is diagnosed by the library on standard error, then a Fatal.
  explicit Context(const std::string& home);
  Context(const Context&) = delete;
  Context& operator=(const Context&) = delete;

  CS_CONTEXT* get() { return &context_; }

  // The locale that `name` says: a locale of the home, or a character set of it, in any usual
  // spelling, with the language and sort order of the context's locale. The context's own without a
  // name. It lives as long as the context. A name that is neither is a Fatal.
  CS_LOCALE* locale(const std::string& name);

 private:
  // Each part is released when its owner goes, also when a later part fails.
  struct Conversions {
    explicit Conversions(CS_CONTEXT& context);
    ~Conversions();
    CS_CONTEXT& context;
  };
  struct NullValues {
    explicit NullValues(CS_CONTEXT& context);
    ~NullValues();
    CS_CONTEXT& context;
  };
  struct Localization {
    explicit Localization(CS_CONTEXT& context);
    ~Localization();
    CS_CONTEXT& context;
    CsCtxGlobals globals{};
  };

  CS_RETCODE load_charset(const std::string& charset, const std::string& language,
                          const std::string& order, CsLocCache*& entry);
  CS_LOCALE* new_locale(CsLocCache* entry);

  CS_THREAD threads_ = *comn_thread_table();  // the library locks by itself
  CS_CONTEXT context_{};
  Conversions conversions_{context_};
  NullValues null_values_{context_};
  Localization localization_{context_};
};

// The name of a locale's character set in the home.
std::string charset_of(const CS_LOCALE* locale);

}  // namespace rowcopy
