#pragma once

#include "quorvane/core/ScanActivitySnapshot.h"

#include <functional>
#include <optional>
#include <string>

namespace quorvane {

/// One report of a running scan.
struct CleaningScanProgressUpdate {
  double progress = 0;    ///< 0 to 1; 0 while nobody can say
  std::string statusKey;  ///< message key of the step: "scan.status.logs"
  std::optional<ScanActivitySnapshot> activity;

  bool operator==(const CleaningScanProgressUpdate&) const = default;
};

/// Takes reports, from several threads at once. Has to return at once.
using ScanProgressSink = std::function<void(CleaningScanProgressUpdate)>;

}  // namespace quorvane
