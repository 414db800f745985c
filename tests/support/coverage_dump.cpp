// In coverage builds a process that a stop or a fault ends still leaves its counts: death tests
// would otherwise show every stop as never reached.
#include <csignal>

extern "C" void __gcov_dump(void);

namespace {

// The signal's default action comes back first, so an abort or a repeated fault then ends the
// process.
void dump_at(int signal) {
  struct sigaction action {};
  action.sa_flags = static_cast<int>(SA_RESETHAND);
  action.sa_handler = [](int) { __gcov_dump(); };
  sigaction(signal, &action, nullptr);
}

[[gnu::constructor]] void dump_at_stops() {
  dump_at(SIGABRT);
  dump_at(SIGFPE);
  dump_at(SIGSEGV);
}

}  // namespace
