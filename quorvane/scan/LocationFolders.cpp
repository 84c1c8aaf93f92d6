#include "quorvane/scan/LocationFolders.h"

#include "quorvane/scan/UserDirectories.h"

namespace quorvane {

namespace {

constexpr std::size_t mostUserDirectoriesBytes = 64 << 10;

FilePath namedDownloads(const ApplicationFolders& folders, FileSystem& fileSystem) {
  const FilePath usual = joined(folders.home, "Downloads");
  const auto folder = fileSystem.openStartingFolder(folders.configuration);
  if (!folder) return usual;
  const auto file = fileSystem.openFile(folder->number(), "user-dirs.dirs");
  if (!file) return usual;
  const auto text = readToEnd(fileSystem, file->number(), mostUserDirectoriesBytes);
  if (!text) return usual;
  return userDirectory(*text, "XDG_DOWNLOAD_DIR", folders.home).value_or(usual);
}

}  // namespace

LocationFolders::LocationFolders(const ScanSettings& settings, FileSystem& fileSystem)
    : folders_(settings.folders),
      downloads_(settings.layout == HomeLayout::linux ? namedDownloads(settings.folders, fileSystem)
                                                      : joined(settings.folders.home, "Downloads")) {}

const FilePath& LocationFolders::at(LocationBase base) const {
  switch (base) {
    case LocationBase::home: return folders_.home;
    case LocationBase::cache: return folders_.cache;
    case LocationBase::configuration: return folders_.configuration;
    case LocationBase::data: return folders_.data;
    case LocationBase::state: return folders_.state;
    case LocationBase::downloads: return downloads_;
  }
  std::unreachable();
}

}  // namespace quorvane
