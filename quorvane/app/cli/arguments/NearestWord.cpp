#include "quorvane/app/cli/arguments/NearestWord.h"

#include "quorvane/base/Utf8.h"

#include <algorithm>
#include <utility>
#include <vector>

namespace quorvane {

namespace {

constexpr std::size_t longestWord = 64, shortestBeginning = 3;

// Optimal string alignment distance: the Levenshtein distance with swapped neighbours counting as one change.
std::size_t distance(std::string_view left, std::string_view right) {
  std::vector<std::size_t> beforeLast, last(right.size() + 1), current(right.size() + 1);
  for (std::size_t j = 0; j <= right.size(); ++j) last[j] = j;
  for (std::size_t i = 1; i <= left.size(); ++i) {
    current[0] = i;
    for (std::size_t j = 1; j <= right.size(); ++j) {
      const bool isSame = left[i - 1] == right[j - 1];
      current[j] = std::min({last[j] + 1, current[j - 1] + 1, last[j - 1] + (isSame ? 0 : 1)});
      if (i > 1 && j > 1 && left[i - 1] == right[j - 2] && left[i - 2] == right[j - 1])
        current[j] = std::min(current[j], beforeLast[j - 2] + 1);
    }
    beforeLast = std::exchange(last, current);
  }
  return last[right.size()];
}

}  // namespace

std::optional<std::string> nearestWord(std::string_view mistyped, std::span<const std::string> words) {
  if (mistyped.size() > longestWord) return std::nullopt;
  const std::string given = asciiLowered(mistyped);
  const auto goesOn = [&](const std::string& word) { return asciiLowered(word).starts_with(given); };
  if (given.size() >= shortestBeginning && std::ranges::count_if(words, goesOn) == 1)
    return *std::ranges::find_if(words, goesOn);
  std::optional<std::string> nearest;
  std::size_t fewest = std::max<std::size_t>(1, given.size() / 3) + 1;
  for (const std::string& word : words) {
    const std::size_t changes = distance(given, asciiLowered(word));
    if (changes < fewest && changes < word.size()) {
      fewest = changes;
      nearest = word;
    }
  }
  return nearest;
}

}  // namespace quorvane
