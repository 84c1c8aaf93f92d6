#pragma once

#include "quorvane/base/Date.h"

#include <chrono>

namespace quorvane {

class Clock {
 public:
  virtual ~Clock() = default;

  virtual Date now() const = 0;
  /// Never goes backwards; for measuring how long something took.
  virtual std::chrono::steady_clock::time_point uptime() const = 0;
};

class SystemClock final : public Clock {
 public:
  Date now() const override;
  std::chrono::steady_clock::time_point uptime() const override;
};

}  // namespace quorvane
