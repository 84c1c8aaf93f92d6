#include "quorvane/base/Date.h"

#include <fmt/format.h>

namespace quorvane {

namespace {

constexpr std::int64_t nanosecondsInASecond = 1'000'000'000;

/// `Date` begins in the middle of a second, which therefore has no beginning within its reach.
constexpr Date earliestWholeSecond(std::chrono::duration_cast<std::chrono::seconds>(Date::min().time_since_epoch()));

std::optional<int> digits(std::string_view text, std::size_t from, std::size_t count) {
  int value = 0;
  for (const char c : text.substr(from, count)) {
    if (c < '0' || c > '9') return std::nullopt;
    value = value * 10 + (c - '0');
  }
  return value;
}

bool hasIsoShape(std::string_view text) {
  constexpr std::string_view shape = "____-__-__T__:__:__Z";
  if (text.size() != shape.size()) return false;
  for (std::size_t i = 0; i < shape.size(); ++i)
    if (shape[i] != '_' && shape[i] != text[i]) return false;
  return true;
}

}  // namespace

Date dateFromTimestamp(std::int64_t seconds, std::int64_t nanoseconds) {
  std::int64_t total = 0;
  if (__builtin_mul_overflow(seconds, nanosecondsInASecond, &total) ||
      __builtin_add_overflow(total, nanoseconds, &total))
    return seconds < 0 ? Date::min() : Date::max();
  return Date(std::chrono::nanoseconds(total));
}

Date wholeSeconds(Date date) {
  if (date < earliestWholeSecond) return earliestWholeSecond;
  return std::chrono::floor<std::chrono::seconds>(date);
}

std::string isoText(Date date) {
  const auto moment = std::chrono::time_point_cast<std::chrono::seconds>(wholeSeconds(date));
  const auto day = std::chrono::floor<std::chrono::days>(moment);
  const std::chrono::year_month_day calendar(day);
  const std::chrono::hh_mm_ss time(moment - day);
  return fmt::format("{:04}-{:02}-{:02}T{:02}:{:02}:{:02}Z", static_cast<int>(calendar.year()),
                     static_cast<unsigned>(calendar.month()), static_cast<unsigned>(calendar.day()),
                     time.hours().count(), time.minutes().count(), time.seconds().count());
}

std::optional<Date> dateFromIsoText(std::string_view text) {
  if (!hasIsoShape(text)) return std::nullopt;
  const auto year = digits(text, 0, 4), month = digits(text, 5, 2), day = digits(text, 8, 2);
  const auto hour = digits(text, 11, 2), minute = digits(text, 14, 2), second = digits(text, 17, 2);
  if (!year || !month || !day || !hour || !minute || !second) return std::nullopt;
  const std::chrono::year_month_day calendar(std::chrono::year(*year),
                                             std::chrono::month(static_cast<unsigned>(*month)),
                                             std::chrono::day(static_cast<unsigned>(*day)));
  if (!calendar.ok() || *hour > 23 || *minute > 59 || *second > 59) return std::nullopt;
  const auto time = std::chrono::hours(*hour) + std::chrono::minutes(*minute) + std::chrono::seconds(*second);
  const auto whole = std::chrono::sys_seconds(std::chrono::sys_days(calendar)) + time;
  const Date date = dateFromTimestamp(whole.time_since_epoch().count(), 0);
  if (isoText(date) != text) return std::nullopt;  // beyond the reach of Date
  return date;
}

}  // namespace quorvane
