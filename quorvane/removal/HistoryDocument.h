#pragma once

#include "quorvane/removal/CleaningHistory.h"

#include <cstddef>
#include <cstdint>
#include <deque>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace quorvane {

/// The whole history: each entry decoded and as the text that stands in the file, so that a change costs the encoding
/// of what changed only.
class HistoryDocument {
 public:
  /// Reads a JSON array of entries. An entry that does not have their form, or an identifier that
  /// names two things, refuses the whole text.
  static Outcome<HistoryDocument, JsonError> decode(std::string_view text);

  /// Newest first.
  const std::deque<CleaningHistoryEntry>& entries() const { return entries_; }

  // None of these searches the history, however long it is.

  /// The entry with this identifier, or the one that holds an item with it.
  const CleaningHistoryEntry* find(const Uuid& entryOrItem) const;
  /// Whether an entry or an item has this identifier.
  bool knows(const Uuid& entryOrItem) const { return serialOf_.contains(entryOrItem); }
  /// Whether an entry has it.
  bool holdsEntry(const Uuid& entry) const;

  void insertFront(std::vector<CleaningHistoryEntry> entries);
  /// Puts an entry in the place of the one with its identifier, which the history holds.
  void replace(CleaningHistoryEntry entry);
  /// Takes out an entry that the history holds.
  void erase(const Uuid& entry);

  /// The pieces of the file's text, in their order; valid until the next change.
  std::vector<std::string_view> pieces() const;

 private:
  std::size_t placeHolding(const Uuid& entryOrItem) const;
  std::size_t placeOf(const Uuid& entry) const;
  bool takeIdentifiers(const CleaningHistoryEntry& entry, std::int64_t serial);

  // One of each for an entry, in the order of the entries.
  std::deque<CleaningHistoryEntry> entries_;
  std::deque<std::string> texts_;     ///< with what stands between it and the next one
  std::deque<std::int64_t> serials_;  ///< ascending; an entry keeps its own while others come and go

  std::unordered_map<Uuid, std::int64_t> serialOf_;  ///< by the identifiers of all entries and items
};

}  // namespace quorvane
