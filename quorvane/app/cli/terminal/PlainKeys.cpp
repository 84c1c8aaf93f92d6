#include "quorvane/app/cli/terminal/PlainKeys.h"

#include <algorithm>
#include <utility>

namespace quorvane {

namespace {

constexpr char escape = '\x1b';

bool isIntroducer(char c) { return c == '[' || c == 'O'; }

/// The length of the key at the beginning of what was typed; 0 where its end is still to come.
std::size_t lengthOfKey(std::string_view typed) {
  if (typed.front() != escape) return 1;
  if (typed.size() == 1) return 0;
  if (!isIntroducer(typed[1])) return 2;
  const auto* const end = std::ranges::find_if(typed.substr(2), [](char c) { return c >= '@' && c <= '~'; });
  return end == typed.end() ? 0 : static_cast<std::size_t>(end - typed.begin()) + 1;
}

}  // namespace

std::string PlainKeys::take(std::string_view typed) {
  // The escape key by itself, and another key later.
  if (unfinished_.size() == 1 && !typed.empty() && !isIntroducer(typed.front())) unfinished_.clear();
  const std::string all = std::exchange(unfinished_, {}).append(typed);
  std::string keys;
  for (std::string_view left = all; !left.empty();) {
    const std::size_t length = lengthOfKey(left);
    if (length == 0) {
      unfinished_ = left;
      break;
    }
    if (length == 1) keys += left.front();
    left.remove_prefix(length);
  }
  return keys;
}

}  // namespace quorvane
