#pragma once

#include <string>
#include <variant>

namespace quorvane {

/// Where the cleaning screen stands. The spine is idle, scanning, review, cleaning, completed; a scan or a cleaning
/// that could not run at all ends in failed, and a cancelled scan in idle. From review, completed and failed a new scan
/// starts.
namespace scanPhase {
struct Idle {
  bool operator==(const Idle&) const = default;
};
struct Scanning {
  bool operator==(const Scanning&) const = default;
};
struct Review {
  bool operator==(const Review&) const = default;
};
struct Cleaning {
  bool operator==(const Cleaning&) const = default;
};
struct Completed {
  bool operator==(const Completed&) const = default;
};
struct Failed {
  std::string message;
  bool operator==(const Failed&) const = default;
};
}  // namespace scanPhase

using ScanPhase = std::variant<scanPhase::Idle, scanPhase::Scanning, scanPhase::Review, scanPhase::Cleaning,
                               scanPhase::Completed, scanPhase::Failed>;

}  // namespace quorvane
