#include "agent/disturbed/Disturbance.h"

namespace VorselKelp::agent {
namespace {

class KilledTest : public Disturbance {};

TEST_F(KilledTest, LosesNothingAndShowsNothingTwice) {
  if (!permitted()) GTEST_SKIP() << "this system does not let a process decide about another's calls";
  Row row("agent killed at every write");
  roundsAtEach("--kill", thorough() ? 1 : 9, row);
  EXPECT_GT(row.hits, 3);
}

}  // namespace
}  // namespace VorselKelp::agent
