#pragma once

#include "quorvane/base/CaseNames.h"
#include "quorvane/core/FileProtectionError.h"
#include "quorvane/platform/PosixError.h"
#include "quorvane/removal/CleaningHistory.h"
#include "quorvane/removal/RecoveryStoreError.h"

#include <functional>
#include <string>
#include <string_view>
#include <variant>

namespace quorvane {

enum class CleanupMoveError {
  externalMovePending,  ///< the tree, or one around or inside it, was handed to the administrator mover, which has not
                        ///< answered
};
QV_CASE_NAMES(CleanupMoveError, externalMovePending)

/// Why one move was refused, or failed. A system's own reason is passed on unchanged.
using MoveFailure = std::variant<FileProtectionError, CleanupMoveError, PosixError, RecoveryStoreError>;

/// "protection.error." and the case, "cleanup.journal.externalPending", "history.error." and the fault, or one of
/// "cleanup.failure.missing", "cleanup.failure.permission", "cleanup.failure.noSpace" and "cleanup.failure.system".
std::string messageKey(const MoveFailure& failure);

CleanupFailureCategory categoryOf(const MoveFailure& failure);

/// The message keys of the texts that the journal puts into records.
namespace journalKeys {
inline constexpr std::string_view interrupted = "cleanup.journal.interrupted";
inline constexpr std::string_view externalPending = "cleanup.journal.externalPending";
inline constexpr std::string_view unavailable = "cleanup.journal.unavailable";
}  // namespace journalKeys

/// The texts that records hold for people, by message key; handed in by whoever knows the language.
using RecordTexts = std::function<std::string(std::string_view messageKey)>;

}  // namespace quorvane
