// One run of a scenario: its steps are the calls that need memory, of which one may fail.
#pragma once

#include <functional>
#include <sstream>
#include <string>

#include "comnlib/result.h"
#include "comnlib/types.h"
#include "support/host_alloc.h"

namespace scenario {

template <class... Words>
std::string words(const Words&... list) {
  std::ostringstream text;
  ((text << list << ' '), ...);
  return text.str();
}

// What a failed step may leave allocated; progress is what the next attempt or the tear-down finds.
enum class Keeps { kNothing, kProgress };

using Call = std::function<CS_RETCODE()>;
using State = std::function<std::string()>;

// Whether a pointer is there, as the state of a step that makes what it points to.
template <class Object>
State made(Object* const& object) {
  return [&object] { return words(object != nullptr); };
}

// How a step fails: with this code, the state as it was.
struct Failure {
  State state = [] { return ""; };
  CS_RETCODE code = CS_MEM_ERROR;
  Keeps keeps = Keeps::kNothing;
};

class Run {
 public:
  using Mode = host_alloc::Failing::Mode;

  // Without `failing` nothing fails.
  Run(const host_alloc::Failing* failing, Mode mode) : failing_(failing), mode_(mode) {}

  // A call that succeeds when it finds memory. After a failure memory is back and the same call
  // succeeds, or it stays away and the scenario is over but for its tear-down.
  void step(const char* name, const Failure& failure, const Call& call);

  // A look at results, with calls that ask for no memory.
  void see(const char* name, const State& look);

  bool over() const { return over_; }
  // What all steps and looks told, in their order.
  const std::string& results() const { return results_; }

 private:
  bool reached() const { return failing_ != nullptr && failing_->reached(); }

  const host_alloc::Failing* failing_;
  Mode mode_;
  bool over_ = false;
  std::string results_;
};

// Runs a scenario without failures, and then with its first, second, ... allocation failing, once
// and from there on. No run leaves blocks or open files, and one that got its memory in the end
// tells what the first one told. Returns how many allocations the scenario makes.
std::size_t sweep(const std::function<void(Run&)>& scenario);

}  // namespace scenario
