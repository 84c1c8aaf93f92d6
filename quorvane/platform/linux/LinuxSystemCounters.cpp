#include "quorvane/platform/linux/LinuxSystemCounters.h"

#include "quorvane/platform/SystemPlatform.h"
#include "quorvane/platform/linux/KernelTexts.h"

#include <net/if.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cmath>
#include <ctime>
#include <vector>

#include <sched.h>
#include <sys/utsname.h>

namespace quorvane {

namespace {

constexpr std::size_t mostFlagsKeptOpen = 32;
constexpr std::size_t longestInterfaces = std::size_t{1} << 20;  // bytes of /proc/net/dev

/// The answer, or that the text it should have come from makes no sense.
template <class T>
Outcome<T, PosixError> understood(std::optional<T> value) {
  if (!value) return failure(PosixError{EBADMSG});
  return *std::move(value);
}

std::string kernelName() {
  utsname names{};
  return ::uname(&names) == 0 ? std::string(names.sysname) + " " + names.release : "Linux";
}

std::string systemName(const FilePath& root) {
  std::vector<char> buffer(std::size_t{64} << 10);
  for (const char* place : {"etc/os-release", "usr/lib/os-release"}) {
    const auto text = KernelFile(joined(root, place)).whole(buffer);
    if (!text) continue;
    if (auto name = systemNameFromRelease(*text)) return *std::move(name);
  }
  return kernelName();
}

int effectiveProcessors(int allowed, std::optional<double> quota) {
  if (!quota || *quota >= allowed) return allowed;
  return std::max(1, static_cast<int>(std::ceil(*quota)));
}

/// "0x1003" as a number.
std::optional<unsigned> flagsFromText(std::string_view text) {
  if (!text.starts_with("0x") || !text.ends_with('\n')) return std::nullopt;
  text.remove_prefix(2);
  text.remove_suffix(1);
  unsigned flags = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), flags, 16);
  if (error != std::errc() || end != text.data() + text.size()) return std::nullopt;
  return flags;
}

}  // namespace

int allowedProcessorCount() {
  std::array<cpu_set_t, 16> sets{};  // 16,384 processors
  if (::sched_getaffinity(0, sizeof sets, sets.data()) != 0) return 1;
  return std::max(1, CPU_COUNT_S(sizeof sets, sets.data()));
}

LinuxSystemCounters::LinuxSystemCounters(SystemCountersRequest request)
    : request_(std::move(request)),
      stat_(joined(request_.root, "proc/stat")),
      meminfo_(joined(request_.root, "proc/meminfo")),
      interfaces_(joined(request_.root, "proc/net/dev")),
      limits_(request_.root),
      osVersion_(systemName(request_.root)) {}

Outcome<CPUTicks, PosixError> LinuxSystemCounters::processorTicks() {
  std::array<char, 512> buffer{};
  const auto text = stat_.beginning(buffer);
  if (!text) return failure(text.error());
  return understood(ticksFromStat(*text));
}

Outcome<MemoryUse, PosixError> LinuxSystemCounters::memory() {
  std::array<char, 256> buffer{};  // the first lines
  const auto text = meminfo_.beginning(buffer);
  if (!text) return failure(text.error());
  const auto machine = memoryFromMeminfo(*text);
  if (!machine) return failure(PosixError{EBADMSG});
  return limits_.memoryBelow(machine->total).value_or(*machine);
}

Outcome<NetworkCounters, PosixError> LinuxSystemCounters::network() {
  const auto text = interfaces_.whole(interfacesText_, longestInterfaces);
  if (!text) return failure(text.error());

  ++reading_;
  NetworkCounters sum;
  const bool isUnderstood = visitInterfaces(*text, [&](const InterfaceCounters& interface) {
    if (!counts(interface)) return;
    sum.received += interface.counters.received;
    sum.sent += interface.counters.sent;
  });
  forgetInterfacesThatWent();
  if (!isUnderstood) return failure(PosixError{EBADMSG});
  return sum;
}

bool LinuxSystemCounters::counts(const InterfaceCounters& interface) {
  auto found = known_.find(interface.name);
  if (found == known_.end()) {
    const FilePath folder = joined(joined(request_.root, "sys/class/net"), interface.name);
    found = known_.emplace(interface.name, Interface{KernelFile(joined(folder, "flags"))}).first;
  }
  Interface& known = found->second;
  known.seen = reading_;
  if (known.countedThen == interface.counters) return known.isCounted;
  known.countedThen = interface.counters;
  known.isCounted = isUp(known.flags, interface.name);
  if (known_.size() > mostFlagsKeptOpen) known.flags.close();
  return known.isCounted;
}

bool LinuxSystemCounters::isUp(KernelFile& file, std::string_view interface) {
  std::array<char, 32> buffer{};
  const auto text = file.beginning(buffer);
  const auto flags = text ? flagsFromText(*text) : std::nullopt;
  if (!flags) return interface != "lo";
  return (*flags & (IFF_UP | IFF_LOOPBACK)) == IFF_UP;
}

void LinuxSystemCounters::forgetInterfacesThatWent() {
  std::erase_if(known_, [&](const auto& each) { return each.second.seen != reading_; });
}

Outcome<double, PosixError> LinuxSystemCounters::uptimeSeconds() {
  timespec time{};
  if (::clock_gettime(CLOCK_BOOTTIME, &time) != 0) return failure(lastPosixError());
  constexpr double nanosecondsOfSecond = 1e9;
  return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) / nanosecondsOfSecond;
}

int LinuxSystemCounters::processorCount() {
  if (!processorCount_) processorCount_ = effectiveProcessors(request_.allowedProcessors(), limits_.processors());
  return *processorCount_;
}

void LinuxSystemCounters::forgetKept() {
  for (auto& [name, interface] : known_) interface.countedThen.reset();
  processorCount_.reset();
  limits_.forgetMemoryLimits();
}

std::unique_ptr<SystemCounters> makeSystemCounters() {
  return std::make_unique<LinuxSystemCounters>(SystemCountersRequest{});
}

}  // namespace quorvane
