#include "quorvane/app/cli/reports/HistoryNames.h"

#include "quorvane/base/Utf8.h"

#include <algorithm>
#include <iterator>
#include <span>

namespace quorvane {

namespace {

constexpr std::size_t fewestCharacters = 4, fewestShown = 8, candidatesShown = 5;

CommandError ambiguous(const std::string& given, std::span<const HistoryNames::Named> candidates) {
  MessageList list;
  for (const HistoryNames::Named& each : candidates.first(std::min(candidates.size(), candidatesShown)))
    list.texts.push_back(uuidText(each.id));
  const std::int64_t more = std::ssize(candidates) - std::ssize(list.texts);
  const char* key = more > 0 ? "cli.error.ambiguousIdentifierOfMany" : "cli.error.ambiguousIdentifier";
  return {ExitCode::wrongUsage, {key, {{"given", given}, {"candidates", list}, {"more", more}}}};
}

}  // namespace

HistoryNames::HistoryNames(const std::vector<CleaningHistoryEntry>& entries) {
  for (const CleaningHistoryEntry& entry : entries)
    byText_.emplace(asciiLowered(uuidText(entry.id)), Named{&entry, entry.id});
  for (const CleaningHistoryEntry& entry : entries)
    for (const CleaningHistoryItem& item : entry.items)
      byText_.emplace(asciiLowered(uuidText(item.id)), Named{&entry, item.id});
}

Outcome<HistoryNames::Named, CommandError> HistoryNames::find(const std::string& given) const {
  const std::string beginning = asciiLowered(given);
  std::vector<Named> candidates;
  if (beginning.size() >= fewestCharacters)
    for (auto each = byText_.lower_bound(beginning); each != byText_.end(); ++each) {
      if (!each->first.starts_with(beginning)) break;
      candidates.push_back(each->second);
    }
  if (candidates.empty())
    return failure(CommandError{ExitCode::wrongUsage, {"cli.error.noSuchEntry", {{"given", given}}}});
  if (candidates.size() > 1) return failure(ambiguous(given, candidates));
  return candidates.front();
}

std::size_t HistoryNames::distinctLength() const {
  std::size_t length = fewestShown;
  const std::string* before = nullptr;
  for (const auto& [text, named] : byText_) {
    if (before != nullptr) {
      const auto same = std::ranges::mismatch(*before, text).in1 - before->begin();
      length = std::max(length, static_cast<std::size_t>(same) + 1);
    }
    before = &text;
  }
  return length;
}

}  // namespace quorvane
