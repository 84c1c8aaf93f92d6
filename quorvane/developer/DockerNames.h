#pragma once

#include "quorvane/developer/DockerResources.h"

#include <optional>
#include <string>
#include <string_view>

// Names and identifiers as Docker spells them.

namespace quorvane {

/// Of ASCII.
bool isLetterOrDigit(char c);
/// "sha256:" and 64 hexadecimal digits in small letters.
bool isFullImageID(std::string_view id);
/// 64 hexadecimal digits in small letters.
bool isFullContainerID(std::string_view id);
/// Begins with a letter or digit; behind it also "_", "." and "-".
bool isVolumeName(std::string_view name);
/// What a target of this kind can be called towards the client; of build cache nothing is.
bool isCommandTarget(DockerResourceKind kind, std::string_view target);

/// Without "sha256:", the first 12 characters: for people only.
std::string shortID(std::string_view id);

/// Without a name, or with a repository alone: it was pulled by its digest, or its tag went to another image.
bool isDangling(const DockerImageRecord& image);
bool hasRepository(const DockerImageRecord& image);
/// "repository:tag", or the short identifier of a dangling image.
std::string displayNameOf(const DockerImageRecord& image);

/// Where the history says that something was: "docker://images/ID", "docker://containers/ID", "docker://volumes/NAME".
std::string historyLocation(DockerResourceKind kind, std::string_view target);
inline constexpr std::string_view buildCacheLocation = "docker://builder/prune";
/// What stands for the build cache where a target is named.
inline constexpr std::string_view pruneTarget = "builder prune";

/// The value of the first label with this key in a list of the client; empty for a label without a value.
std::optional<std::string> labelValue(std::string_view labels, std::string_view key);

/// The project that a container belongs to.
std::optional<std::string> composeProjectOf(std::string_view labels);

/// Whether a label "quorvane.keep" protects: with any value but "false", "no" and "0", in small or capital letters.
bool isKept(std::string_view labels);

/// Whether a volume was made without a name of its own.
bool isAnonymous(const DockerVolumeRecord& volume);

}  // namespace quorvane
