#include "quorvane/platform/linux/LinuxProcesses.h"

#include "quorvane/platform/BusiestProcesses.h"
#include "quorvane/platform/linux/DirectoryRecords.h"
#include "quorvane/platform/linux/ProcFiles.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>
#include <limits>
#include <numeric>
#include <span>
#include <tuple>

#include <fcntl.h>
#include <sys/resource.h>

namespace quorvane {

namespace {

constexpr double leastSeconds = 0.001;
constexpr std::size_t longestStat = 1024;

/// While others take the place of all that were open before, twice as many are open: at least half of what may be is
/// left for everything else.
std::size_t mostFilesKeptOpen() {
  constexpr std::size_t most = 512;
  rlimit limit{};
  return ::getrlimit(RLIMIT_NOFILE, &limit) == 0 ? std::min<std::size_t>(most, limit.rlim_cur / 4) : 0;
}

/// The file's beginning; it is opened where it is not open, or is that of a process that ended. Empty when it cannot be
/// read, as the process may have ended meanwhile.
std::string_view contentOf(int folder, std::int32_t pid, FileDescriptor& file, std::span<char> buffer) {
  const auto read = [&] { return ::pread(file.number(), buffer.data(), buffer.size(), 0); };
  ssize_t size = file.isOpen() ? retried(read) : -1;
  if (size <= 0) {
    std::array<char, 32> name{};
    std::snprintf(name.data(), name.size(), "%d/stat", pid);
    file = FileDescriptor(::openat(folder, name.data(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
    if (!file.isOpen()) return {};
    size = retried(read);
  }
  return size > 0 ? std::string_view(buffer.data(), static_cast<std::size_t>(size)) : std::string_view();
}

FilePath executableOf(int folder, std::int32_t pid) {
  std::array<char, 4096> target{};
  const ssize_t size = ::readlinkat(folder, (std::to_string(pid) + "/exe").c_str(), target.data(), target.size());
  if (size <= 0 || static_cast<std::size_t>(size) == target.size()) return {};
  return {std::string(pathFromExecutable({target.data(), static_cast<std::size_t>(size)}))};
}

}  // namespace

ProcessUnits ProcessUnits::ofThisSystem() {
  const long ticks = ::sysconf(_SC_CLK_TCK), bytes = ::sysconf(_SC_PAGESIZE);
  return {ticks > 0 ? static_cast<double>(ticks) : 100, bytes > 0 ? bytes : 4096};
}

LinuxProcesses::LinuxProcesses(FilePath root, ProcessUnits units, const Clock& clock)
    : root_(std::move(root)), units_(units), clock_(clock), mostKeptOpen_(mostFilesKeptOpen()) {}

Outcome<std::vector<SystemProcessSample>, PosixError> LinuxProcesses::busiest(std::size_t most, StopToken stop) {
  if (!folder_.isOpen()) folder_ = FileDescriptor(::open(root_.bytes.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  if (!folder_.isOpen()) return failure(lastPosixError());
  const auto now = clock_.uptime();
  if (const auto read = readEntries(folder_.number(), stop); !read) return failure(read.error());
  if (entries_.empty()) return failure(PosixError{ENODATA});
  compareWithPrevious();
  chooseBusiest(most);

  const double seconds =
      previousTime_ ? std::max(leastSeconds, std::chrono::duration<double>(now - *previousTime_).count()) : 0;
  std::vector<SystemProcessSample> samples;
  samples.reserve(chosen_.size());
  for (const std::uint32_t place : chosen_) samples.push_back(described(folder_.number(), entries_[place], seconds));
  previousTime_ = now;
  std::swap(entries_, previous_);
  entries_.clear();  // and the files of those that are not there any more
  std::swap(unread_, previousUnread_);
  return samples;
}

Outcome<void, PosixError> LinuxProcesses::readEntries(int folder, const StopToken& stop) {
  entries_.clear();
  unread_.clear();
  names_.clear();
  std::array<char, longestStat> buffer;  // NOLINT(cppcoreguidelines-pro-type-member-init): filled for each process
  const auto visited = visitDirectory(folder, [&](const char* name, unsigned char) {
    const auto pid = processNumberFromName(name);
    if (!pid) return true;
    FileDescriptor file = takeOpen(*pid);
    if (const auto stat = processStatFromText(contentOf(folder, *pid, file, buffer))) {
      keep(*pid, *stat, std::move(file));
    } else {
      unread_.push_back(*pid);
    }
    return !stop.stopRequested();
  });
  if (!visited) return failure(visited.error());
  if (stop.stopRequested()) return failure(cancelledError());
  std::ranges::sort(entries_, {}, &Entry::pid);
  std::ranges::sort(unread_);
  return {};
}

FileDescriptor LinuxProcesses::takeOpen(std::int32_t pid) {
  const auto found = std::ranges::lower_bound(previous_, pid, {}, &Entry::pid);
  return found != previous_.end() && found->pid == pid ? std::move(found->stat) : FileDescriptor();
}

void LinuxProcesses::keep(std::int32_t pid, const ProcessStat& stat, FileDescriptor file) {
  Entry entry{.pid = pid,
              .nameOffset = static_cast<std::uint32_t>(names_.size()),
              .nameLength = static_cast<std::uint32_t>(stat.name.size()),
              .ticks = stat.ticks,
              .startTicks = stat.startTicks,
              .residentPages = std::max<std::int64_t>(0, stat.residentPages)};
  names_ += stat.name;
  if (entries_.size() < mostKeptOpen_) entry.stat = std::move(file);
  entries_.push_back(std::move(entry));
}

// A process that was not there before has had all its time since; of the first reading, and of a process that could not
// be read then, nothing is known.
void LinuxProcesses::compareWithPrevious() {
  if (!previousTime_) return;
  auto before = previous_.begin();
  for (Entry& entry : entries_) {
    while (before != previous_.end() && before->pid < entry.pid) ++before;
    const bool isSame = before != previous_.end() && before->pid == entry.pid && before->startTicks == entry.startTicks;
    if (!isSame && std::ranges::binary_search(previousUnread_, entry.pid)) continue;
    const std::uint64_t ticksBefore = isSame ? before->ticks : 0;
    entry.newTicks = entry.ticks > ticksBefore ? entry.ticks - ticksBefore : 0;
  }
}

void LinuxProcesses::chooseBusiest(std::size_t most) {
  chosen_.resize(entries_.size());
  std::iota(chosen_.begin(), chosen_.end(), std::uint32_t{0});
  const auto isLarger = [&](std::uint32_t left, std::uint32_t right) {
    return std::tuple(entries_[right].residentPages, left) < std::tuple(entries_[left].residentPages, right);
  };
  const auto isBusier = [&](std::uint32_t left, std::uint32_t right) {
    const std::uint64_t leftTicks = entries_[left].newTicks, rightTicks = entries_[right].newTicks;
    return leftTicks != rightTicks ? leftTicks > rightTicks : isLarger(left, right);
  };
  keepBusiest(chosen_, most, isBusier, isLarger);
}

SystemProcessSample LinuxProcesses::described(int folder, const Entry& entry, double seconds) const {
  SystemProcessSample sample{.pid = entry.pid};
  sample.executablePath = executableOf(folder, entry.pid);
  const std::string_view name = std::string_view(names_).substr(entry.nameOffset, entry.nameLength);
  sample.name = std::string(fullProcessName(name, sample.executablePath.bytes));
  if (seconds > 0) sample.cpuPercent = static_cast<double>(entry.newTicks) / units_.ticksPerSecond / seconds * 100;
  if (__builtin_mul_overflow(entry.residentPages, units_.pageBytes, &sample.memoryBytes))
    sample.memoryBytes = std::numeric_limits<std::int64_t>::max();
  return sample;
}

}  // namespace quorvane
