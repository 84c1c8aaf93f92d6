#pragma once

#include "quorvane/base/FilePath.h"
#include "quorvane/base/Outcome.h"

#include <map>
#include <optional>
#include <string>

namespace quorvane {

/// What the command line and the environment say about the folders to work on.
struct FolderRequest {
  std::optional<FilePath> home;                    ///< absolute; given, no environment variable is consulted
  std::optional<FilePath> applicationSupport;      ///< absolute; given, used as it is
  std::map<std::string, std::string> environment;  ///< of the process
  std::string applicationName{};                   ///< of its folder among those of all programs
};

enum class FolderFault {
  homeUnknown,  ///< neither the environment nor the user database names a home
  homeNotAbsolute,
};

/// The folders of one user, absolute and standardised, as the user knows them (links not resolved). None need exist.
struct ApplicationFolders {
  FilePath home;
  FilePath cache;               ///< Linux: $XDG_CACHE_HOME; macOS: Library/Caches
  FilePath configuration;       ///< Linux: $XDG_CONFIG_HOME; macOS: Library/Preferences
  FilePath data;                ///< Linux: $XDG_DATA_HOME; macOS: Library/Application Support
  FilePath state;               ///< Linux: $XDG_STATE_HOME; macOS: Library
  FilePath applicationSupport;  ///< where the program keeps its own state: a folder of its own in `data`

  bool isConfined = false;  ///< the home was asked for: what links lead out of it to is not to be touched

  bool operator==(const ApplicationFolders&) const = default;
};

/// A variable that is empty or not an absolute path counts as not set (XDG Base Directory 0.8).
Outcome<ApplicationFolders, FolderFault> applicationFolders(const FolderRequest& request);

}  // namespace quorvane
