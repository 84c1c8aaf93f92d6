#pragma once

#include "quorvane/app/cli/arguments/CommandError.h"
#include "quorvane/app/cli/reports/HistoryRuns.h"

#include <cstddef>
#include <map>
#include <string>

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

  /// The entry with that identifier, or the one that holds an item with it. The beginning of an identifier will do,
  /// from four characters on, when it is that of no other. Wrong usage otherwise; where several begin so, they are
  /// told.
  Outcome<Named, CommandError> find(const std::string& given) const;

  /// How many characters tell all identifiers apart, but not less than eight.
  std::size_t distinctLength() const;

 private:
  std::map<std::string, Named> byText_;  ///< by their texts in small letters
};

}  // namespace quorvane
