#include "quorvane/base/Date.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <string>
#include <vector>

namespace quorvane {
namespace {

TEST(DateTests, readsAndWritesTheSameText) {
  for (const std::string text : {"1970-01-01T00:00:00Z", "2026-11-21T05:04:03Z", "1969-12-31T23:59:59Z",
                                 "2000-02-29T12:00:00Z", "1677-09-21T00:12:44Z", "2262-04-11T23:47:16Z"}) {
    const auto date = dateFromIsoText(text);
    ASSERT_TRUE(date) << text;
    EXPECT_EQ(isoText(*date), text);
  }
  EXPECT_EQ(dateFromIsoText("2026-11-21T05:04:03Z"), dateFromTimestamp(1'795'237'443, 0));
}

TEST(DateTests, refusesWhatItWouldNotWrite) {
  for (const char* text : {"", "2026-11-21", "2026-11-21T05:04:03", "2026-11-21T05:04:03.5Z", "2026-11-21T05:04:03z",
                           "2026-11-21 05:04:03Z", "2026-11-21T05:04:03+00:00", " 2026-11-21T05:04:03Z",
                           "2026-11-21T05:04:03Z ", "-026-11-21T05:04:03Z", "2026-+1-21T05:04:03Z"})
    EXPECT_EQ(dateFromIsoText(text), std::nullopt) << text;
  for (const char* text :
       {"2026-13-01T00:00:00Z", "2026-00-01T00:00:00Z", "2026-02-29T00:00:00Z", "2100-02-29T00:00:00Z",
        "2026-04-31T00:00:00Z", "2026-01-01T24:00:00Z", "2026-01-01T00:60:00Z", "2026-01-01T00:00:60Z",
        "1677-09-21T00:12:43Z", "1677-09-20T00:00:00Z", "2262-04-11T23:47:17Z", "9999-12-31T23:59:59Z",
        "0000-01-01T00:00:00Z"})
    EXPECT_EQ(dateFromIsoText(text), std::nullopt) << text;
}

TEST(DateTests, bringsTimestampsBeyondItsReachToItsNearestEnd) {
  constexpr std::int64_t most = std::numeric_limits<std::int64_t>::max();
  constexpr std::int64_t least = std::numeric_limits<std::int64_t>::min();
  EXPECT_EQ(dateFromTimestamp(most, 999'999'999), Date::max());
  EXPECT_EQ(dateFromTimestamp(least, 0), Date::min());
  EXPECT_EQ(dateFromTimestamp(9'223'372'036, 854'775'807), Date::max());
  EXPECT_EQ(dateFromTimestamp(9'223'372'036, 854'775'808), Date::max());
  EXPECT_EQ(dateFromTimestamp(-9'223'372'037, 145'224'192), Date::min());
}

TEST(DateTests, dropsTheFractionTowardsThePast) {
  EXPECT_EQ(wholeSeconds(dateFromTimestamp(5, 999'999'999)), dateFromTimestamp(5, 0));
  EXPECT_EQ(wholeSeconds(dateFromTimestamp(-5, 1)), dateFromTimestamp(-5, 0));
  EXPECT_EQ(isoText(dateFromTimestamp(-1, 500'000'000)), "1969-12-31T23:59:59Z");
  EXPECT_EQ(isoText(Date::max()), "2262-04-11T23:47:16Z");
  EXPECT_EQ(dateFromIsoText(isoText(wholeSeconds(Date::min()))), wholeSeconds(Date::min()));
}

}  // namespace
}  // namespace quorvane
