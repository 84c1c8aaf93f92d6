#pragma once

#include "quorvane/base/FilePath.h"
#include "quorvane/platform/FileDescriptor.h"
#include "quorvane/platform/FileStatus.h"
#include "quorvane/platform/PosixError.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace quorvane {

/// One name in a folder. A folder's own status is left to whoever opens it, since it has to be read again there.
struct FolderEntry {
  std::uint32_t nameOffset = 0;
  std::uint32_t nameLength = 0;
  bool isFolder = false;
  int error = 0;      ///< why `status` could not be read; 0 when it was, and for folders
  FileStatus status;  ///< of everything but folders; its `mount` and `born` may be left out (0)
};

/// The entries of one folder, in the order of the file system and without "." and "..". Made to be filled again and
/// again, so that a walk allocates nothing.
class FolderListing {
 public:
  std::vector<FolderEntry>& entries() { return entries_; }
  const std::vector<FolderEntry>& entries() const { return entries_; }

  /// The bytes of the name; a NUL stands behind them.
  std::string_view nameOf(const FolderEntry& entry) const {
    return {names_.data() + entry.nameOffset, entry.nameLength};
  }

  void clear();
  FolderEntry& add(std::string_view name);

 private:
  std::vector<FolderEntry> entries_;
  std::string names_;
};

/// The file system, by descriptor and leaf name. No call follows a link in its last component; `name` is one component,
/// NUL-terminated, neither "." nor ".." nor with a slash.
///
/// Calls may come from any number of threads. EINTR is retried within.
class FileSystem {
 public:
  virtual ~FileSystem() = default;

  /// Opens a folder by absolute path; links among its ancestors and at its end are followed. For the starting points
  /// that a person or the environment named (the home folder), never for what a walk found.
  virtual Outcome<FileDescriptor, PosixError> openStartingFolder(const FilePath& path) = 0;

  /// The path with all links resolved. The last components may be missing: they are kept as they are.
  virtual Outcome<FilePath, PosixError> resolved(const FilePath& path) = 0;

  /// Opens the folder that an absolute, standardised path names, following no link at any level: ELOOP where one stands
  /// on the way or at its end. The folders above need not be readable.
  virtual Outcome<FileDescriptor, PosixError> openRealFolder(const FilePath& path) = 0;

  /// ELOOP for a link, ENOTDIR for anything else that is no folder.
  virtual Outcome<FileDescriptor, PosixError> openFolder(int folder, const char* name) = 0;
  /// Opens for reading; a FIFO does not block and gives no data, a device is not opened (ENXIO).
  virtual Outcome<FileDescriptor, PosixError> openFile(int folder, const char* name) = 0;
  virtual Outcome<FileStatus, PosixError> status(int folder, const char* name) = 0;
  virtual Outcome<FileStatus, PosixError> status(int descriptor) = 0;
  virtual Outcome<std::string, PosixError> linkTarget(int folder, const char* name) = 0;

  /// Fills `listing` with every entry of an open folder, each with its status. What was read before an error is kept.
  virtual Outcome<void, PosixError> list(int folder, FolderListing& listing) = 0;
  /// The names only, without status, of at most `most` entries; EOVERFLOW where the folder holds more.
  virtual Outcome<std::vector<std::string>, PosixError> names(int folder, std::size_t most) = 0;

  /// Reads up to `buffer.size()` bytes; 0 at the end of the file.
  virtual Outcome<std::size_t, PosixError> read(int file, std::span<std::byte> buffer) = 0;

  virtual Outcome<void, PosixError> makeFolder(int folder, const char* name, std::uint16_t permissions) = 0;
  /// A new file for writing, permissions 0600; refuses an existing name (EEXIST).
  virtual Outcome<FileDescriptor, PosixError> createFile(int folder, const char* name) = 0;
  /// Writes the pieces one behind the other, and returns how many bytes of them it wrote: perhaps not all.
  virtual Outcome<std::size_t, PosixError> write(int file, std::span<const std::string_view> pieces) = 0;
  /// Waits until the file's content, or the folder's entries, are on the disk.
  virtual Outcome<void, PosixError> synchronise(int descriptor) = 0;
  virtual Outcome<void, PosixError> renameReplacing(int fromFolder, const char* from, int toFolder, const char* to) = 0;
  /// Never replaces: EEXIST when something has that name already. EXDEV when the folders are on different mounts.
  virtual Outcome<void, PosixError> renameExclusive(int fromFolder, const char* from, int toFolder, const char* to) = 0;
  virtual Outcome<void, PosixError> removeFile(int folder, const char* name) = 0;

  /// Takes the exclusive lock of a file (opened or created, permissions 0600) for as long as the descriptor lives.
  /// Never waits: EWOULDBLOCK when another process holds it.
  virtual Outcome<FileDescriptor, PosixError> lockFile(int folder, const char* name) = 0;
};

/// Opens the folder at `relative` below an open folder, one component after the other, following no link.
Outcome<FileDescriptor, PosixError> openFolderBelow(FileSystem& fileSystem, int folder, std::string_view relative);

/// The same, making what is missing with permissions 0700 (each made durable in its parent).
Outcome<FileDescriptor, PosixError> makeFoldersBelow(FileSystem& fileSystem, int folder, std::string_view relative);

/// Writes all of the pieces, one behind the other; after a failure a part of them.
Outcome<void, PosixError> writeWhole(FileSystem& fileSystem, int file, std::span<const std::string_view> pieces);

/// Reads a file to its end; EFBIG when it holds more than `limit` bytes.
Outcome<std::string, PosixError> readToEnd(FileSystem& fileSystem, int file, std::size_t limit);

}  // namespace quorvane
