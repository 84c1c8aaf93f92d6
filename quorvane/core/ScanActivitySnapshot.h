#pragma once

#include <cstdint>
#include <string>

namespace quorvane {

/// What a scan is doing right now.
struct ScanActivitySnapshot {
  std::string location;                 ///< the path being looked at, as bytes of the file system
  std::int64_t inspectedItemCount = 0;  ///< entries of the file system visited so far

  bool operator==(const ScanActivitySnapshot&) const = default;
};

}  // namespace quorvane
