#include "quorvane/core/InUseIndex.h"

#include "quorvane/base/SortUniquely.h"
#include "quorvane/base/Utf8.h"

#include <algorithm>
#include <array>

namespace quorvane {

namespace {

/// Below this length, and for the names below, a folder has the name by chance: `sh` says nothing about a folder "sh",
/// nor `agent` about "agent-cache". A wrong match would hold back folders that nobody uses.
constexpr std::size_t shortestTellingName = 3;
constexpr std::array<std::string_view, 19> genericNames = {
    "agent", "bash", "bwrap",  "dash",    "daemon", "env",  "fish", "helper", "init", "ksh",
    "login", "main", "server", "service", "sudo",   "tcsh", "user", "worker", "zsh",
};

bool tellsFoldersApart(std::string_view program) {
  return program.size() >= shortestTellingName && std::ranges::find(genericNames, program) == genericNames.end();
}

bool isAlphanumeric(char c) { return (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9'); }

/// The runs of letters and digits in lower-case text: "google", "chrome" in "google-chrome".
std::vector<std::string> tokensOf(std::string_view text) {
  std::vector<std::string> tokens(1);
  for (const char c : text) {
    if (isAlphanumeric(c)) {
      tokens.back() += c;
    } else if (!tokens.back().empty()) {
      tokens.emplace_back();
    }
  }
  return tokens;
}

}  // namespace

InUseIndex::InUseIndex(const Outcome<std::vector<RunningProcess>, PosixError>& processes)
    : couldReadProcesses_(processes.has_value()) {
  if (!processes) return;
  for (const RunningProcess& process : *processes) include(process);
  sortUniquely(used_);
  sortUniquely(workingFolders_);
  sortUniquely(uninspectable_);
  sortUniquely(claimingPrograms_);
}

void InUseIndex::include(const RunningProcess& process) {
  if (!process.isInspectable) {
    if (!process.program.empty()) uninspectable_.push_back(process.program);
    std::string name = asciiLowered(process.program);
    if (tellsFoldersApart(name)) claimingPrograms_.push_back(std::move(name));
  }
  used_.insert(used_.end(), process.openPaths.begin(), process.openPaths.end());
  if (process.workingFolder.bytes.empty()) return;
  used_.push_back(process.workingFolder);
  workingFolders_.push_back(process.workingFolder);
}

bool InUseIndex::isInUse(const FilePath& canonicalPath) const {
  return !couldReadProcesses_ || holdsAtOrBelow(used_, canonicalPath) ||
         isNamedAfterUninspectable(leafOf(canonicalPath));
}

bool InUseIndex::standsIn(const FilePath& canonicalPath) const {
  return !couldReadProcesses_ || holdsAtOrBelow(workingFolders_, canonicalPath);
}

bool InUseIndex::isNamedAfterUninspectable(std::string_view leaf) const {
  if (claimingPrograms_.empty()) return false;
  const std::string name = asciiLowered(leaf);
  const auto claims = [&](const std::string& text) { return std::ranges::binary_search(claimingPrograms_, text); };
  return claims(name) || std::ranges::any_of(tokensOf(name), claims);
}

}  // namespace quorvane
