#pragma once

#include "quorvane/app/cli/arguments/CommandError.h"
#include "quorvane/base/Outcome.h"
#include "quorvane/base/Uuid.h"

#include <cstddef>
#include <optional>
#include <set>
#include <string>

namespace quorvane {

/// The identifiers that there are, for whoever names one of them by its beginning.
class Identifiers {
 public:
  void add(const Uuid& id);

  /// The one that begins like this, in small or capital letters; nothing where none does, or where fewer than four
  /// characters are given. Wrong usage where several begin so; they are told.
  Outcome<std::optional<Uuid>, CommandError> find(const std::string& beginning) const;

  /// How many characters tell all of them apart, but not less than eight.
  std::size_t distinctLength() const;

 private:
  std::set<std::string> texts_;  ///< in small letters
};

}  // namespace quorvane
