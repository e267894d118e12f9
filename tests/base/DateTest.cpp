#include "base/Date.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace VorselKelp {
namespace {

TEST(Date, IsWrittenInBothForms) {
  struct Case {
    double seconds;
    const char* header;
    const char* description;
  };
  const Case cases[] = {
      {1794709483.9, "Sun, 15 Nov 2026 02:24:43 GMT", "2026-11-15 02:24:43 +0000"},
      {0, "Thu, 01 Jan 1970 00:00:00 GMT", "1970-01-01 00:00:00 +0000"},
      {951827696, "Tue, 29 Feb 2000 12:34:56 GMT", "2000-02-29 12:34:56 +0000"},
      {-0.5, "Wed, 31 Dec 1969 23:59:59 GMT", "1969-12-31 23:59:59 +0000"},
      {4107542399, "Sun, 28 Feb 2100 23:59:59 GMT", "2100-02-28 23:59:59 +0000"},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(httpDateText(c.seconds), c.header);
    EXPECT_EQ(dateDescription(c.seconds), c.description);
  }
}

TEST(Date, WholeSecondsDropTheFractionAndStopWhereThereAreNone) {
  EXPECT_EQ(wholeSeconds(1.999), 1);
  EXPECT_EQ(wholeSeconds(-1.999), -1);
  EXPECT_EQ(wholeSeconds(-9223372036854775808.0), std::numeric_limits<std::int64_t>::min());
  for (const double broken : {std::nan(""), HUGE_VAL, -HUGE_VAL, 9223372036854775808.0, -9.3e18})
    EXPECT_DEATH((void)wholeSeconds(broken), "Fatal error: ");
}

}  // namespace
}  // namespace VorselKelp
