#include "quorvane/app/cli/NamedEntry.h"

#include "quorvane/base/Utf8.h"

#include <algorithm>
#include <iterator>
#include <map>

namespace quorvane {

namespace {

constexpr std::size_t fewestCharacters = 4, fewestShown = 8, candidatesShown = 5;

// By their texts in small letters, in order.
using Identifiers = std::map<std::string, NamedEntry>;

Identifiers identifiersOf(const std::vector<CleaningHistoryEntry>& entries) {
  Identifiers identifiers;
  for (const CleaningHistoryEntry& entry : entries)
    identifiers.emplace(asciiLowered(uuidText(entry.id)), NamedEntry{&entry, entry.id});
  for (const CleaningHistoryEntry& entry : entries)
    for (const CleaningHistoryItem& item : entry.items)
      identifiers.emplace(asciiLowered(uuidText(item.id)), NamedEntry{&entry, item.id});
  return identifiers;
}

CommandError ambiguous(const std::string& given, std::span<const NamedEntry> candidates) {
  MessageList list;
  for (const NamedEntry& each : candidates.first(std::min(candidates.size(), candidatesShown)))
    list.texts.push_back(uuidText(each.id));
  const auto more = std::ssize(candidates) - std::ssize(list.texts);
  const char* key = more > 0 ? "cli.error.ambiguousIdentifierOfMany" : "cli.error.ambiguousIdentifier";
  return {ExitCode::wrongUsage, {key, {{"given", given}, {"candidates", list}, {"more", more}}}};
}

}  // namespace

Outcome<NamedEntry, CommandError> namedEntry(const std::vector<CleaningHistoryEntry>& entries,
                                             const std::string& given) {
  const Identifiers identifiers = identifiersOf(entries);
  const std::string beginning = asciiLowered(given);
  std::vector<NamedEntry> candidates;
  if (beginning.size() >= fewestCharacters)
    for (auto each = identifiers.lower_bound(beginning); each != identifiers.end(); ++each) {
      if (!each->first.starts_with(beginning)) break;
      candidates.push_back(each->second);
    }
  if (candidates.empty())
    return failure(CommandError{ExitCode::wrongUsage, {"cli.error.noSuchEntry", {{"given", given}}}});
  if (candidates.size() > 1) return failure(ambiguous(given, candidates));
  return candidates.front();
}

std::size_t distinctLength(const std::vector<CleaningHistoryEntry>& entries) {
  std::size_t length = fewestShown;
  const Identifiers identifiers = identifiersOf(entries);
  for (auto each = identifiers.begin(); each != identifiers.end() && std::next(each) != identifiers.end(); ++each) {
    const auto same = std::ranges::mismatch(each->first, std::next(each)->first).in1 - each->first.begin();
    length = std::max(length, static_cast<std::size_t>(same) + 1);
  }
  return length;
}

}  // namespace quorvane
