#include "quorvane/platform/Clock.h"

namespace quorvane {

Date SystemClock::now() const { return std::chrono::time_point_cast<Date::duration>(std::chrono::system_clock::now()); }

std::chrono::steady_clock::time_point SystemClock::uptime() const { return std::chrono::steady_clock::now(); }

}  // namespace quorvane
