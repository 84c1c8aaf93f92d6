#pragma once

#include <algorithm>
#include <vector>

namespace quorvane {

/// Sorts a list and keeps each of its elements once.
template <class T>
void sortUniquely(std::vector<T>& list) {
  std::ranges::sort(list);
  const auto repeated = std::ranges::unique(list);
  list.erase(repeated.begin(), repeated.end());
}

}  // namespace quorvane
