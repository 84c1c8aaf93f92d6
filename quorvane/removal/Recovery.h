#pragma once

#include "quorvane/base/CaseNames.h"
#include "quorvane/base/Uuid.h"

#include <string>

namespace quorvane {

/// One item of one entry of the history.
struct RecoveryReference {
  Uuid entryID;
  Uuid itemID;

  bool operator==(const RecoveryReference&) const = default;
};

/// Why an item could not be put back. It stays in the Trash, if it was there.
enum class RecoveryFailure {
  conflict,       ///< something already exists at the original path
  missing,        ///< the item is no longer in the Trash
  permission,     ///< the system does not let this user do it
  changed,        ///< what is in the Trash under its name is not what was moved, or the Trash is another one
  unsupported,    ///< there is nothing to put back: it was not moved to the Trash, or is back already
  parentMissing,  ///< the original folder no longer exists
  other,
};
QV_CASE_NAMES(RecoveryFailure, conflict, missing, permission, changed, unsupported, parentMissing, other)

/// "recovery.failure." and the name of the case.
std::string messageKey(RecoveryFailure failure);

/// What to do with an item whose original path is taken.
enum class RestoreConflictPolicy {
  skip,      ///< leave it in the Trash
  keepBoth,  ///< restore it beside, under a new name
};
QV_CASE_NAMES(RestoreConflictPolicy, skip, keepBoth)

}  // namespace quorvane
