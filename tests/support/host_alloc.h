#pragma once

#include "support/hosts.h"

namespace host_alloc = hosts;
