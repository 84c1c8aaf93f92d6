#include "quorvane/platform/PosixError.h"

#include <cerrno>

namespace quorvane {

bool PosixError::isMissing() const { return code == ENOENT; }

bool PosixError::isDenied() const { return code == EACCES || code == EPERM; }

bool PosixError::isLink() const { return code == ELOOP; }

bool PosixError::isOtherKind() const { return code == ENOTDIR || isLink(); }

bool PosixError::isCancelled() const { return code == ECANCELED; }

PosixError linkError() { return {ELOOP}; }

PosixError cancelledError() { return {ECANCELED}; }

PosixError lastPosixError() { return {errno}; }

}  // namespace quorvane
