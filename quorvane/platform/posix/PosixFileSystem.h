#pragma once

#include "quorvane/platform/FileSystem.h"

namespace quorvane {

/// What all POSIX systems do alike. The attributes of files, and how a folder is listed, each system adds itself.
///
/// A `name` that is not one plain component is refused with EINVAL.
class PosixFileSystem : public FileSystem {
 public:
  Outcome<FileDescriptor, PosixError> openStartingFolder(const FilePath& path) override;
  Outcome<FilePath, PosixError> resolved(const FilePath& path) override;
  Outcome<FileDescriptor, PosixError> openRealFolder(const FilePath& path) override;
  Outcome<FileDescriptor, PosixError> openFolder(int folder, const char* name) override;
  Outcome<FileDescriptor, PosixError> openFile(int folder, const char* name) override;
  Outcome<std::string, PosixError> linkTarget(int folder, const char* name) override;
  Outcome<std::size_t, PosixError> read(int file, std::span<std::byte> buffer) override;
  Outcome<void, PosixError> makeFolder(int folder, const char* name, std::uint16_t permissions) override;
  Outcome<FileDescriptor, PosixError> createFile(int folder, const char* name) override;
  Outcome<std::size_t, PosixError> write(int file, std::span<const std::string_view> pieces) override;
  Outcome<void, PosixError> synchronise(int descriptor) override;
  Outcome<void, PosixError> renameReplacing(int fromFolder, const char* from, int toFolder, const char* to) override;
  Outcome<void, PosixError> renameExclusive(int fromFolder, const char* from, int toFolder, const char* to) override;
  Outcome<void, PosixError> removeFile(int folder, const char* name) override;
  Outcome<FileDescriptor, PosixError> lockFile(int folder, const char* name) override;

 protected:
  /// Whether `name` is one component and stands for an entry of its own.
  static bool isLeaf(const char* name);

 private:
  /// The system's own call for `openRealFolder`: a descriptor, or -1 with `errno` set; ENOSYS where it has none for
  /// this path, and the folders are opened one after the other.
  virtual int systemOpenRealFolder(const char* path) = 0;

  /// The system's own call for `renameExclusive`: 0, or -1 with `errno` set.
  virtual int systemRenameExclusive(int fromFolder, const char* from, int toFolder, const char* to) = 0;
};

}  // namespace quorvane
