// One run of a scenario: its steps are the calls that need memory, of which one may fail.
#pragma once

#include <functional>
#include <sstream>
#include <string>

#include "comnlib/result.h"
#include "support/hosts.h"

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

// How a step fails: with this code, the state as it was.
struct Failure {
  State state = [] { return ""; };
  CS_RETCODE code = CS_MEM_ERROR;
  Keeps keeps = Keeps::kNothing;
};

class Run {
 public:
  using Mode = hosts::Failing::Mode;

  // Without `failing` nothing fails.
  Run(const hosts::Failing* failing, Mode mode) : failing_(failing), mode_(mode) {}

  // A call that succeeds when it finds memory. After a failure memory is back and the same call
  // succeeds, or it stays away and the scenario is over but for its tear-down.
  void step(const char* name, const Failure& failure, const Call& call) {
    if (over_) return;
    SCOPED_TRACE(name);
    const bool reached_before = reached();
    const std::string state = failure.state();
    const std::size_t blocks = hosts::live_blocks();
    const auto files = hosts::open_files();
    CS_RETCODE code = call();
    if (reached() && !reached_before) {
      EXPECT_EQ(failure.code, code);
      EXPECT_EQ(state, failure.state());
      EXPECT_EQ(files, hosts::open_files());
      EXPECT_TRUE(failure.keeps == Keeps::kProgress || hosts::live_blocks() == blocks);
      over_ = mode_ == Mode::kFromThereOn;
      if (over_) return;
      code = call();
    }
    EXPECT_EQ(CS_SUCCEED, code);
    results_ += words(name, failure.state()) + "\n";
  }

  // A look at results, with calls that ask for no memory.
  void see(const char* name, const State& look) {
    if (over_) return;
    const std::size_t before = hosts::allocations();
    results_ += words(name, look()) + "\n";
    EXPECT_EQ(before, hosts::allocations()) << name;
  }

  bool over() const { return over_; }
  // What all steps and looks told, in their order.
  const std::string& results() const { return results_; }

 private:
  bool reached() const { return failing_ != nullptr && failing_->reached(); }

  const hosts::Failing* failing_;
  Mode mode_;
  bool over_ = false;
  std::string results_;
};

// Runs a scenario without failures, and then with its first, second, ... allocation failing, once
// and from there on. No run leaves blocks or open files, and one that got its memory in the end
// tells what the first one told.
inline void sweep(void (*scenario)(Run&)) {
  const std::size_t before = hosts::allocations();
  Run whole(nullptr, Run::Mode::kOnce);
  scenario(whole);
  const std::size_t count = hosts::allocations() - before;
  EXPECT_LT(0U, count);
  for (const auto mode : {Run::Mode::kOnce, Run::Mode::kFromThereOn}) {
    for (std::size_t n = 1; n <= count && !testing::Test::HasFailure(); ++n) {
      SCOPED_TRACE(testing::Message() << "allocation " << n << " of " << count << " fails"
                                      << (mode == Run::Mode::kOnce ? "" : ", all later ones too"));
      const hosts::NothingLost nothing_lost;
      const hosts::Failing failing(n, mode);
      Run run(&failing, mode);
      scenario(run);
      EXPECT_TRUE(failing.reached());
      EXPECT_EQ(whole.results().substr(0, run.over() ? run.results().size() : std::string::npos),
                run.results());
    }
  }
}

}  // namespace scenario
