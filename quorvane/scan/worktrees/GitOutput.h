#pragma once

#include <compare>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

// Reads what git prints. Nothing is believed by halves: output that is not exactly of the expected form gives nothing.

namespace quorvane {

struct GitVersion {
  int major = 0;
  int minor = 0;

  auto operator<=>(const GitVersion&) const = default;
};

/// From `git --version`.
std::optional<GitVersion> gitVersion(std::string_view output);

/// The path behind "gitdir: " in a worktree's ".git" file, as it is written there: absolute, or relative to the
/// worktree.
std::optional<std::string> gitDirectoryNamedBy(std::string_view gitFile);

/// Where a worktree, its own git directory and the one it shares lie.
struct GitPlaces {
  std::string topLevel;
  std::string gitDirectory;
  std::string commonDirectory;

  bool operator==(const GitPlaces&) const = default;
};

/// From `git rev-parse --path-format=absolute --show-toplevel --absolute-git-dir --git-common-dir`.
std::optional<GitPlaces> gitPlaces(std::string_view output);

/// The names of the filter drivers, each once, from `git config --null --name-only --get-regexp '^filter\.'`.
std::optional<std::vector<std::string>> gitFilterNames(std::string_view output);

/// What of a worktree is in no commit.
struct GitStatus {
  bool hasChanges = false;           ///< changed, added, deleted, unmerged or untracked files
  std::vector<std::string> ignored;  ///< relative; folders end in a slash

  bool operator==(const GitStatus&) const = default;
};

/// From `git status --porcelain=v1 -z --ignored=matching`.
std::optional<GitStatus> gitStatus(std::string_view output);

/// What the index has that the status does not show.
struct GitIndex {
  bool hasHiddenChanges = false;  ///< an entry is marked assume-unchanged or skip-worktree
  bool hasSubmodules = false;

  bool operator==(const GitIndex&) const = default;
};

/// From `git ls-files --stage -v -z`.
std::optional<GitIndex> gitIndex(std::string_view output);

/// Whether an ignored path is, or lies in, a folder that tools fill anew from what git keeps: "web/node_modules/".
bool isRebuildable(std::string_view ignoredPath);

}  // namespace quorvane
