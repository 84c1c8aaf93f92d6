#include "quorvane/scan/CalendarDays.h"

#include <ctime>

namespace quorvane {

Date calendarDaysBefore(Date date, int days) {
  const auto whole = std::chrono::floor<std::chrono::seconds>(date);
  const std::time_t seconds = static_cast<std::time_t>(whole.time_since_epoch().count());
  std::tm local{};
  if (!localtime_r(&seconds, &local)) return date - std::chrono::days(days);
  local.tm_mday -= days;
  local.tm_isdst = -1;
  return dateFromTimestamp(std::mktime(&local), (date - whole).count());
}

}  // namespace quorvane
