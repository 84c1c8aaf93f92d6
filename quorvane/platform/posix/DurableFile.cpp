#include "quorvane/platform/DurableFile.h"

#include <cerrno>
#include <optional>

#include <sys/stat.h>
#include <unistd.h>

namespace quorvane {

namespace {

Outcome<void, PosixError> writeAll(FileSystem& fileSystem, int file, std::span<const std::byte> bytes) {
  while (!bytes.empty()) {
    const auto count = fileSystem.write(file, bytes);
    if (!count) return failure(count.error());
    if (*count == 0) return failure(PosixError{EIO});
    bytes = bytes.subspan(*count);
  }
  return {};
}

Outcome<void, PosixError> writeAndRename(FileSystem& fileSystem, int folder, const FileDescriptor& file,
                                         const std::string& temporary, const std::string& name,
                                         std::string_view bytes) {
  auto done = writeAll(fileSystem, file.number(), std::as_bytes(std::span(bytes)));
  if (done) done = fileSystem.synchronise(file.number());
  if (done) done = fileSystem.renameReplacing(folder, temporary.c_str(), folder, name.c_str());
  return done;
}

std::unexpected<TrustError> distrusted(TrustFault fault, PosixError reason = {}) {
  return failure(TrustError{fault, reason});
}

TrustError whyNotOpened(PosixError reason) {
  if (reason.isMissing()) return {TrustFault::missing, reason};
  const bool isLink = reason.code == ELOOP, isDeviceOrSocket = reason.code == ENXIO;
  if (isLink || isDeviceOrSocket) return {TrustFault::notRegularFile, {}};
  return {TrustFault::unreadable, reason};
}

std::optional<TrustFault> faultOf(const FileStatus& status, std::size_t limit) {
  if (!status.isRegularFile()) return TrustFault::notRegularFile;
  if (status.owner != ::geteuid()) return TrustFault::foreignOwner;
  // No link at all is well: the file was replaced after it was opened, and holds the old content as a whole.
  if (status.linkCount > 1) return TrustFault::severalLinks;
  if ((status.permissions & (S_IWGRP | S_IWOTH)) != 0) return TrustFault::writableByOthers;
  if (status.size < 0 || static_cast<std::uint64_t>(status.size) > limit) return TrustFault::tooLarge;
  return std::nullopt;
}

}  // namespace

Outcome<void, PosixError> replaceFile(FileSystem& fileSystem, int folder, const std::string& name,
                                      std::string_view bytes, std::string_view uniqueText) {
  const std::string temporary = name + ".tmp-" + std::string(uniqueText);
  const auto file = fileSystem.createFile(folder, temporary.c_str());
  if (!file) return failure(file.error());
  if (auto done = writeAndRename(fileSystem, folder, *file, temporary, name, bytes); !done) {
    (void)fileSystem.removeFile(folder, temporary.c_str());  // what failed first is what the caller is told
    return done;
  }
  return fileSystem.synchronise(folder);
}

Outcome<std::string, TrustError> readTrusted(FileSystem& fileSystem, int folder, const std::string& name,
                                             std::size_t limit) {
  const auto file = fileSystem.openFile(folder, name.c_str());
  if (!file) return failure(whyNotOpened(file.error()));
  const auto status = fileSystem.status(file->number());
  if (!status) return distrusted(TrustFault::unreadable, status.error());
  if (const auto fault = faultOf(*status, limit)) return distrusted(*fault);
  auto content = readToEnd(fileSystem, file->number(), limit);
  if (content) return std::move(*content);
  if (content.error().code == EFBIG) return distrusted(TrustFault::tooLarge);
  return distrusted(TrustFault::unreadable, content.error());
}

}  // namespace quorvane
