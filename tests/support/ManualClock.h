#pragma once

#include "quorvane/platform/Clock.h"

namespace quorvane {

/// A clock that stands until it is set.
class ManualClock final : public Clock {
 public:
  explicit ManualClock(Date now) : now_(now) {}
  void set(Date now) { now_ = now; }
  Date now() const override { return now_; }
  void advanceUptime(std::chrono::nanoseconds time) { uptime_ += time; }
  std::chrono::steady_clock::time_point uptime() const override { return uptime_; }

 private:
  Date now_;
  std::chrono::steady_clock::time_point uptime_;
};

}  // namespace quorvane
