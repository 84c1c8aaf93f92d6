#pragma once

#include "quorvane/platform/ApplicationFolders.h"
#include "quorvane/platform/FileSystem.h"
#include "quorvane/platform/RandomSource.h"
#include "quorvane/platform/Trash.h"
#include "quorvane/platform/linux/OpenTrash.h"
#include "quorvane/platform/linux/RootWalk.h"

#include <memory>
#include <string>

namespace quorvane {

/// The Trash folders of the effective user as FreeDesktop.org describes them (version 1.0): the one below the data
/// folder for its own volume, `.Trash/UID` or `.Trash-UID` at the top of each other volume.
class FreeDesktopTrash final : public Trash {
 public:
  FreeDesktopTrash(FileSystem& fileSystem, RandomSource& random, const ApplicationFolders& folders);

  FilePath homeTrash() const override { return joined(data_, "Trash"); }
  Outcome<std::unique_ptr<TrashFolder>, PosixError> folderFor(const FilePath& path) override;
  Outcome<std::unique_ptr<TrashFolder>, PosixError> open(const FilePath& directory) override;

 private:
  using Folder = Outcome<FileDescriptor, PosixError>;
  using Folders = Outcome<TrashFolders, PosixError>;
  /// How `files` and `info` are opened in a Trash folder.
  using Opener = Folder (*)(FileSystem&, int folder, std::string_view name);

  Outcome<void, PosixError> checkPermitted(const FilePath& realPath);
  Outcome<void, PosixError> checkTrusted(int folder, const FileStatus& volume);
  Folder subfolder(int trash, std::string_view name, const FileStatus& volume, Opener opener);
  Folders checked(const FilePath& path, FileDescriptor trash, const FileStatus& volume, Opener opener);

  Folders homeTrash(const FileStatus& source);
  Folder openOrMakeHomeTrash(const FilePath& path, const FileStatus& source);
  Folders volumeTrash(const WalkedFolder& source);
  Folders sharedTrash(const FilePath& top, int topFolder, const FileStatus& source);
  Folders ownTrash(const FilePath& top, int topFolder, const FileStatus& source);
  Folder openSharedParent(int topFolder, const FileStatus& volume);
  Outcome<FilePath, PosixError> topForNotes(const FilePath& trash, const FilePath& top, const FileStatus& volume);

  FileSystem& fileSystem_;
  RandomSource& random_;
  FilePath data_;
  FilePath home_;
  bool isConfined_;
  std::string user_;  ///< the effective user's number
};

}  // namespace quorvane
