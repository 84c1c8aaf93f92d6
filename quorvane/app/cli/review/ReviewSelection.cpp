#include "quorvane/app/cli/review/ReviewSelection.h"

#include "quorvane/base/Utf8.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace quorvane {

ReviewSelection::ReviewSelection(std::vector<ScanItem>& items) : items_(items), groups_(groupedByCategory(items)) {
  for (ItemGroup& group : groups_) {
    for (ListedItem& listed : group.items) {
      byNumber_.push_back(&items_[static_cast<std::size_t>(listed.item - items_.data())]);
      listed.number = byNumber_.size();
    }
  }
}

std::vector<ScanItem*> ReviewSelection::named(const reviewAnswer::Part& part) const {
  std::vector<ScanItem*> found;
  if (const auto* numbers = std::get_if<reviewAnswer::Numbers>(&part)) {
    for (std::size_t i = numbers->first; i <= std::min(numbers->last, byNumber_.size()); ++i)
      found.push_back(byNumber_[i - 1]);
    return found;
  }
  const std::string word = asciiLowered(std::get<reviewAnswer::Word>(part).word);
  for (ScanItem* item : byNumber_)
    if (asciiLowered(caseName(item->category)) == word || caseName(item->safety) == word) found.push_back(item);
  return found;
}

ReviewSelection::Applied ReviewSelection::apply(const reviewAnswer::Part& part) {
  std::vector<ScanItem*> items = named(part);
  if (items.empty()) return {Change::unknown};
  std::erase_if(items, [](const ScanItem* item) { return item->safety == SafetyLevel::blocked && !item->isSelected; });
  if (items.empty()) return {Change::onlyBlocked};
  Applied applied{Change::notShown};
  std::ranges::copy_if(items, std::back_inserter(applied.toShow),
                       [this](const ScanItem* item) { return !shown_.contains(item); });
  if (!applied.toShow.empty()) return applied;
  const bool selects = !std::ranges::all_of(items, &ScanItem::isSelected);
  applied.change = selects ? Change::selected : Change::unselected;
  for (ScanItem* item : items)
    if (std::exchange(item->isSelected, selects) != selects && selects) applied.toShow.push_back(item);
  return applied;
}

void ReviewSelection::setShown(const std::vector<ItemGroup>& groups) {
  for (const ItemGroup& group : groups)
    for (const ListedItem& listed : group.items) shown_.insert(listed.item);
}

const ScanItem* ReviewSelection::itemNumbered(std::size_t number) const {
  return number == 0 || number > byNumber_.size() ? nullptr : byNumber_[number - 1];
}

std::vector<ItemGroup> ReviewSelection::selected() const {
  std::set<const ScanItem*> items;
  for (const ScanItem& item : items_)
    if (item.isSelected) items.insert(&item);
  return groupsOf(items);
}

std::vector<ItemGroup> ReviewSelection::groupsOf(const std::set<const ScanItem*>& items) const {
  std::vector<ItemGroup> groups = groups_;
  for (ItemGroup& group : groups)
    std::erase_if(group.items, [&](const ListedItem& each) { return !items.contains(each.item); });
  std::erase_if(groups, [](const ItemGroup& group) { return group.items.empty(); });
  return groups;
}

std::vector<std::string> ReviewSelection::categoryNames() const {
  std::vector<std::string> names;
  names.reserve(groups_.size());
  for (const ItemGroup& group : groups_) names.emplace_back(caseName(group.category));
  return names;
}

ItemSum ReviewSelection::selectedSum() const { return sumOf(items_, &ScanItem::isSelected); }

}  // namespace quorvane
