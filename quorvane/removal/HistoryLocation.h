#pragma once

#include "quorvane/base/FilePath.h"

#include <string_view>
#include <utility>

namespace quorvane {

/// Where something was: an absolute path, or the name of what is no file, such as "docker://volumes/NAME".
struct HistoryLocation : FilePath {
  HistoryLocation() = default;
  HistoryLocation(FilePath path) : FilePath(std::move(path)) {}  // NOLINT(google-explicit-constructor): each is one
};

/// Whether it names something that is no file: "docker://" and letters, digits, and ":", "/", "_", ".", "-".
bool isForeignLocation(std::string_view text);

}  // namespace quorvane
