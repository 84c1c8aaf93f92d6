#pragma once

#include "quorvane/base/CaseNames.h"
#include "quorvane/base/Uuid.h"
#include "quorvane/platform/FileSystem.h"

#include <functional>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace quorvane {

/// Replaces a file as a whole by the pieces, one behind the other: whoever looks, also after a power cut, finds the old
/// content or the new one.
///
/// Writes a temporary sibling (exclusive, no link followed, permissions 0600), brings it to the disk, renames it over
/// `name`, and brings the folder to the disk. After a failure the old file stands, or the new one if only the last step
/// failed; the temporary is taken away, unless the process is killed meanwhile: then a file named `name` + ".writing-"
/// + `identifier` stays, for `removeAbandonedTemporaries`.
///
/// `beforeRename`, if given, is called when the temporary is on the disk; its failure leaves the old file.
Outcome<void, PosixError> replaceFile(FileSystem& fileSystem, int folder, const std::string& name,
                                      std::span<const std::string_view> pieces, const Uuid& identifier,
                                      const std::function<Outcome<void, PosixError>()>& beforeRename = {});
Outcome<void, PosixError> replaceFile(FileSystem& fileSystem, int folder, const std::string& name,
                                      std::string_view bytes, const Uuid& identifier);

/// Takes away the temporaries of `name` that killed processes left. Only to be called by who alone may replace the file
/// now. What cannot be taken away stays.
void removeAbandonedTemporaries(FileSystem& fileSystem, int folder, const std::string& name);

/// Why a state file, or the folder it lies in, is not believed.
enum class TrustFault {
  missing,         ///< nothing stands there; not a fault where the file need not exist yet
  unreadable,      ///< the system refuses to read it
  notRegularFile,  ///< a link, folder, pipe, ...
  foreignOwner,    ///< owned by somebody else than the effective user
  severalLinks,    ///< it has a second name
  writableByOthers,
  tooLarge,
  busy,  ///< somebody else holds the lock
};
QV_CASE_NAMES(TrustFault, missing, unreadable, notRegularFile, foreignOwner, severalLinks, writableByOthers, tooLarge,
              busy)

struct TrustError {
  TrustFault fault;
  PosixError reason;  ///< for `missing` and `unreadable`

  bool operator==(const TrustError&) const = default;
};

/// Whether a folder, as opened, could have been filled by somebody else: owned by another user than the effective one,
/// or writable by group or others.
std::optional<TrustFault> faultOfFolder(const FileStatus& folder);

/// Takes a lock as `FileSystem::lockFile` does. A file that somebody else could have made, or that is not empty, is
/// refused.
Outcome<FileDescriptor, TrustError> lockTrusted(FileSystem& fileSystem, int folder, const std::string& name);

/// Whether a lock is still the one that the next who wants it would find: somebody may have taken its file away.
bool isStillLockedBy(FileSystem& fileSystem, int lock, int folder, const std::string& name);

/// Reads a file that the program keeps its state in: a regular file of the effective user with exactly one link, not
/// writable by group or others, and of at most `limit` bytes. Anything else is refused and left as it is.
Outcome<std::string, TrustError> readTrusted(FileSystem& fileSystem, int folder, const std::string& name,
                                             std::size_t limit);

}  // namespace quorvane
