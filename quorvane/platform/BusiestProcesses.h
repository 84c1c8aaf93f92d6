#pragma once

#include <algorithm>
#include <cstddef>
#include <vector>

namespace quorvane {

/// Keeps of the processes the `most` that `isBusier` puts first, and behind them those of the `most` that `isLarger`
/// puts first and that are not among them; drops all others. Both are strict orders without equals.
template <class Process, class IsBusier, class IsLarger>
void keepBusiest(std::vector<Process>& processes, std::size_t most, IsBusier isBusier, IsLarger isLarger) {
  const auto firstOf = [&](auto begin, auto isBefore) {
    const auto left = static_cast<std::size_t>(processes.end() - begin);
    const auto end = begin + static_cast<std::ptrdiff_t>(std::min(most, left));
    std::partial_sort(begin, end, processes.end(), isBefore);
    return end;
  };
  const auto busiestEnd = firstOf(processes.begin(), isBusier);
  const auto largestEnd = firstOf(busiestEnd, isLarger);
  // Of the largest of those left, only as many are among the largest of all as the busiest have not taken.
  const auto isAmongLargest = [&](const Process& process) {
    const auto larger =
        std::count_if(processes.begin(), busiestEnd, [&](const Process& busy) { return isLarger(busy, process); }) +
        std::count_if(busiestEnd, largestEnd, [&](const Process& other) { return isLarger(other, process); });
    return static_cast<std::size_t>(larger) < most;
  };
  const auto end = std::partition_point(busiestEnd, largestEnd, isAmongLargest);
  processes.erase(end, processes.end());
}

}  // namespace quorvane
