#include <filesystem>

#include "agent/disturbed/Disturbance.h"

namespace VorselKelp::agent {
namespace {

using testing::HasSubstr;

class RefusedTest : public Disturbance, public testing::WithParamInterface<const char*> {};

TEST_P(RefusedTest, AcknowledgesNothingThatItCannotKeep) {
  if (!permitted()) GTEST_SKIP() << "this system does not let a process decide about another's calls";
  const std::string error = GetParam();
  {
    Row row(error + " at one write of the agent");
    roundsAtEach("--error " + error, thorough() ? 1 : 60, row);
    EXPECT_GT(row.hits, 0) << "nothing was refused";
  }
  if (!thorough() || HasFailure()) return;
  Row row(error + " from a write on");
  roundsAtEach("--onwards --error " + error, 6, row);
}

INSTANTIATE_TEST_SUITE_P(, RefusedTest, testing::Values("ENOSPC", "EROFS", "EACCES"),
                         [](const auto& each) { return std::string(each.param); });

}  // namespace
}  // namespace VorselKelp::agent
