#pragma once

#include "quorvane/app/cli/terminal/ReportText.h"
#include "quorvane/core/ScanItem.h"

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace quorvane {

/// One item of a table.
struct ListedItem {
  const ScanItem* item;
  std::size_t number = 0;  ///< what a person calls it; 0 shows none
};

struct ItemGroup {
  ScanCategory category;
  std::vector<ListedItem> items;
};

/// The items by category, in the order of display; the largest of each first. The items outlive the groups.
std::vector<ItemGroup> groupedByCategory(const std::vector<ScanItem>& items);

/// How much some items are.
struct ItemSum {
  std::int64_t bytes = 0;
  std::int64_t count = 0;
  bool isLowerBound = false;

  void add(const ScanItem& item);
};

template <class Condition>
ItemSum sumOf(const std::vector<ScanItem>& items, Condition condition) {
  ItemSum sum;
  for (const ScanItem& item : items)
    if (std::invoke(condition, item)) sum.add(item);
  return sum;
}

/// A message with the sum as its "size" and "count", and the glyph of what is selected as its "mark".
Message sumMessage(std::string key, const ItemSum& sum, const ReportStyle& style);

/// Why it has its safety level. An item may come from a foreign file: a key that is none of a reason is shown as it is.
std::string reasonText(const ScanItem& item, const ReportStyle& style);

/// "≥ 12 MB" for an item that could not be read as a whole.
std::string sizeText(const ScanItem& item, const ReportStyle& style);

/// Writes the groups, each under its title and sum. `isSeenInPart` tells the categories whose sums are lower bounds
/// whatever their items say. False when there was no room for the paths.
bool writeItemTable(ReportText& report, const std::vector<ItemGroup>& groups, const ReportStyle& style,
                    const std::function<bool(ScanCategory)>& isSeenInPart = {});

/// The same, and where there was no room for the paths a line that says how to see them.
void writeScanTable(ReportText& report, const std::vector<ItemGroup>& groups, const ReportStyle& style,
                    const std::function<bool(ScanCategory)>& isSeenInPart = {});

}  // namespace quorvane
