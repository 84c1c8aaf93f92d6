#pragma once

#include "quorvane/base/Date.h"
#include "quorvane/base/JsonRecord.h"
#include "quorvane/core/ScanCoverage.h"
#include "quorvane/core/ScanItem.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace quorvane {

/// The outcome of one completed scan.
struct ScanResult {
  Date startedAt;               ///< whole seconds
  Date finishedAt;              ///< whole seconds
  std::vector<ScanItem> items;  ///< in the order in which the scan produced them
  std::optional<std::vector<FilePath>> unreadablePaths;
  std::optional<ScanCoverageLedger> coverage;

  bool operator==(const ScanResult&) const = default;
};
QV_JSON_FIELDS(ScanResult, startedAt, finishedAt, items, unreadablePaths, coverage)

/// Pretty-printed with sorted keys.
std::string jsonText(const ScanResult& result);

/// Reads a result back, from any source: refuses whatever does not have the form above.
Outcome<ScanResult, JsonError> scanResultFromJson(std::string_view text);

}  // namespace quorvane
