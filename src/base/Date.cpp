#include "base/Date.h"

#include <array>
#include <chrono>
#include <cmath>
#include <cstdio>

#include "base/FatalError.h"

namespace VorselKelp {
namespace {

struct Civil {
  int year;
  unsigned month, day, weekday;
  long long hour, minute, second;
};

Civil civil(double secondsSince1970) {
  using namespace std::chrono;
  const sys_seconds at{seconds{wholeSeconds(std::floor(secondsSince1970))}};
  const sys_days date = floor<days>(at);
  const year_month_day ymd{date};
  const hh_mm_ss time{at - date};
  return {int{ymd.year()},      unsigned{ymd.month()},  unsigned{ymd.day()},   weekday{date}.c_encoding(),
          time.hours().count(), time.minutes().count(), time.seconds().count()};
}

}  // namespace

std::string httpDateText(double secondsSince1970) {
  static constexpr std::array weekdays{"Sun", "Mon", "Tue", "Wed", "Thu", "Fri", "Sat"};
  static constexpr std::array months{"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                                     "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};
  const Civil c = civil(secondsSince1970);
  std::array<char, 64> text{};
  std::snprintf(text.data(), text.size(), "%s, %02u %s %04d %02lld:%02lld:%02lld GMT", weekdays[c.weekday],
                c.day, months[c.month - 1], c.year, c.hour, c.minute, c.second);
  return text.data();
}

std::string dateDescription(double secondsSince1970) {
  const Civil c = civil(secondsSince1970);
  std::array<char, 64> text{};
  std::snprintf(text.data(), text.size(), "%04d-%02u-%02u %02lld:%02lld:%02lld +0000", c.year, c.month, c.day,
                c.hour, c.minute, c.second);
  return text.data();
}

long long wholeSeconds(double secondsSince1970) {
  constexpr double limit = 9223372036854775808.0;  // 2^63, the first value that does not fit
  if (!std::isfinite(secondsSince1970) || secondsSince1970 >= limit || secondsSince1970 < -limit)
    fatalError("the clock's time is no 64-bit number of seconds");
  return static_cast<long long>(secondsSince1970);
}

}  // namespace VorselKelp
