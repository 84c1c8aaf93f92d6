#pragma once

#include "quorvane/base/Outcome.h"
#include "quorvane/core/ScanResult.h"

#include <optional>
#include <string>
#include <vector>

namespace quorvane {

/// What a person names to be selected, or not to be: an item's identifier, an absolute path (that item, or every item
/// below it), a category or a safety level.
struct SelectionRequest {
  std::vector<std::string> select;    ///< none: what the scanner selected
  std::vector<std::string> unselect;  ///< taken away afterwards
};

/// A selector that names no item, or is none.
struct SelectionError {
  std::string selector;

  bool operator==(const SelectionError&) const = default;
};

/// Marks exactly the items that the request names. A category or a level never selects what is blocked; an identifier
/// or a path does, for the cleaner to refuse it by name.
Outcome<void, SelectionError> applySelection(std::vector<ScanItem>& items, const SelectionRequest& request);

/// Those that are marked, in their order.
std::vector<ScanItem> selectedItems(std::vector<ScanItem> items);

/// A reviewed result that is too old to be acted upon.
struct StaleScanSelection {
  Date finishedAt;  ///< of the scan; in the future when the clock was set back

  bool operator==(const StaleScanSelection&) const = default;
};

/// Whether the result is older than 24 hours, or of a time to come.
std::optional<StaleScanSelection> staleSelection(const ScanResult& result, Date now);
/// The same of any review that was finished then.
std::optional<StaleScanSelection> staleSelection(Date finishedAt, Date now);

}  // namespace quorvane
