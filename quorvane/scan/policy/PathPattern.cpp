#include "quorvane/scan/policy/PathPattern.h"

#include <algorithm>
#include <optional>
#include <string_view>

namespace quorvane {

namespace {

/// The next component, taken off the path; nothing at its end. A scan asks this so often that a list of them costs.
std::optional<std::string_view> takeComponent(std::string_view& path) {
  path.remove_prefix(std::min(path.find_first_not_of('/'), path.size()));
  if (path.empty()) return std::nullopt;
  const std::string_view component = path.substr(0, path.find('/'));
  path.remove_prefix(component.size());
  return component;
}

}  // namespace

PatternMatch matched(const FilePath& path, const FilePath& pattern) {
  std::string_view parts = path.bytes, wanted = pattern.bytes;
  for (;;) {
    const auto part = takeComponent(parts), want = takeComponent(wanted);
    if (!part && !want) return PatternMatch::exactly;
    if (!part) return PatternMatch::above;
    if (!want) return PatternMatch::below;
    if (*want != "*" && *want != *part) return PatternMatch::none;
  }
}

}  // namespace quorvane
