#include "quorvane/platform/PosixError.h"

#include <cerrno>

namespace quorvane {

bool PosixError::isMissing() const { return code == ENOENT; }

bool PosixError::isDenied() const { return code == EACCES || code == EPERM; }

bool PosixError::isOtherKind() const { return code == ENOTDIR || code == ELOOP; }

bool PosixError::isCancelled() const { return code == ECANCELED; }

PosixError cancelledError() { return {ECANCELED}; }

PosixError lastPosixError() { return {errno}; }

}  // namespace quorvane
