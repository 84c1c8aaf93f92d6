#include "quorvane/developer/DockerPrograms.h"

#include "quorvane/platform/SystemPlatform.h"

#include <algorithm>
#include <string>

namespace quorvane {

namespace {

constexpr std::uint16_t executable = 0111, writableByOthers = 0022;

std::optional<FileStatus> statusBehind(FileSystem& fileSystem, const FilePath& place) {
  const auto real = fileSystem.resolved(place);
  if (!real) return std::nullopt;
  const auto folder = fileSystem.openStartingFolder(parentOf(*real));
  if (!folder) return std::nullopt;
  const auto status = fileSystem.status(folder->number(), std::string(leafOf(*real)).c_str());
  return status ? std::optional(*status) : std::nullopt;
}

bool isTrusted(const FileStatus& status, std::uint32_t user) {
  const bool isProgram = status.isRegularFile() && (status.permissions & executable) != 0;
  const bool isOwned = status.owner == 0 || status.owner == user;
  return isProgram && isOwned && (status.permissions & writableByOthers) == 0;
}

}  // namespace

std::vector<FilePath> dockerPlaces() {
  std::vector<FilePath> places{{"/Applications/Docker.app/Contents/Resources/bin/docker"},
                               {"/opt/homebrew/bin/docker"},
                               {"/usr/local/bin/docker"}};
  const std::vector<FilePath> ofSystem = systemDockerPlaces();
  places.insert(places.end(), ofSystem.begin(), ofSystem.end());
  return places;
}

std::optional<FilePath> dockerProgram(FileSystem& fileSystem, std::span<const FilePath> places, std::uint32_t user) {
  const auto found = std::ranges::find_if(places, [&](const FilePath& place) {
    const auto status = statusBehind(fileSystem, place);
    return status && isTrusted(*status, user);
  });
  return found == places.end() ? std::nullopt : std::optional(*found);
}

}  // namespace quorvane
