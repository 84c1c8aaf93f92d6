#pragma once

#include "quorvane/app/cli/arguments/Identifiers.h"
#include "quorvane/removal/CleaningHistory.h"

#include <cstddef>
#include <string>
#include <unordered_map>
#include <vector>

namespace quorvane {

/// The identifiers by which a person names what the history holds. The entries outlive it.
class HistoryNames {
 public:
  /// An entry, and the identifier of that or of one of its items.
  struct Named {
    const CleaningHistoryEntry* entry;
    Uuid id;
  };

  explicit HistoryNames(const std::vector<CleaningHistoryEntry>& entries);

  /// The entry with that identifier, or the one that holds an item with it. The beginning of an identifier will do, as
  /// `Identifiers` tells. Wrong usage otherwise.
  Outcome<Named, CommandError> find(const std::string& given) const;

  /// How many characters tell all identifiers apart, but not less than eight.
  std::size_t distinctLength() const { return identifiers_.distinctLength(); }

 private:
  void add(const Uuid& id, const CleaningHistoryEntry& entry);

  Identifiers identifiers_;
  std::unordered_map<Uuid, const CleaningHistoryEntry*> entries_;
};

}  // namespace quorvane
