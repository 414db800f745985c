#pragma once

#include "support/hosts.h"

namespace intl_host {
using namespace hosts;
using Context = hosts::LocaleContext;
}  // namespace intl_host
