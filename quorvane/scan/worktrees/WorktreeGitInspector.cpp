#include "quorvane/scan/worktrees/WorktreeGitInspector.h"

#include "quorvane/base/Utf8.h"
#include "quorvane/scan/worktrees/GitCommand.h"
#include "quorvane/scan/worktrees/GitOutput.h"

#include <array>
#include <cstdint>
#include <string>
#include <utility>

namespace quorvane {

namespace {

constexpr std::size_t longestGitFile = 64 * 1024;
constexpr std::size_t mostNamesInANote = 3;
constexpr GitVersion oldestGit{2, 31};  // the first with GIT_CONFIG_COUNT and --path-format

constexpr std::array mainBranches = {"refs/heads/main", "refs/heads/master", "refs/heads/trunk",
                                     "refs/remotes/origin/main", "refs/remotes/origin/master"};

/// Each is left in the git directory by a command that is not finished.
constexpr std::array unfinishedOperations = {"rebase-merge", "rebase-apply", "MERGE_HEAD", "CHERRY_PICK_HEAD",
                                             "REVERT_HEAD",  "BISECT_LOG",   "sequencer",  "index.lock"};

constexpr auto lockedNote = "coverage.note.worktreeLocked";
constexpr auto inUseNote = "coverage.note.worktreeInUse";
constexpr auto unfinishedNote = "coverage.note.unfinishedOperation";
constexpr auto ownRepositoryNote = "coverage.note.ownRepository";
constexpr auto hiddenChangesNote = "coverage.note.hiddenChanges";
constexpr auto submodulesNote = "coverage.note.submodules";
constexpr auto ignoredFilesNote = "coverage.note.ignoredFiles";

ScanCoverageNote noteOf(const char* key) { return {std::nullopt, key, std::nullopt, {}}; }

WorktreeFinding unknownFor(const char* noteKey) { return {WorktreeGitState::unknown, {noteOf(noteKey)}}; }

/// Where a worktree's two folders lie, links resolved, found without git.
struct WorktreePlaces {
  FilePath worktree;
  FilePath gitDirectory;
};

/// Looks at one worktree; lives for one question.
class WorktreeExamination {
 public:
  WorktreeExamination(FileSystem& fileSystem, GitCommand& git, const WorktreePlaces& places)
      : fileSystem_(fileSystem), git_(git), places_(places) {}

  WorktreeFinding finding() {
    if (!git_.disarmFilters() || !findsOwnership() || !findsStatus()) return unknown();
    if (hasChanges_) return {WorktreeGitState::dirty, std::move(notes_)};
    if (!findsIndex() || hasDoubts_) return unknown();
    return {relationToMain(), std::move(notes_)};
  }

 private:
  WorktreeFinding unknown() { return {WorktreeGitState::unknown, std::move(notes_)}; }

  void doubt(const char* noteKey) {
    hasDoubts_ = true;
    notes_.push_back(noteOf(noteKey));
  }

  bool liesInside(const FilePath& path) const { return isAtOrBelow(path, places_.worktree); }

  /// Git has to look exactly where we do: a configuration can send it elsewhere.
  bool findsOwnership() {
    const auto output = git_.outputOf(
        {"rev-parse", "--path-format=absolute", "--show-toplevel", "--absolute-git-dir", "--git-common-dir"});
    const auto git = output ? gitPlaces(*output) : std::nullopt;
    if (!git || git->topLevel != places_.worktree.bytes || git->gitDirectory != places_.gitDirectory.bytes)
      return false;
    const auto common = fileSystem_.resolved({git->commonDirectory});
    const auto objects = fileSystem_.resolved(joined({git->commonDirectory}, "objects"));
    if (!common || !objects) return false;
    if (liesInside(places_.gitDirectory) || liesInside(*common) || liesInside(*objects)) doubt(ownRepositoryNote);
    return true;
  }

  bool findsStatus() {
    const auto output = git_.outputOf({"status", "--porcelain=v1", "-z", "--untracked-files=all", "--ignored=matching",
                                       "--ignore-submodules=all", "--no-renames"});
    const auto status = output ? gitStatus(*output) : std::nullopt;
    if (!status) return false;
    hasChanges_ = status->hasChanges;
    noteIgnored(status->ignored);
    return true;
  }

  void noteIgnored(const std::vector<std::string>& ignored) {
    ScanCoverageNote note = noteOf(ignoredFilesNote);
    std::int64_t count = 0;
    for (const std::string& path : ignored) {
      if (isRebuildable(path)) continue;
      if (note.names.size() < mostNamesInANote) note.names.push_back(withReplacedInvalidUtf8(path));
      ++count;
    }
    note.count = count;
    if (count > 0) notes_.push_back(std::move(note));
  }

  bool findsIndex() {
    const auto output = git_.outputOf({"ls-files", "--stage", "-v", "-z"});
    const auto index = output ? gitIndex(*output) : std::nullopt;
    if (!index) return false;
    if (index->hasHiddenChanges) doubt(hiddenChangesNote);
    if (index->hasSubmodules) doubt(submodulesNote);
    return true;
  }

  WorktreeGitState relationToMain() const {
    constexpr int isNoAncestor = 1, isMissing = 1;
    // Without a commit of its own there is nothing that could be merged or not.
    if (!git_.outputOf({"rev-parse", "--verify", "--quiet", "HEAD^{commit}"})) return WorktreeGitState::unknown;
    for (const char* branch : mainBranches) {
      const auto exists = git_.run({"rev-parse", "--verify", "--quiet", branch + std::string("^{commit}")});
      if (exists && exists->exitCode == isMissing) continue;
      if (!exists || exists->exitCode != 0) return WorktreeGitState::unknown;
      const auto contained = git_.run({"merge-base", "--is-ancestor", "HEAD", branch});
      if (contained && contained->exitCode == 0) return WorktreeGitState::merged;
      if (contained && contained->exitCode == isNoAncestor) return WorktreeGitState::committed;
      return WorktreeGitState::unknown;
    }
    return WorktreeGitState::committed;
  }

  FileSystem& fileSystem_;
  GitCommand& git_;
  const WorktreePlaces& places_;
  std::vector<ScanCoverageNote> notes_;
  bool hasChanges_ = false;
  bool hasDoubts_ = false;
};

/// The path in a ".git" file, made absolute.
std::optional<FilePath> readGitFile(FileSystem& fileSystem, int folder, const FilePath& worktree) {
  const auto file = fileSystem.openFile(folder, ".git");
  if (!file) return std::nullopt;
  const auto text = readToEnd(fileSystem, file->number(), longestGitFile);
  const auto path = text ? gitDirectoryNamedBy(*text) : std::nullopt;
  if (!path) return std::nullopt;
  return path->starts_with('/') ? FilePath{*path} : joined(worktree, *path);
}

std::optional<WorktreePlaces> placesOf(FileSystem& fileSystem, const FilePath& url) {
  const auto parent = fileSystem.openStartingFolder(parentOf(url));
  if (!parent) return std::nullopt;
  const auto folder = fileSystem.openFolder(parent->number(), std::string(leafOf(url)).c_str());
  const auto worktree = fileSystem.resolved(url);
  if (!folder || !worktree) return std::nullopt;
  const auto entry = fileSystem.status(folder->number(), ".git");
  if (!entry) return std::nullopt;
  if (entry->isFolder()) return WorktreePlaces{*worktree, joined(*worktree, ".git")};
  if (!entry->isRegularFile()) return std::nullopt;
  const auto named = readGitFile(fileSystem, folder->number(), *worktree);
  const auto gitDirectory = named ? fileSystem.resolved(*named) : failure(PosixError{});
  if (!gitDirectory) return std::nullopt;
  return WorktreePlaces{*worktree, *gitDirectory};
}

/// Whether a git directory holds any of these names; nothing when that cannot be seen.
template <std::size_t count>
std::optional<bool> holdsAny(FileSystem& fileSystem, int folder, const std::array<const char*, count>& names) {
  for (const char* name : names) {
    const auto status = fileSystem.status(folder, name);
    if (status) return true;
    if (!status.error().isMissing()) return std::nullopt;
  }
  return false;
}

/// What can be refused without asking git.
std::optional<WorktreeFinding> cheapRefusal(FileSystem& fileSystem, const FilePath& gitDirectory) {
  const auto folder = fileSystem.openStartingFolder(gitDirectory);
  if (!folder) return WorktreeFinding{};
  const auto isLocked = holdsAny(fileSystem, folder->number(), std::array{"locked"});
  const auto isUnfinished = holdsAny(fileSystem, folder->number(), unfinishedOperations);
  if (!isLocked || !isUnfinished) return WorktreeFinding{};
  if (*isLocked) return unknownFor(lockedNote);
  if (*isUnfinished) return unknownFor(unfinishedNote);
  return std::nullopt;
}

bool succeeds(ProcessRunner& processRunner, const FilePath& developerTools) {
  ProcessRequest request;
  request.executable = developerTools;
  request.arguments = {"-p"};
  request.environment = {{"PATH", "/usr/bin:/bin"}, {"LC_ALL", "C"}};
  request.timeLimit = std::chrono::seconds(20);
  const auto result = processRunner.run(request, {});
  return result && !result->didTimeOut && result->exitCode == 0;
}

bool canUse(ProcessRunner& processRunner, const GitPrograms& programs) {
  if (programs.developerTools && !succeeds(processRunner, *programs.developerTools)) return false;
  const auto output = GitCommand(processRunner, programs.gitURL, {"/"}, {}).outputOf({"--version"});
  const auto version = output ? gitVersion(*output) : std::nullopt;
  return version && *version >= oldestGit;
}

}  // namespace

WorktreeGitInspector::WorktreeGitInspector(FileSystem& fileSystem, ProcessRunner& processRunner,
                                           const GitPrograms& programs)
    : fileSystem_(fileSystem),
      processRunner_(processRunner),
      gitURL_(programs.gitURL),
      isGitAvailable_(canUse(processRunner, programs)) {}

WorktreeFinding WorktreeGitInspector::inspect(const WorktreeQuery& query, StopToken stop) const {
  if (!isGitAvailable_) return {};
  const auto places = placesOf(fileSystem_, query.url);
  if (!places) return {};
  if (query.processStandsInside) return unknownFor(inUseNote);
  if (auto refusal = cheapRefusal(fileSystem_, places->gitDirectory)) return std::move(*refusal);
  GitCommand git(processRunner_, gitURL_, places->worktree, std::move(stop));
  return WorktreeExamination(fileSystem_, git, *places).finding();
}

}  // namespace quorvane
