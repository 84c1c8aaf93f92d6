#include "quorvane/platform/ApplicationFolders.h"

#include "quorvane/platform/posix/UserDatabase.h"

namespace quorvane {

namespace {

/// The folder that a variable names, standardised.
std::optional<FilePath> folderFromVariable(const FolderRequest& request, const char* variable) {
  if (request.home) return std::nullopt;
  const auto found = request.environment.find(variable);
  if (found == request.environment.end()) return std::nullopt;
  const FilePath path{found->second};
  if (!isAbsolute(path.bytes)) return std::nullopt;
  return standardised(path);
}

Outcome<FilePath, FolderFault> homeFor(const FolderRequest& request) {
  std::optional<FilePath> home = request.home;
  if (!home) home = folderFromVariable(request, "HOME");
  if (!home) home = homeFromUserDatabase();
  if (!home) return failure(FolderFault::homeUnknown);
  if (!isAbsolute(home->bytes)) return failure(FolderFault::homeNotAbsolute);
  return standardised(*home);
}

}  // namespace

Outcome<ApplicationFolders, FolderFault> applicationFolders(const FolderRequest& request) {
  const auto home = homeFor(request);
  if (!home) return failure(home.error());
  const auto folder = [&](const char* variable, const char* usual) {
    return folderFromVariable(request, variable).value_or(joined(*home, usual));
  };
  ApplicationFolders folders;
  folders.home = *home;
  folders.cache = folder("XDG_CACHE_HOME", ".cache");
  folders.configuration = folder("XDG_CONFIG_HOME", ".config");
  folders.data = folder("XDG_DATA_HOME", ".local/share");
  folders.state = folder("XDG_STATE_HOME", ".local/state");
  folders.applicationSupport = request.applicationSupport.value_or(joined(folders.data, request.applicationName));
  folders.isConfined = request.home.has_value();
  return folders;
}

}  // namespace quorvane
