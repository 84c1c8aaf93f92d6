#include "quorvane/core/IgnoreRule.h"

#include "quorvane/base/JsonText.h"

#include <algorithm>

namespace quorvane {

std::string jsonText(const std::vector<IgnoreRule>& rules) { return printedRecord(rules); }

const IgnoreRule* ruleCovering(const std::vector<IgnoreRule>& rules, const FilePath& canonicalPath) {
  const auto rule = std::ranges::find_if(
      rules, [&](const IgnoreRule& candidate) { return isAtOrBelow(canonicalPath, candidate.canonicalPath); });
  return rule == rules.end() ? nullptr : &*rule;
}

}  // namespace quorvane
