#pragma once

#include "quorvane/app/cli/ItemTable.h"
#include "quorvane/app/cli/ReviewAnswer.h"
#include "quorvane/core/ScanResult.h"

#include <vector>

namespace quorvane {

/// The items of a scan as a person reviews them: each with a number that stays, and selected or not.
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
  };
  Change apply(const reviewAnswer::Part& part);

  /// Nothing when there is no such number.
  const ScanItem* itemNumbered(std::size_t number) const;

  std::vector<ItemGroup> all() const { return groups_; }
  std::vector<ItemGroup> selected() const;
  ItemSum selectedSum() const;
  /// The categories that there are, as a person types them.
  std::vector<std::string> categoryNames() const;
  std::size_t count() const { return byNumber_.size(); }

 private:
  std::vector<ScanItem*> named(const reviewAnswer::Part& part) const;

  std::vector<ScanItem>& items_;
  std::vector<ItemGroup> groups_;
  std::vector<ScanItem*> byNumber_;
};

}  // namespace quorvane
