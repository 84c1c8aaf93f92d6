#pragma once

#include "quorvane/base/FilePath.h"

#include <string_view>

namespace quorvane {

/// The program's own folder and what lies in it.
namespace AppPaths {

/// The application-support folder, in the folder where all programs of a user keep their data.
inline constexpr std::string_view folderName = "Quorvane";

inline constexpr std::string_view ignoredPathsName = "ignored-paths.json";

inline FilePath ignoredPaths(const FilePath& applicationSupport) {
  return joined(applicationSupport, ignoredPathsName);
}

inline constexpr std::string_view historyName = "history.json";

inline FilePath history(const FilePath& applicationSupport) { return joined(applicationSupport, historyName); }

}  // namespace AppPaths

}  // namespace quorvane
