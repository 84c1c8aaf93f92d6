#include "quorvane/app/cli/arguments/Identifiers.h"

#include "quorvane/base/Utf8.h"

#include <algorithm>
#include <iterator>
#include <span>
#include <vector>

namespace quorvane {

namespace {

constexpr std::size_t fewestCharacters = 4, fewestShown = 8, candidatesShown = 5;

CommandError ambiguous(const std::string& given, std::span<const Uuid> candidates) {
  MessageList list;
  for (const Uuid& each : candidates.first(std::min(candidates.size(), candidatesShown)))
    list.texts.push_back(uuidText(each));
  const std::int64_t more = std::ssize(candidates) - std::ssize(list.texts);
  const char* key = more > 0 ? "cli.error.ambiguousIdentifierOfMany" : "cli.error.ambiguousIdentifier";
  return {ExitCode::wrongUsage, {key, {{"given", given}, {"candidates", list}, {"more", more}}}};
}

}  // namespace

void Identifiers::add(const Uuid& id) { texts_.insert(asciiLowered(uuidText(id))); }

Outcome<std::optional<Uuid>, CommandError> Identifiers::find(const std::string& beginning) const {
  if (beginning.size() < fewestCharacters) return std::nullopt;
  const std::string lowered = asciiLowered(beginning);
  std::vector<Uuid> candidates;
  for (auto each = texts_.lower_bound(lowered); each != texts_.end() && each->starts_with(lowered); ++each)
    if (const auto id = uuidFromText(*each)) candidates.push_back(*id);
  if (candidates.empty()) return std::nullopt;
  if (candidates.size() > 1) return failure(ambiguous(beginning, candidates));
  return candidates.front();
}

std::size_t Identifiers::distinctLength() const {
  std::size_t length = fewestShown;
  const std::string* before = nullptr;
  for (const std::string& text : texts_) {
    if (before != nullptr) {
      const auto same = std::ranges::mismatch(*before, text).in1 - before->begin();
      length = std::max(length, static_cast<std::size_t>(same) + 1);
    }
    before = &text;
  }
  return length;
}

}  // namespace quorvane
