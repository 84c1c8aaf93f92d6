#include "quorvane/scan/locations/LocationFolders.h"

#include "quorvane/scan/locations/UserDirectories.h"

#include <optional>
#include <string>

namespace quorvane {

namespace {

constexpr std::size_t mostUserDirectoriesBytes = 64 << 10;

std::optional<std::string> userDirectoriesText(const FilePath& configuration, FileSystem& fileSystem) {
  const auto folder = fileSystem.openStartingFolder(configuration);
  if (!folder) return std::nullopt;
  const auto file = fileSystem.openFile(folder->number(), "user-dirs.dirs");
  if (!file) return std::nullopt;
  auto text = readToEnd(fileSystem, file->number(), mostUserDirectoriesBytes);
  if (!text) return std::nullopt;
  return *std::move(text);
}

FilePath namedDownloads(const ApplicationFolders& folders, FileSystem& fileSystem) {
  const auto text = userDirectoriesText(folders.configuration, fileSystem);
  auto named = text ? userDirectory(*text, "XDG_DOWNLOAD_DIR", folders.home) : std::nullopt;
  return named ? *std::move(named) : joined(folders.home, "Downloads");
}

}  // namespace

LocationFolders::LocationFolders(const ScanSettings& settings, FileSystem& fileSystem)
    : folders_(settings.folders),
      canonicalHome_(fileSystem.resolved(settings.folders.home).value_or(settings.folders.home)),
      downloads_(settings.layout == HomeLayout::linux ? namedDownloads(settings.folders, fileSystem)
                                                      : joined(settings.folders.home, "Downloads")) {}

bool LocationFolders::allows(const FilePath& canonicalPath) const {
  return !folders_.isConfined || isAtOrBelow(canonicalPath, canonicalHome_);
}

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
