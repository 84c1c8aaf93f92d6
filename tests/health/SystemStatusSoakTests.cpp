// Samples again and again and looks at the memory. QUORVANE_SOAK_SAMPLES=100000 runs more of them.
#include "quorvane/health/SystemStatusDocument.h"
#include "quorvane/health/SystemStatusMonitor.h"
#include "quorvane/health/SystemStatusService.h"
#include "quorvane/platform/SystemPlatform.h"
#include "quorvane/platform/linux/LinuxProcesses.h"
#include "quorvane/platform/linux/LinuxSystemCounters.h"
#include "quorvane/platform/linux/LinuxSystemSensors.h"
#include "tests/health/ManualDispatcher.h"
#include "tests/support/ManualClock.h"
#include "tests/support/SystemTree.h"

#include <gtest/gtest.h>
#include <malloc.h>

#include <cstdlib>
#include <string>

extern "C" __attribute__((weak)) std::size_t __sanitizer_get_current_allocated_bytes();  // NOLINT: its name

namespace quorvane {
namespace {

std::size_t allocatedBytes() {
  if (__sanitizer_get_current_allocated_bytes != nullptr) return __sanitizer_get_current_allocated_bytes();
  const struct mallinfo2 info = ::mallinfo2();
  return info.uordblks + info.hblkhd;
}

int wantedSamples() {
  const char* wanted = std::getenv("QUORVANE_SOAK_SAMPLES");  // NOLINT(concurrency-mt-unsafe): before any thread
  return wanted == nullptr ? 2000 : std::atoi(wanted);        // NOLINT(cert-err34-c): 0 for nonsense
}

/// A laptop with forty processes.
SystemTree::Files laptopFiles() {
  SystemTree::Files files = desktopFiles();
  files.insert(files.end(), {{"sys/class/power_supply/BAT0/type", "Battery\n"},
                             {"sys/class/power_supply/BAT0/capacity", "55\n"},
                             {"sys/class/thermal/thermal_zone0/temp", "50000\n"},
                             {"sys/class/thermal/thermal_zone0/trip_point_0_type", "critical\n"},
                             {"sys/class/thermal/thermal_zone0/trip_point_0_temp", "100000\n"}});
  for (int pid = 1; pid <= 40; ++pid)
    files.emplace_back("proc/" + std::to_string(pid) + "/stat",
                       std::to_string(pid) + " (a long process) S 1 1 1 0 -1 0 0 0 0 0 10 20 0 0 20 0 1 0 5 9 77\n");
  return files;
}

TEST(SystemStatusSoakTests, takesNoMoreMemoryHoweverLongItSamples) {
  ASSERT_GT(wantedSamples(), 0);
  const SystemTree tree(laptopFiles());
  ManualClock clock{Date()};
  LinuxSystemCounters counters({.root = tree.root(), .allowedProcessors = [] { return 4; }});
  LinuxSystemSensors sensors(tree.root());
  LinuxProcesses processes(tree.at("proc"), {}, clock);
  const auto volumes = makeSystemVolumes();
  SystemStatusService service({counters, sensors, processes, *volumes, clock});

  ManualDispatcher mainThread;
  std::size_t documents = 0;
  SystemStatusMonitor monitor(
      mainThread, [&](const auto& sampled) { sampled(service.sample()); }, emptySnapshot(counters), {},
      [&] { documents += jsonLine(monitor.snapshot()).size(); });
  monitor.start();
  const auto sampleTimes = [&](int count) {
    for (int i = 0; i < count; ++i) {
      clock.advanceUptime(monitor.refreshInterval());
      mainThread.pass(monitor.refreshInterval());
    }
  };
  sampleTimes(200);
  const std::size_t before = allocatedBytes();
  sampleTimes(wantedSamples());
  EXPECT_EQ(monitor.snapshot().topProcesses.size(), 10U);
  EXPECT_TRUE(monitor.snapshot().notMeasured.empty());
  EXPECT_LE(allocatedBytes(), before + 4096) << documents;
}

}  // namespace
}  // namespace quorvane
