#pragma once

#include "quorvane/base/FilePath.h"

#include <optional>
#include <string_view>

namespace quorvane {

/// Looks one folder up in the text of a "user-dirs.dirs" file (lines like XDG_DOWNLOAD_DIR="$HOME/Downloads"; the last
/// one counts). Nothing when it is not named, has another form, or does not lie strictly below the home.
std::optional<FilePath> userDirectory(std::string_view text, std::string_view variable, const FilePath& home);

}  // namespace quorvane
