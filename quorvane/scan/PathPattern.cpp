#include "quorvane/scan/PathPattern.h"

namespace quorvane {

PatternMatch matched(const FilePath& path, const FilePath& pattern) {
  const auto parts = componentsOf(path.bytes);
  const auto wanted = componentsOf(pattern.bytes);
  for (std::size_t i = 0; i < parts.size() && i < wanted.size(); ++i)
    if (wanted[i] != "*" && wanted[i] != parts[i]) return PatternMatch::none;
  if (parts.size() < wanted.size()) return PatternMatch::above;
  return parts.size() == wanted.size() ? PatternMatch::exactly : PatternMatch::below;
}

}  // namespace quorvane
