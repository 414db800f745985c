#include "scenario/run.h"

#include <gtest/gtest.h>

#include <filesystem>

namespace scenario {
namespace {

std::size_t open_files() {
  const std::filesystem::directory_iterator files("/proc/self/fd");
  return static_cast<std::size_t>(std::distance(begin(files), end(files)));
}

}  // namespace

void Run::step(const char* name, const Failure& failure, const Call& call) {
  if (over_) return;
  SCOPED_TRACE(name);
  const bool reached_before = reached();
  const std::string state = failure.state();
  const std::size_t blocks = host_alloc::live_blocks();
  const std::size_t files = open_files();
  CS_RETCODE code = call();
  if (reached() && !reached_before) {
    EXPECT_EQ(failure.code, code);
    EXPECT_EQ(state, failure.state());
    EXPECT_EQ(files, open_files());
    if (failure.keeps == Keeps::kNothing) {
      EXPECT_EQ(blocks, host_alloc::live_blocks());
    }
    over_ = mode_ == Mode::kFromThereOn;
    if (over_) return;
    code = call();
  }
  EXPECT_EQ(CS_SUCCEED, code);
  results_ += words(name, failure.state()) + "\n";
}

void Run::see(const char* name, const State& look) {
  if (over_) return;
  SCOPED_TRACE(name);
  const std::size_t before = host_alloc::allocations();
  results_ += words(name, look()) + "\n";
  EXPECT_EQ(before, host_alloc::allocations());
}

std::size_t sweep(const std::function<void(Run&)>& scenario) {
  const std::size_t files = open_files();
  const std::size_t before = host_alloc::allocations();
  Run whole(nullptr, Run::Mode::kOnce);
  scenario(whole);
  const std::size_t count = host_alloc::allocations() - before;
  for (const auto mode : {Run::Mode::kOnce, Run::Mode::kFromThereOn}) {
    for (std::size_t n = 1; n <= count && !testing::Test::HasFailure(); ++n) {
      SCOPED_TRACE(testing::Message() << "allocation " << n << " of " << count << " fails"
                                      << (mode == Run::Mode::kOnce ? "" : ", all later ones too"));
      const host_alloc::Failing failing(n, mode);
      Run run(&failing, mode);
      scenario(run);
      EXPECT_TRUE(failing.reached());
      EXPECT_EQ(0U, host_alloc::live_blocks());
      EXPECT_EQ(files, open_files());
      EXPECT_EQ(run.over() ? whole.results().substr(0, run.results().size()) : whole.results(),
                run.results());
    }
  }
  return count;
}

}  // namespace scenario
