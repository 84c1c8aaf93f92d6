#include "quorvane/cleaning/CleaningSelection.h"

#include <algorithm>
#include <chrono>
#include <functional>
#include <map>
#include <set>

namespace quorvane {

namespace {

constexpr std::chrono::hours oldestSelection{24};

/// Finds what selectors name, each with a few comparisons.
class ItemIndex {
 public:
  explicit ItemIndex(const std::vector<ScanItem>& items) : items_(items) {
    for (std::size_t i = 0; i < items.size(); ++i) {
      byIdentifier_.emplace(items[i].id, i);
      byPath_.emplace(items[i].url.path, i);
    }
  }

  /// The items that a selector selects: a category or a level does not select what is blocked.
  std::vector<std::size_t> selectedBy(const std::string& selector) const {
    std::vector<std::size_t> found = named(selector);
    const bool isGroup = caseFromName<ScanCategory>(selector) || caseFromName<SafetyLevel>(selector);
    if (isGroup) std::erase_if(found, [&](std::size_t i) { return items_[i].safety == SafetyLevel::blocked; });
    return found;
  }

  /// The items that a selector names; none where it is no selector.
  std::vector<std::size_t> named(const std::string& selector) const {
    if (selector.starts_with('/')) return atOrBelow(standardised({selector}));
    if (const auto identifier = uuidFromText(selector)) return withIdentifier(*identifier);
    if (const auto category = caseFromName<ScanCategory>(selector))
      return where([&](const ScanItem& item) { return item.category == *category; });
    if (const auto level = caseFromName<SafetyLevel>(selector))
      return where([&](const ScanItem& item) { return item.safety == *level; });
    return {};
  }

 private:
  std::vector<std::size_t> withIdentifier(const Uuid& identifier) const {
    std::vector<std::size_t> found;
    const auto [first, last] = byIdentifier_.equal_range(identifier);
    for (auto each = first; each != last; ++each) found.push_back(each->second);
    return found;
  }

  std::vector<std::size_t> atOrBelow(const FilePath& path) const {
    std::vector<std::size_t> found;
    const auto [first, last] = byPath_.equal_range(path);
    for (auto each = first; each != last; ++each) found.push_back(each->second);
    const FilePath below{path.bytes == "/" ? path.bytes : path.bytes + "/"};
    for (auto each = byPath_.lower_bound(below); each != byPath_.end() && isBelow(each->first, path); ++each)
      found.push_back(each->second);
    return found;
  }

  std::vector<std::size_t> where(const std::function<bool(const ScanItem&)>& isMeant) const {
    std::vector<std::size_t> found;
    for (std::size_t i = 0; i < items_.size(); ++i)
      if (isMeant(items_[i])) found.push_back(i);
    return found;
  }

  const std::vector<ScanItem>& items_;
  std::multimap<Uuid, std::size_t> byIdentifier_;
  std::multimap<FilePath, std::size_t> byPath_;
};

using Finding = std::vector<std::size_t> (ItemIndex::*)(const std::string&) const;

Outcome<std::set<std::size_t>, SelectionError> foundByAll(const ItemIndex& index,
                                                          const std::vector<std::string>& selectors, Finding finding) {
  std::set<std::size_t> all;
  for (const std::string& selector : selectors) {
    const std::vector<std::size_t> found = (index.*finding)(selector);
    if (found.empty()) return failure(SelectionError{selector});
    all.insert(found.begin(), found.end());
  }
  return all;
}

}  // namespace

Outcome<void, SelectionError> applySelection(std::vector<ScanItem>& items, const SelectionRequest& request) {
  const ItemIndex index(items);
  const auto selected = foundByAll(index, request.select, &ItemIndex::selectedBy);
  if (!selected) return failure(selected.error());
  const auto unselected = foundByAll(index, request.unselect, &ItemIndex::named);
  if (!unselected) return failure(unselected.error());
  for (std::size_t i = 0; i < items.size(); ++i) {
    if (!request.select.empty()) items[i].isSelected = selected->contains(i);
    if (unselected->contains(i)) items[i].isSelected = false;
  }
  return {};
}

std::vector<ScanItem> selectedItems(std::vector<ScanItem> items) {
  std::erase_if(items, [](const ScanItem& item) { return !item.isSelected; });
  return items;
}

std::optional<StaleScanSelection> staleSelection(const ScanResult& result, Date now) {
  return staleSelection(result.finishedAt, now);
}

std::optional<StaleScanSelection> staleSelection(Date finishedAt, Date now) {
  const bool isOld = finishedAt < now - oldestSelection;
  if (isOld || finishedAt > now) return StaleScanSelection{finishedAt};
  return std::nullopt;
}

}  // namespace quorvane
