#pragma once

#include "quorvane/base/CaseNames.h"
#include "quorvane/base/FilePath.h"
#include "quorvane/platform/DurableFile.h"

#include <string>

namespace quorvane {

/// Why the history is unavailable. What it held is untouched in every case but `notWritten`, where it may hold the new
/// content already.
enum class RecoveryStoreFault {
  busy,             ///< another run of the program holds the lock
  untrustedFolder,  ///< somebody else could have filled the folder
  untrustedLock,    ///< somebody else could have made the lock file, or it is not empty
  untrusted,        ///< somebody else could have written the history
  unreadable,       ///< the system refuses to read it, or to make its folder or lock
  undecodable,      ///< it does not hold a history
  tooLarge,         ///< it holds, or would hold, more than 256 MiB
  full,             ///< it has no room for more entries besides what those it holds may still grow by
  notWritten,       ///< the new history could not be brought to the disk
};
QV_CASE_NAMES(RecoveryStoreFault, busy, untrustedFolder, untrustedLock, untrusted, unreadable, undecodable, tooLarge,
              full, notWritten)

/// The history cannot be read, locked or written.
struct RecoveryStoreError {
  RecoveryStoreFault fault;
  FilePath file;      ///< which file or folder
  PosixError reason;  ///< the system's own, where it gave one

  bool operator==(const RecoveryStoreError&) const = default;
};

/// "history.error." and the name of the case.
std::string messageKey(RecoveryStoreFault fault);

}  // namespace quorvane
