#include "quorvane/platform/linux/LinuxProcessTable.h"

#include "quorvane/base/SortUniquely.h"
#include "quorvane/platform/SystemPlatform.h"
#include "quorvane/platform/linux/DirectoryRecords.h"
#include "quorvane/platform/linux/ProcFiles.h"

#include <cerrno>

#include <unistd.h>

namespace quorvane {

namespace {

constexpr std::size_t longestText = 256 << 20;  // the maps of a process with a million mappings

/// The system names no place whose path is longer than it can tell.
bool isUntold(PosixError error) { return error.code == ENAMETOOLONG; }

}  // namespace

LinuxProcessTable::LinuxProcessTable(ProcessTableRequest request)
    : request_(std::move(request)), fileSystem_(makeSystemFileSystem()) {}

Outcome<std::vector<RunningProcess>, PosixError> LinuxProcessTable::read() {
  const auto root = fileSystem_->openStartingFolder(request_.root);
  if (!root) return failure(root.error());
  const auto numbers = processNumbers(root->number());
  if (!numbers) return failure(numbers.error());
  std::vector<RunningProcess> processes;
  for (const std::int32_t number : *numbers)
    if (auto found = process(root->number(), number)) processes.push_back(std::move(*found));
  return processes;
}

Outcome<std::vector<std::int32_t>, PosixError> LinuxProcessTable::processNumbers(int root) const {
  std::vector<std::int32_t> numbers;
  const auto visited = visitDirectory(root, [&](const char* name, unsigned char) {
    const auto number = processNumberFromName(name);
    if (number && *number != request_.ownNumber) numbers.push_back(*number);
    return true;
  });
  if (!visited) return failure(visited.error());
  return numbers;
}

/// Nothing for a process that has ended or is none of the user's.
std::optional<RunningProcess> LinuxProcessTable::process(int root, std::int32_t number) {
  // All is read through this one descriptor: it goes stale with the process, even if the number is used again.
  const auto folder = fileSystem_->openFolder(root, std::to_string(number).c_str());
  if (!folder) return std::nullopt;
  const auto text = content(folder->number(), "status");
  const auto status = text ? processStatusFromText(*text) : std::nullopt;
  if (!status || status->hasEnded) return std::nullopt;
  if (request_.user != 0 && status->owner != request_.user) return std::nullopt;

  RunningProcess found;
  found.identifier = number;
  found.owner = status->owner;
  const PosixError reason = inspect(folder->number(), found);
  found.isInspectable = reason.code == 0;
  if (reason.code != 0 && !reason.isDenied() && !isUntold(reason)) return std::nullopt;
  if (reason.isDenied()) found.workingFolder = {}, found.openPaths.clear();
  if (found.program.empty()) {
    auto name = content(folder->number(), "comm");
    if (!name) return std::nullopt;
    if (name->ends_with('\n')) name->pop_back();
    found.program = std::move(*name);
  }
  return found;
}

Outcome<std::string, PosixError> LinuxProcessTable::content(int folder, const char* name) {
  const auto file = fileSystem_->openFile(folder, name);
  if (!file) return failure(file.error());
  return readToEnd(*fileSystem_, file->number(), longestText);
}

/// Why the process could not be looked into, wholly or (ENAMETOOLONG) in part; or 0.
PosixError LinuxProcessTable::inspect(int folder, RunningProcess& process) {
  const auto executable = fileSystem_->linkTarget(folder, "exe");
  if (executable) {
    process.program = programNameFromExecutable(*executable);
    process.openPaths.push_back({*executable});
  } else if (!executable.error().isMissing()) {  // the kernel's own threads have none
    return executable.error();
  }
  const auto workingFolder = fileSystem_->linkTarget(folder, "cwd");
  if (!workingFolder && !isUntold(workingFolder.error())) return workingFolder.error();
  if (workingFolder) process.workingFolder = {*workingFolder};
  const PosixError reason = addOpenFiles(folder, process.openPaths);
  if (reason.code != 0 && !isUntold(reason)) return reason;
  const auto maps = content(folder, "maps");
  if (!maps) return maps.error();
  addMappedPaths(*maps, process.openPaths);
  sortUniquely(process.openPaths);
  return workingFolder ? reason : workingFolder.error();
}

PosixError LinuxProcessTable::addOpenFiles(int folder, std::vector<FilePath>& paths) {
  const auto descriptors = fileSystem_->openFolder(folder, "fd");
  if (!descriptors) return descriptors.error();
  PosixError untold;
  const auto visited = visitDirectory(descriptors->number(), [&](const char* name, unsigned char) {
    auto target = fileSystem_->linkTarget(descriptors->number(), name);
    if (!target && isUntold(target.error())) untold = target.error();
    if (target && target->starts_with('/')) paths.push_back({std::move(*target)});  // else closed since, or no file
    return true;
  });
  return visited ? untold : visited.error();
}

std::unique_ptr<ProcessTable> makeSystemProcessTable() {
  return std::make_unique<LinuxProcessTable>(
      ProcessTableRequest{.root = {"/proc"}, .user = ::geteuid(), .ownNumber = ::getpid()});
}

}  // namespace quorvane
