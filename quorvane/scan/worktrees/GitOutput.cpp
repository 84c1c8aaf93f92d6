#include "quorvane/scan/worktrees/GitOutput.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <system_error>

namespace quorvane {

namespace {

using namespace std::string_view_literals;

constexpr std::array rebuildableFolders = {
    "node_modules"sv, "bower_components"sv, "build"sv,       "dist"sv,        "target"sv,  "out"sv,
    "obj"sv,          "DerivedData"sv,      ".build"sv,      "CMakeFiles"sv,  ".venv"sv,   "venv"sv,
    "__pycache__"sv,  ".pytest_cache"sv,    ".mypy_cache"sv, ".ruff_cache"sv, ".tox"sv,    ".nox"sv,
    ".eggs"sv,        ".gradle"sv,          ".next"sv,       ".nuxt"sv,       ".turbo"sv,  ".parcel-cache"sv,
    ".svelte-kit"sv,  ".cache"sv,           "coverage"sv,    ".nyc_output"sv, "htmlcov"sv, "_build"sv,
    ".dart_tool"sv,   ".zig-cache"sv,       "zig-cache"sv,
};
constexpr std::array rebuildableFiles = {".DS_Store"sv, "Thumbs.db"sv};

/// Takes what stands before the next `end`, which it leaves out; nothing when there is none.
std::optional<std::string_view> takeUntil(std::string_view& rest, char end) {
  const std::size_t length = rest.find(end);
  if (length == std::string_view::npos) return std::nullopt;
  const std::string_view taken = rest.substr(0, length);
  rest.remove_prefix(length + 1);
  return taken;
}

std::optional<int> takeNumber(std::string_view& rest) {
  int number = 0;
  const auto [end, error] = std::from_chars(rest.data(), rest.data() + rest.size(), number);
  if (error != std::errc() || number < 0) return std::nullopt;
  rest.remove_prefix(static_cast<std::size_t>(end - rest.data()));
  return number;
}

bool isAbsolute(std::string_view path) { return path.starts_with('/'); }

/// "filter.NAME.VARIABLE", where the name may hold dots. A key without a name names no driver: nothing.
std::optional<std::string_view> filterNameIn(std::string_view key) {
  constexpr std::string_view section = "filter.";
  key.remove_prefix(section.size());
  const std::size_t dot = key.rfind('.');
  if (dot == std::string_view::npos) return std::nullopt;
  return key.substr(0, dot);
}

bool isOctalMode(std::string_view mode) {
  return mode.size() == 6 && mode.find_first_not_of("01234567") == std::string_view::npos;
}

}  // namespace

std::optional<GitVersion> gitVersion(std::string_view output) {
  constexpr std::string_view opening = "git version ";
  if (!output.starts_with(opening)) return std::nullopt;
  output.remove_prefix(opening.size());
  const auto major = takeNumber(output);
  if (!major || !output.starts_with('.')) return std::nullopt;
  output.remove_prefix(1);
  const auto minor = takeNumber(output);
  if (!minor) return std::nullopt;
  return GitVersion{*major, *minor};
}

std::optional<std::string> gitDirectoryNamedBy(std::string_view gitFile) {
  constexpr std::string_view opening = "gitdir: ";
  if (!gitFile.starts_with(opening) || gitFile.contains('\0')) return std::nullopt;
  gitFile.remove_prefix(opening.size());
  while (gitFile.ends_with('\n') || gitFile.ends_with('\r')) gitFile.remove_suffix(1);
  if (gitFile.empty()) return std::nullopt;
  return std::string(gitFile);
}

std::optional<GitPlaces> gitPlaces(std::string_view output) {
  const auto topLevel = takeUntil(output, '\n');
  const auto gitDirectory = takeUntil(output, '\n');
  const auto commonDirectory = takeUntil(output, '\n');
  // A path with a line break in it makes more than three lines.
  if (!topLevel || !gitDirectory || !commonDirectory || !output.empty()) return std::nullopt;
  if (!isAbsolute(*topLevel) || !isAbsolute(*gitDirectory) || !isAbsolute(*commonDirectory)) return std::nullopt;
  return GitPlaces{std::string(*topLevel), std::string(*gitDirectory), std::string(*commonDirectory)};
}

std::optional<std::vector<std::string>> gitFilterNames(std::string_view output) {
  std::vector<std::string> names;
  while (!output.empty()) {
    const auto key = takeUntil(output, '\0');
    if (!key || !key->starts_with("filter.")) return std::nullopt;
    if (const auto name = filterNameIn(*key)) names.emplace_back(*name);
  }
  std::ranges::sort(names);
  const auto repeated = std::ranges::unique(names);
  names.erase(repeated.begin(), repeated.end());
  return names;
}

std::optional<GitStatus> gitStatus(std::string_view output) {
  constexpr std::string_view states = " MTADRCU?!";
  GitStatus status;
  while (!output.empty()) {
    const auto entry = takeUntil(output, '\0');
    if (!entry || entry->size() < 4 || (*entry)[2] != ' ') return std::nullopt;
    const std::string_view state = entry->substr(0, 2);
    if (!states.contains(state[0]) || !states.contains(state[1]) || state == "  ") return std::nullopt;
    const bool hasOrigin = state.find_first_of("RC") != std::string_view::npos;
    if (hasOrigin && !takeUntil(output, '\0')) return std::nullopt;
    if (state == "!!")
      status.ignored.emplace_back(entry->substr(3));
    else
      status.hasChanges = true;
  }
  return status;
}

std::optional<GitIndex> gitIndex(std::string_view output) {
  // Upper case is as it should be; lower case is assume-unchanged, S skip-worktree.
  constexpr std::string_view knownTags = "HSMRCKhsmrck";
  constexpr std::string_view hidingTags = "Shsmrck";
  GitIndex index;
  while (!output.empty()) {
    auto entry = takeUntil(output, '\0');
    if (!entry || entry->size() < 2 || !knownTags.contains((*entry)[0]) || (*entry)[1] != ' ') return std::nullopt;
    if (hidingTags.contains((*entry)[0])) index.hasHiddenChanges = true;
    entry->remove_prefix(2);
    const auto mode = takeUntil(*entry, ' ');
    const auto object = takeUntil(*entry, ' ');
    const auto stage = takeUntil(*entry, '\t');
    if (!mode || !isOctalMode(*mode) || !object || !stage || stage->size() != 1 || entry->empty()) return std::nullopt;
    if (*mode == "160000") index.hasSubmodules = true;
  }
  return index;
}

bool isRebuildable(std::string_view ignoredPath) {
  while (const auto folder = takeUntil(ignoredPath, '/'))
    if (std::ranges::find(rebuildableFolders, *folder) != rebuildableFolders.end()) return true;
  return std::ranges::find(rebuildableFiles, ignoredPath) != rebuildableFiles.end();
}

}  // namespace quorvane
