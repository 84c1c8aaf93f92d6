#pragma once

#include <string>
#include <vector>

namespace quorvane {

/// What stands in the place of an option's value or of an argument: what the parser takes, the help lists, and shells
/// complete.
enum class ValueKind {
  anything,  ///< a number, an identifier
  file,
  folder,
  path,            ///< of a file or folder; the command may take an identifier as well
  category,        ///< one of its choices
  layout,          ///< one of its choices; the first is that of the running system
  conflictPolicy,  ///< one of its choices, in the order of `RestoreConflictPolicy`
  sortMode,        ///< one of its choices
  selector,        ///< one of its choices, a path, or an identifier
};

/// The words that a value of this kind can be, in the order in which people are told them; none where it has no words
/// of its own.
std::vector<std::string> choicesOf(ValueKind kind);

}  // namespace quorvane
