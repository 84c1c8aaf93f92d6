#pragma once

#include "quorvane/base/CaseNames.h"
#include "quorvane/platform/FileSystem.h"

#include <string>
#include <string_view>

namespace quorvane {

/// Replaces a file as a whole: whoever looks, also after a power cut, finds the old content or the new one.
///
/// Writes a temporary sibling (exclusive, no link followed, permissions 0600), brings it to the disk, renames it over
/// `name`, and brings the folder to the disk. After a failure the old file stands; the temporary is taken away, unless
/// the process is killed meanwhile: then a file named `name` + ".tmp-" + a random text stays.
Outcome<void, PosixError> replaceFile(FileSystem& fileSystem, int folder, const std::string& name,
                                      std::string_view bytes, std::string_view uniqueText);

/// Why a state file is not believed.
enum class TrustFault {
  missing,         ///< nothing stands there; not a fault where the file need not exist yet
  unreadable,      ///< the system refuses to read it
  notRegularFile,  ///< a link, folder, pipe, ...
  foreignOwner,    ///< owned by somebody else than the effective user
  severalLinks,    ///< it has a second name
  writableByOthers,
  tooLarge,
};
QV_CASE_NAMES(TrustFault, missing, unreadable, notRegularFile, foreignOwner, severalLinks, writableByOthers, tooLarge)

struct TrustError {
  TrustFault fault;
  PosixError reason;  ///< for `missing` and `unreadable`

  bool operator==(const TrustError&) const = default;
};

/// Reads a file that the program keeps its state in: a regular file of the effective user with exactly one link, not
/// writable by group or others, and of at most `limit` bytes. Anything else is refused and left as it is.
Outcome<std::string, TrustError> readTrusted(FileSystem& fileSystem, int folder, const std::string& name,
                                             std::size_t limit);

}  // namespace quorvane
