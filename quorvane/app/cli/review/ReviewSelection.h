#pragma once

#include "quorvane/app/cli/reports/ItemTable.h"
#include "quorvane/app/cli/review/ReviewAnswer.h"
#include "quorvane/core/ScanResult.h"

#include <set>
#include <string>
#include <vector>

namespace quorvane {

/// The items of a scan as a person reviews them: each with a number that stays, shown before or not, and selected or
/// not. Nothing becomes selected that was not shown before.
class ReviewSelection {
 public:
  /// The items outlive the selection, and are marked by it.
  explicit ReviewSelection(std::vector<ScanItem>& items);

  /// What a part of an answer came to.
  enum class Change {
    selected,     ///< all that it names and that may be selected
    unselected,   ///< all of those were selected before
    onlyBlocked,  ///< nothing that it names may be selected
    unknown,      ///< it names nothing
    notShown,     ///< it names some that were not shown yet, so nothing was changed
  };
  struct Applied {
    Change change;
    std::vector<const ScanItem*> toShow = {};  ///< what it selected, or what was not shown yet
  };
  /// Blocked items are passed over. All that it names are selected, or none of them when all were before.
  Applied apply(const reviewAnswer::Part& part);

  /// To be called with what a person has seen.
  void setShown(const std::vector<ItemGroup>& groups);
  void setShown(const ScanItem& item) { shown_.insert(&item); }

  /// Nothing when there is no such number.
  const ScanItem* itemNumbered(std::size_t number) const;

  std::vector<ItemGroup> all() const { return groups_; }
  std::vector<ItemGroup> selected() const;
  std::vector<ItemGroup> groupsOf(const std::set<const ScanItem*>& items) const;
  ItemSum selectedSum() const;
  /// The categories that there are, as a person types them.
  std::vector<std::string> categoryNames() const;
  std::size_t count() const { return byNumber_.size(); }

 private:
  std::vector<ScanItem*> named(const reviewAnswer::Part& part) const;

  std::vector<ScanItem>& items_;
  std::vector<ItemGroup> groups_;
  std::vector<ScanItem*> byNumber_;
  std::set<const ScanItem*> shown_;
};

}  // namespace quorvane
