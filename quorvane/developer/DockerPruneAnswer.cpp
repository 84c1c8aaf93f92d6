#include "quorvane/developer/DockerPruneAnswer.h"

#include "quorvane/developer/DockerListing.h"
#include "quorvane/developer/DockerNames.h"

#include <algorithm>
#include <span>

namespace quorvane {

namespace {

constexpr std::string_view heading = "Deleted build cache objects:", total = "Total reclaimed space:";

bool isIdentifier(std::string_view line) { return !line.empty() && std::ranges::all_of(line, isLetterOrDigit); }

}  // namespace

std::optional<std::vector<std::string>> prunedBuildCache(std::string_view output) {
  const std::vector<std::string_view> lines = linesOf(output);
  if (lines.empty() || !lines.back().starts_with(total)) return std::nullopt;
  std::span<const std::string_view> named(lines.data(), lines.size() - 1);
  if (named.empty()) return std::vector<std::string>();
  if (named.front() != heading) return std::nullopt;
  named = named.subspan(1);
  if (!named.empty() && named.back().empty()) named = named.first(named.size() - 1);
  if (!std::ranges::all_of(named, isIdentifier)) return std::nullopt;
  return std::vector<std::string>(named.begin(), named.end());
}

}  // namespace quorvane
