#pragma once

#include "quorvane/platform/Clock.h"
#include "quorvane/platform/FileDescriptor.h"
#include "quorvane/platform/SystemProcesses.h"
#include "quorvane/platform/linux/ProcessStat.h"

#include <chrono>
#include <optional>
#include <string>
#include <vector>

namespace quorvane {

/// How the kernel counts in /proc/PID/stat.
struct ProcessUnits {
  double ticksPerSecond = 100;
  std::int64_t pageBytes = 4096;

  static ProcessUnits ofThisSystem();
};

/// Reads one file of each process below `root` ("/proc"), and of those that it tells where their executable is. The
/// files of some hundred processes stay open from one call to the next, which saves a third of what a call costs.
class LinuxProcesses final : public SystemProcesses {
 public:
  LinuxProcesses(FilePath root, ProcessUnits units, const Clock& clock);

  /// Fails when `root` cannot be read, or tells of no process.
  Outcome<std::vector<SystemProcessSample>, PosixError> busiest(std::size_t most, StopToken stop) override;

 private:
  struct Entry {
    std::int32_t pid = 0;
    std::uint32_t nameOffset = 0, nameLength = 0;  ///< in `names_`
    std::uint64_t ticks = 0, startTicks = 0;
    std::uint64_t newTicks = 0;  ///< since the reading before
    std::int64_t residentPages = 0;
    FileDescriptor stat = {};  ///< of some; reading it fails once the process has ended, whoever has its number then
  };

  Outcome<void, PosixError> readEntries(int folder, const StopToken& stop);
  FileDescriptor takeOpen(std::int32_t pid);
  void keep(std::int32_t pid, const ProcessStat& stat, FileDescriptor file);
  void compareWithPrevious();
  void chooseBusiest(std::size_t most);
  SystemProcessSample described(int folder, const Entry& entry, double seconds) const;

  const FilePath root_;
  const ProcessUnits units_;
  const Clock& clock_;
  const std::size_t mostKeptOpen_;
  FileDescriptor folder_;
  std::vector<Entry> entries_, previous_;              ///< by number
  std::vector<std::int32_t> unread_, previousUnread_;  ///< numbers of processes that could not be read, in their order
  std::string names_;
  std::vector<std::uint32_t> chosen_;  ///< places in `entries_`
  std::optional<std::chrono::steady_clock::time_point> previousTime_;
};

}  // namespace quorvane
