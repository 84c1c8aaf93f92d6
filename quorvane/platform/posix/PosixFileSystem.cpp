#include "quorvane/platform/posix/PosixFileSystem.h"

#include "quorvane/platform/posix/Retry.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/uio.h>
#include <unistd.h>

namespace quorvane {

namespace {

constexpr mode_t privateFilePermissions = 0600;
constexpr int mostLinksInARow = 40;
constexpr std::size_t mostPieces = 1024;  // of one call; so it is on all systems

std::unexpected<PosixError> lastFailure() { return failure(lastPosixError()); }

std::unexpected<PosixError> refused(int code) { return failure(PosixError{code}); }

Outcome<void, PosixError> succeededIfZero(int result) {
  if (result != 0) return lastFailure();
  return {};
}

Outcome<FileDescriptor, PosixError> openedAt(int folder, const char* name, int flags, mode_t permissions = 0) {
  const int number = retried([&] { return ::openat(folder, name, flags | O_CLOEXEC, permissions); });
  if (number < 0) return lastFailure();
  return FileDescriptor(number);
}

bool isDevice(const struct stat& status) { return S_ISCHR(status.st_mode) || S_ISBLK(status.st_mode); }

FilePath withoutTrailingSlashes(FilePath path) {
  while (path.bytes.size() > 1 && path.bytes.ends_with('/')) path.bytes.pop_back();
  return path;
}

Outcome<std::string, PosixError> readLink(int folder, const char* name) {
  std::string target(256, '\0');
  for (;;) {
    const ssize_t length = ::readlinkat(folder, name, target.data(), target.size());
    if (length < 0) return lastFailure();
    if (static_cast<std::size_t>(length) < target.size()) {
      target.resize(static_cast<std::size_t>(length));
      return target;
    }
    target.resize(target.size() * 2);
  }
}

Outcome<FilePath, PosixError> resolvedWithin(const FilePath& path, int linksLeft);

/// The path of something whose parent may exist while it does not: a missing name, or a link that leads nowhere.
Outcome<FilePath, PosixError> resolvedDangling(const FilePath& path, int linksLeft) {
  const std::string_view leaf = leafOf(path);
  if (leaf == "." || leaf == ".." || path.bytes == "/") return refused(ENOENT);
  const auto parent = resolvedWithin(parentOf(path), linksLeft);
  if (!parent) return failure(parent.error());
  FilePath own = joined(*parent, leaf);
  const auto target = readLink(AT_FDCWD, own.bytes.c_str());
  if (!target) return own;
  return resolvedWithin(target->starts_with('/') ? FilePath{*target} : joined(*parent, *target), linksLeft - 1);
}

Outcome<FilePath, PosixError> resolvedWithin(const FilePath& given, int linksLeft) {
  if (linksLeft == 0) return refused(ELOOP);
  const FilePath path = withoutTrailingSlashes(given);
  const std::unique_ptr<char, void (*)(void*)> real(::realpath(path.bytes.c_str(), nullptr), std::free);
  if (real) return FilePath{real.get()};
  if (!lastPosixError().isMissing()) return lastFailure();
  return resolvedDangling(path, linksLeft);
}

}  // namespace

bool PosixFileSystem::isLeaf(const char* name) {
  const bool isDotName = name[0] == '.' && (name[1] == '\0' || (name[1] == '.' && name[2] == '\0'));
  return name[0] != '\0' && !isDotName && std::strchr(name, '/') == nullptr;
}

Outcome<FileDescriptor, PosixError> PosixFileSystem::openStartingFolder(const FilePath& path) {
  if (!isAbsolute(path.bytes)) return refused(EINVAL);
  return openedAt(AT_FDCWD, path.bytes.c_str(), O_RDONLY | O_DIRECTORY);
}

Outcome<FilePath, PosixError> PosixFileSystem::resolved(const FilePath& path) {
  if (!isAbsolute(path.bytes)) return refused(EINVAL);
  return resolvedWithin(path, mostLinksInARow);
}

Outcome<FileDescriptor, PosixError> PosixFileSystem::openRealFolder(const FilePath& path) {
  if (!isAbsolute(path.bytes) || path != standardised(path)) return refused(EINVAL);
  const int number = retried([&] { return systemOpenRealFolder(path.bytes.c_str()); });
  if (number >= 0) return FileDescriptor(number);
  if (lastPosixError().code != ENOSYS) return lastFailure();
  auto root = openStartingFolder({"/"});
  if (!root || path.bytes == "/") return root;
  return openFolderBelow(*this, root->number(), std::string_view(path.bytes).substr(1));
}

Outcome<FileDescriptor, PosixError> PosixFileSystem::openFolder(int folder, const char* name) {
  if (!isLeaf(name)) return refused(EINVAL);
  auto opened = openedAt(folder, name, O_RDONLY | O_DIRECTORY | O_NOFOLLOW);
  if (opened || opened.error().code != ENOTDIR) return opened;
  // Systems differ in what they say of a link here.
  struct stat status {};
  const bool isLink = ::fstatat(folder, name, &status, AT_SYMLINK_NOFOLLOW) == 0 && S_ISLNK(status.st_mode);
  return refused(isLink ? ELOOP : ENOTDIR);
}

Outcome<FileDescriptor, PosixError> PosixFileSystem::openFile(int folder, const char* name) {
  if (!isLeaf(name)) return refused(EINVAL);
  // Opening a device can already do something, such as rewinding a tape: it is looked at first.
  struct stat status {};
  if (::fstatat(folder, name, &status, AT_SYMLINK_NOFOLLOW) != 0) return lastFailure();
  if (isDevice(status)) return refused(ENXIO);
  auto file = openedAt(folder, name, O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY);
  if (!file) return file;
  if (::fstat(file->number(), &status) != 0) return lastFailure();
  if (isDevice(status)) return refused(ENXIO);
  return file;
}

Outcome<std::string, PosixError> PosixFileSystem::linkTarget(int folder, const char* name) {
  if (!isLeaf(name)) return refused(EINVAL);
  return readLink(folder, name);
}

Outcome<std::size_t, PosixError> PosixFileSystem::read(int file, std::span<std::byte> buffer) {
  const ssize_t count = retried([&] { return ::read(file, buffer.data(), buffer.size()); });
  if (count >= 0) return static_cast<std::size_t>(count);
  if (errno == EAGAIN) return 0;  // a FIFO with a writer that has nothing to say
  return lastFailure();
}

Outcome<void, PosixError> PosixFileSystem::makeFolder(int folder, const char* name, std::uint16_t permissions) {
  if (!isLeaf(name)) return refused(EINVAL);
  return succeededIfZero(::mkdirat(folder, name, permissions));
}

Outcome<FileDescriptor, PosixError> PosixFileSystem::createFile(int folder, const char* name) {
  if (!isLeaf(name)) return refused(EINVAL);
  return openedAt(folder, name, O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW, privateFilePermissions);
}

Outcome<std::size_t, PosixError> PosixFileSystem::write(int file, std::span<const std::string_view> pieces) {
  std::array<iovec, mostPieces> vectors;  // 16 KB, of which most calls fill one line
  const std::size_t used = std::min(pieces.size(), mostPieces);
  for (std::size_t i = 0; i < used; ++i)
    vectors[i] = {const_cast<char*>(pieces[i].data()), pieces[i].size()};  // the call only reads
  const ssize_t count = retried([&] { return ::writev(file, vectors.data(), static_cast<int>(used)); });
  if (count < 0) return lastFailure();
  return static_cast<std::size_t>(count);
}

Outcome<void, PosixError> PosixFileSystem::synchronise(int descriptor) {
  return succeededIfZero(retried([&] { return ::fsync(descriptor); }));
}

Outcome<void, PosixError> PosixFileSystem::renameReplacing(int fromFolder, const char* from, int toFolder,
                                                           const char* to) {
  if (!isLeaf(from) || !isLeaf(to)) return refused(EINVAL);
  return succeededIfZero(::renameat(fromFolder, from, toFolder, to));
}

Outcome<void, PosixError> PosixFileSystem::renameExclusive(int fromFolder, const char* from, int toFolder,
                                                           const char* to) {
  if (!isLeaf(from) || !isLeaf(to)) return refused(EINVAL);
  return succeededIfZero(systemRenameExclusive(fromFolder, from, toFolder, to));
}

Outcome<void, PosixError> PosixFileSystem::removeFile(int folder, const char* name) {
  if (!isLeaf(name)) return refused(EINVAL);
  return succeededIfZero(::unlinkat(folder, name, 0));
}

Outcome<FileDescriptor, PosixError> PosixFileSystem::lockFile(int folder, const char* name) {
  if (!isLeaf(name)) return refused(EINVAL);
  auto file = openedAt(folder, name, O_RDWR | O_CREAT | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY, privateFilePermissions);
  if (!file) return file;
  if (retried([&] { return ::flock(file->number(), LOCK_EX | LOCK_NB); }) != 0) return lastFailure();
  return file;
}

}  // namespace quorvane
