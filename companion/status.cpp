#include "status.h"

#include <cerrno>

CS_INT comnlib::companion::system_status() {
  return make_status(Fault::kSystem, errno);
}
