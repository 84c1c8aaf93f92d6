#include "quorvane/platform/linux/FreeDesktopTrash.h"

#include "quorvane/platform/DurableFile.h"
#include "quorvane/platform/SystemPlatform.h"

#include <cerrno>
#include <utility>

#include <sys/stat.h>
#include <unistd.h>

namespace quorvane {

namespace {

const std::string sharedName = ".Trash";

/// What is said of a Trash folder that cannot be trusted: there is none to rename into.
std::unexpected<PosixError> noTrash() { return failure(PosixError{EXDEV}); }

/// Whether the reason speaks against this one Trash folder, and the next one may do.
bool speaksAgainstThisOne(PosixError error) {
  return error.code == EXDEV || error.code == EROFS || error.isOtherKind() || error.isDenied() || error.isMissing();
}

std::unique_ptr<TrashFolder> opened(FileSystem& fileSystem, RandomSource& random, TrashFolders folders) {
  return std::make_unique<OpenTrash>(fileSystem, random, std::move(folders));
}

}  // namespace

FreeDesktopTrash::FreeDesktopTrash(FileSystem& fileSystem, RandomSource& random, const ApplicationFolders& folders)
    : fileSystem_(fileSystem),
      random_(random),
      data_(folders.data),
      home_(folders.home),
      isConfined_(folders.isConfined),
      user_(std::to_string(::geteuid())) {}

Outcome<std::unique_ptr<TrashFolder>, PosixError> FreeDesktopTrash::folderFor(const FilePath& path) {
  const auto source = walkFromRoot(fileSystem_, parentOf(path));
  if (!source) return failure(source.error());
  auto folders = homeTrash(source->status);
  if (!folders && speaksAgainstThisOne(folders.error())) folders = volumeTrash(*source);
  if (folders) return opened(fileSystem_, random_, *std::move(folders));
  if (speaksAgainstThisOne(folders.error())) return noTrash();
  return failure(folders.error());
}

Outcome<std::unique_ptr<TrashFolder>, PosixError> FreeDesktopTrash::open(const FilePath& directory) {
  if (leafOf(directory) != "files" || standardised(directory) != directory) return failure(PosixError{EINVAL});
  const FilePath path = parentOf(directory);
  if (const auto permitted = checkPermitted(path); !permitted) return failure(permitted.error());
  auto walked = walkFromRoot(fileSystem_, path);
  if (!walked) return failure(walked.error());
  auto top = topForNotes(path, walked->top, walked->status);
  if (!top) return failure(top.error());
  auto folders = checked(path, std::move(walked->folder), walked->status, openFolderBelow);
  if (!folders) return failure(folders.error());
  folders->top = *std::move(top);
  return opened(fileSystem_, random_, *std::move(folders));
}

Outcome<void, PosixError> FreeDesktopTrash::checkPermitted(const FilePath& realPath) {
  if (!isConfined_) return {};
  const auto home = fileSystem_.resolved(home_);
  if (!home) return failure(home.error());
  if (!isBelow(realPath, *home)) return noTrash();
  return {};
}

Outcome<void, PosixError> FreeDesktopTrash::checkTrusted(int folder, const FileStatus& volume) {
  const auto status = fileSystem_.status(folder);
  if (!status) return failure(status.error());
  if (faultOfFolder(*status) || !isSameVolume(*status, volume)) return noTrash();
  return {};
}

FreeDesktopTrash::Folder FreeDesktopTrash::subfolder(int trash, std::string_view name, const FileStatus& volume,
                                                     Opener opener) {
  auto folder = opener(fileSystem_, trash, name);
  if (!folder) return folder;
  if (const auto trusted = checkTrusted(folder->number(), volume); !trusted) return failure(trusted.error());
  return folder;
}

FreeDesktopTrash::Folders FreeDesktopTrash::checked(const FilePath& path, FileDescriptor trash,
                                                    const FileStatus& volume, Opener opener) {
  if (const auto trusted = checkTrusted(trash.number(), volume); !trusted) return failure(trusted.error());
  auto files = subfolder(trash.number(), "files", volume, opener);
  if (!files) return failure(files.error());
  auto info = subfolder(trash.number(), "info", volume, opener);
  if (!info) return failure(info.error());
  return TrashFolders{.directory = joined(path, "files"),
                      .trash = std::move(trash),
                      .files = *std::move(files),
                      .info = *std::move(info)};
}

FreeDesktopTrash::Folders FreeDesktopTrash::homeTrash(const FileStatus& source) {
  const auto path = fileSystem_.resolved(joined(data_, "Trash"));
  if (!path) return failure(path.error());
  if (const auto permitted = checkPermitted(*path); !permitted) return failure(permitted.error());
  auto trash = openOrMakeHomeTrash(*path, source);
  if (!trash) return failure(trash.error());
  return checked(*path, *std::move(trash), source, makeFoldersBelow);
}

/// Makes nothing on another volume than the source's, nor in a folder of somebody else.
FreeDesktopTrash::Folder FreeDesktopTrash::openOrMakeHomeTrash(const FilePath& path, const FileStatus& source) {
  auto trash = fileSystem_.openStartingFolder(path);
  if (trash || !trash.error().isMissing()) return trash;
  FilePath above = parentOf(path);
  auto folder = fileSystem_.openStartingFolder(above);
  while (!folder && folder.error().isMissing() && above.bytes != "/") {
    above = parentOf(above);
    folder = fileSystem_.openStartingFolder(above);
  }
  if (!folder) return folder;
  const auto status = fileSystem_.status(folder->number());
  if (!status) return failure(status.error());
  if (status->owner != ::geteuid() || !isSameVolume(*status, source)) return noTrash();
  return makeFoldersBelow(fileSystem_, folder->number(), relativeTo(above, path));
}

FreeDesktopTrash::Folders FreeDesktopTrash::volumeTrash(const WalkedFolder& source) {
  const FilePath& top = source.top;
  if (top.bytes.empty()) return noTrash();
  if (const auto permitted = checkPermitted(joined(top, sharedName)); !permitted) return failure(permitted.error());
  const auto walked = walkFromRoot(fileSystem_, top);
  if (!walked) return failure(walked.error());
  if (walked->top != top || !isSameVolume(walked->status, source.status)) return noTrash();
  auto folders = sharedTrash(top, walked->folder.number(), source.status);
  if (!folders && speaksAgainstThisOne(folders.error()))
    folders = ownTrash(top, walked->folder.number(), source.status);
  if (folders) folders->top = top;
  return folders;
}

/// The administrator's folder for the Trash folders of all users. Without the sticky bit any of them could put another
/// in the place of ours.
FreeDesktopTrash::Folder FreeDesktopTrash::openSharedParent(int topFolder, const FileStatus& volume) {
  auto shared = fileSystem_.openFolder(topFolder, sharedName.c_str());
  if (!shared) return shared;
  const auto status = fileSystem_.status(shared->number());
  if (!status) return failure(status.error());
  if ((status->permissions & S_ISVTX) == 0 || !isSameVolume(*status, volume)) return noTrash();
  return shared;
}

FreeDesktopTrash::Folders FreeDesktopTrash::sharedTrash(const FilePath& top, int topFolder, const FileStatus& source) {
  const auto shared = openSharedParent(topFolder, source);
  if (!shared) return failure(shared.error());
  auto trash = makeFoldersBelow(fileSystem_, shared->number(), user_);
  if (!trash) return failure(trash.error());
  return checked(joined(joined(top, sharedName), user_), *std::move(trash), source, makeFoldersBelow);
}

FreeDesktopTrash::Folders FreeDesktopTrash::ownTrash(const FilePath& top, int topFolder, const FileStatus& source) {
  const std::string name = sharedName + '-' + user_;
  auto trash = makeFoldersBelow(fileSystem_, topFolder, name);
  if (!trash) return failure(trash.error());
  return checked(joined(top, name), *std::move(trash), source, makeFoldersBelow);
}

/// Empty for a Trash whose notes tell absolute paths.
Outcome<FilePath, PosixError> FreeDesktopTrash::topForNotes(const FilePath& trash, const FilePath& top,
                                                            const FileStatus& volume) {
  if (top.bytes.empty()) return FilePath();
  if (trash == joined(top, sharedName + '-' + user_)) return top;
  if (trash != joined(joined(top, sharedName), user_)) return FilePath();
  const auto walked = walkFromRoot(fileSystem_, top);
  if (!walked) return failure(walked.error());
  const auto shared = openSharedParent(walked->folder.number(), volume);
  if (!shared) return failure(shared.error());
  return top;
}

std::unique_ptr<Trash> makeSystemTrash(FileSystem& fileSystem, RandomSource& random,
                                       const ApplicationFolders& folders) {
  return std::make_unique<FreeDesktopTrash>(fileSystem, random, folders);
}

}  // namespace quorvane
