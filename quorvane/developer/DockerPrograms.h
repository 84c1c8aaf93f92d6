#pragma once

#include "quorvane/base/FilePath.h"
#include "quorvane/platform/FileSystem.h"

#include <cstdint>
#include <optional>
#include <span>
#include <vector>

namespace quorvane {

/// Where a Docker client may be: the fixed places of all systems, then those of the running one. Nothing else says
/// where to look, neither an option nor the environment nor a search path.
std::vector<FilePath> dockerPlaces();

/// The first of the places with a program that can be trusted: an executable file, of the administrator or of `user`,
/// that neither group nor others may write to. A link is followed, and what it leads to has to be such a file.
std::optional<FilePath> dockerProgram(FileSystem& fileSystem, std::span<const FilePath> places, std::uint32_t user);

}  // namespace quorvane
