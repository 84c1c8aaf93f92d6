#include "quorvane/scan/policy/PathResolver.h"

#include <string>
#include <utility>

namespace quorvane {

PathResolver::Place& PathResolver::at(const FilePath& path) {
  const auto known = places_.find(path);
  return known != places_.end() ? known->second : places_.emplace(path, looked(path)).first->second;
}

PathResolver::Place PathResolver::looked(const FilePath& path) {
  const FilePath folder = parentOf(path);
  if (folder != path) {
    Place& above = at(folder);
    if (!above.path) return {failure(above.path.error())};
    if (above.isMissing) return {joined(*above.path, leafOf(path)), /*isMissing=*/true};
    if (auto found = lookedInto(above, path)) return *std::move(found);
  }
  return {fileSystem_.resolved(path)};
}

/// Nothing where only following the whole path tells: a link, or a folder that cannot be looked into.
std::optional<PathResolver::Place> PathResolver::lookedInto(Place& folder, const FilePath& path) {
  const FilePath& real = *folder.path;
  if (!folder.folder) folder.folder = fileSystem_.openRealFolder(real);
  const auto& opened = *folder.folder;
  if (!opened) return std::nullopt;
  const auto status = fileSystem_.status(opened->number(), std::string(leafOf(path)).c_str());
  if (status && !status->isLink()) return Place{joined(real, leafOf(path))};
  if (!status && status.error().isMissing()) return Place{joined(real, leafOf(path)), /*isMissing=*/true};
  return std::nullopt;
}

}  // namespace quorvane
