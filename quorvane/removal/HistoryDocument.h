#pragma once

#include "quorvane/removal/CleaningHistory.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace quorvane {

/// The whole history: each entry decoded and as the text that stands in the file, so that a change costs the encoding of
/// what changed only.
class HistoryDocument {
 public:
  /// Reads a JSON array of entries. An entry that does not have their form refuses the whole text.
  static Outcome<HistoryDocument, JsonError> decode(std::string_view text);

  /// Newest first.
  const std::vector<CleaningHistoryEntry>& entries() const { return entries_; }
  /// The entry with this identifier, or the one that holds an item with it.
  const CleaningHistoryEntry* find(const Uuid& entryOrItem) const;

  void insertFront(std::vector<CleaningHistoryEntry> entries);
  /// Puts an entry in the place of the one with its identifier.
  void replace(const CleaningHistoryEntry& entry);
  void erase(const Uuid& entry);

  /// The pieces of the file's text, in their order; valid until the next change.
  std::vector<std::string_view> pieces() const;

 private:
  std::vector<CleaningHistoryEntry> entries_;
  std::vector<std::string> texts_;  ///< one for each entry
};

}  // namespace quorvane
