#include "quorvane/platform/SystemCounters.h"

#include "quorvane/platform/SystemPlatform.h"
#include "quorvane/platform/linux/ControlGroupPlaces.h"
#include "quorvane/platform/linux/KernelTexts.h"
#include "quorvane/platform/linux/LinuxSystemCounters.h"
#include "tests/support/SystemTree.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cerrno>
#include <fstream>

namespace quorvane {
namespace {

using testing::ElementsAre;

constexpr std::int64_t kib = 1024, gib = std::int64_t{1} << 30;

LinuxSystemCounters countersOf(const SystemTree& tree, int processors = 64) {
  return LinuxSystemCounters({.root = tree.root(), .allowedProcessors = [processors] { return processors; }});
}

TEST(SystemCountersTests, readADesktop) {
  const SystemTree tree(desktopFiles());
  auto counters = countersOf(tree, 8);
  EXPECT_EQ(counters.processorTicks().value(), (CPUTicks{.user = 100, .system = 40, .idle = 850, .nice = 20}));
  EXPECT_EQ(counters.memory().value(), (MemoryUse{.used = 4'000'000 * kib, .total = 16'000'000 * kib}));
  EXPECT_EQ(counters.network().value(), (NetworkCounters{.received = 18'446'744'073, .sent = 700}))
      << "neither the loopback nor an interface that is down";
  EXPECT_EQ(counters.processorCount(), 8);
  EXPECT_EQ(counters.osVersion(), "Debian GNU/Linux 12 (bookworm)");
}

TEST(SystemCountersTests, followWhatComesAndGoes) {
  const SystemTree tree(desktopFiles());
  auto counters = countersOf(tree);
  EXPECT_EQ(counters.network()->sent, 700U);
  tree.set("sys/class/net/wlan0/flags", "0x1003\n");
  EXPECT_EQ(counters.network()->sent, 700U) << "it counted nothing since";
  counters.forgetKept();
  EXPECT_EQ(counters.network()->sent, 790U);
  tree.set("sys/class/net/eth0/flags", "0x1002\n");
  tree.set("proc/net/dev", "a|b\nc|d\n  eth0: 18446744074 9 0 0 0 0 0 0 701 4\n wlan0:900 9 0 0 0 0 0 0 90 4\n");
  EXPECT_EQ(counters.network()->sent, 90U) << "eth0 counted something";
  tree.set("proc/net/dev", "a|b\nc|d\n  tun0: 4294967295 0 0 0 0 0 0 0 5 0\n");
  EXPECT_EQ(counters.network().value(), (NetworkCounters{4294967295, 5}))
      << "without flags it counts, being no loopback";
  tree.set("proc/net/dev", "a|b\nc|d\n");
  EXPECT_EQ(counters.network().value(), NetworkCounters{});
}

TEST(SystemCountersTests, readMoreInterfacesThanFilesAreKeptOpen) {
  const SystemTree tree(desktopFiles());
  std::string text = "a|b\nc|d\n";
  for (int i = 0; i < 200; ++i) text += "  veth" + std::to_string(i) + ": 10 0 0 0 0 0 0 0 1 0 0 0 0 0 0 0\n";
  tree.set("proc/net/dev", text);
  auto counters = countersOf(tree);
  EXPECT_EQ(counters.network().value(), (NetworkCounters{2000, 200}));
  EXPECT_EQ(counters.network().value(), (NetworkCounters{2000, 200}));
}

TEST(SystemCountersTests, tellWhyThereIsNoAnswer) {
  const SystemTree empty({});
  auto counters = countersOf(empty);
  EXPECT_EQ(counters.processorTicks().error().code, ENOENT);
  EXPECT_EQ(counters.memory().error().code, ENOENT);
  EXPECT_EQ(counters.network().error().code, ENOENT);
  EXPECT_TRUE(counters.osVersion().starts_with("Linux"));

  const std::string huge(std::size_t{3} << 20, '7');
  for (const std::string& nonsense :
       {std::string(), std::string("\n"), std::string("cpu"), std::string("cpu 1 2 3 4"), std::string("cpu 1 -2 3 4\n"),
        std::string("cpu 99999999999999999999 0 0 0\n"), std::string("MemTotal: 5 kB\nMemAvail"),
        std::string("MemTotal: 0 kB\nMemAvailable: 0 kB\n"), std::string("a|b\nc|d\n eth0 5\n"), huge}) {
    for (const char* path : {"proc/stat", "proc/meminfo", "proc/net/dev"}) empty.set(path, nonsense);
    EXPECT_FALSE(counters.processorTicks()) << nonsense.substr(0, 40);
    EXPECT_FALSE(counters.memory()) << nonsense.substr(0, 40);
    EXPECT_FALSE(counters.network()) << nonsense.substr(0, 40);
  }
}

TEST(SystemCountersTests, readOldKernels) {
  EXPECT_EQ(ticksFromStat("cpu 1 2 3 4\n").value(), (CPUTicks{.user = 1, .system = 3, .idle = 4, .nice = 2}));
  EXPECT_EQ(memoryFromMeminfo("MemTotal: 100 kB\nMemFree: 10 kB\nBuffers: 5 kB\nCached: 20 kB\n").value(),
            (MemoryUse{.used = 65 * kib, .total = 100 * kib}));
  EXPECT_EQ(memoryFromMeminfo("MemTotal: 100 kB\nMemAvailable: 200 kB\n")->used, 0);
}

TEST(SystemCountersTests, readNamesOfSystems) {
  const struct {
    const char* text;
    std::optional<std::string> name;
  } cases[] = {{"PRETTY_NAME=Arch\n", "Arch"},
               {"A=1\nPRETTY_NAME='it \\ is'\n", "it \\ is"},
               {"PRETTY_NAME=\"a \\\"b\\\"\" # c\n", "a \"b\""},
               {"PRETTY_NAME=\"\"\n", std::nullopt},
               {"PRETTY_NAME=\"\xff\"\n", std::nullopt},
               {"NAME=x\n", std::nullopt}};
  for (const auto& [text, name] : cases) EXPECT_EQ(systemNameFromRelease(text), name) << text;
}

/// A group of version two below the desktop, two levels deep.
SystemTree::Files groupFiles() {
  return {{"proc/self/cgroup", "0::/user.slice/app.scope\n"},
          {"proc/self/mountinfo",
           "1 0 0:1 / / rw - ext4 /dev/sda rw\n2 1 0:2 / /sys/fs/cgroup rw shared:4 - cgroup2 cgroup rw\n"},
          {"sys/fs/cgroup/user.slice/memory.max", "2147483648\n"},
          {"sys/fs/cgroup/user.slice/memory.current", "1610612736\n"},
          {"sys/fs/cgroup/user.slice/memory.stat", "anon 5\ninactive_file 536870912\nactive_file 1\n"},
          {"sys/fs/cgroup/user.slice/cpu.max", "350000 100000\n"},
          {"sys/fs/cgroup/user.slice/app.scope/memory.max", "max\n"},
          {"sys/fs/cgroup/user.slice/app.scope/memory.current", "9999\n"},
          {"sys/fs/cgroup/user.slice/app.scope/cpu.max", "max 100000\n"}};
}

TEST(ControlGroupTests, theLowestLimitOfAnyLevelHolds) {
  const SystemTree tree(desktopFiles());
  tree.add(groupFiles());
  auto counters = countersOf(tree);
  EXPECT_EQ(counters.memory().value(), (MemoryUse{.used = gib, .total = 2 * gib}));
  EXPECT_EQ(counters.processorCount(), 4) << "three and a half";
  EXPECT_EQ(countersOf(tree, 2).processorCount(), 2);

  std::string mounts;
  while (mounts.size() < 3 << 20) mounts += "9 1 0:9 / /var/lib/containers/of/a/large/machine rw - overlay none rw\n";
  tree.set("proc/self/mountinfo", mounts + groupFiles()[1].second);
  EXPECT_EQ(countersOf(tree).memory().value().total, 2 * gib) << "however many mounts there are";

  const std::string own = "sys/fs/cgroup/user.slice/app.scope/";
  tree.set(own + "memory.max", "1073741824\n");
  tree.set(own + "cpu.max", "1000 100000\n");
  EXPECT_EQ(counters.memory()->total, 2 * gib) << "kept";
  EXPECT_EQ(counters.processorCount(), 4);
  counters.forgetKept();
  EXPECT_EQ(counters.memory().value(), (MemoryUse{.used = 9999, .total = gib})) << "no statistics there";
  EXPECT_EQ(counters.processorCount(), 1);

  for (const char* none : {"max\n", "", "-1\n", "0\n", "nonsense\n", "99999999999999999999\n", "1073741824"}) {
    tree.set(own + "memory.max", none);
    tree.set(own + "cpu.max", none);
    counters.forgetKept();
    EXPECT_EQ(counters.memory()->total, 2 * gib) << none;
    EXPECT_EQ(counters.processorCount(), 4) << none;
  }
}

TEST(ControlGroupTests, areReadInVersionOneAndInContainers) {
  const SystemTree tree(desktopFiles());
  tree.add({{"proc/self/cgroup", "9:name=systemd:/\n4:memory:/docker/abc\n3:cpu,cpuacct:/docker/abc\n0::/\n"},
            {"proc/self/mountinfo",
             "31 23 0:28 /docker/abc /sys/fs/cgroup/memory rw - cgroup cgroup rw,memory\n"
             "32 23 0:29 /docker/abc /sys/fs/cgroup/cpu,cpuacct rw - cgroup cgroup rw,cpu,cpuacct\n"},
            {"sys/fs/cgroup/memory/memory.limit_in_bytes", "1073741824\n"},
            {"sys/fs/cgroup/memory/memory.usage_in_bytes", "5000\n"},
            {"sys/fs/cgroup/memory/memory.stat", "total_inactive_file 1000\n"},
            {"sys/fs/cgroup/cpu,cpuacct/cpu.cfs_quota_us", "50000\n"},
            {"sys/fs/cgroup/cpu,cpuacct/cpu.cfs_period_us", "20000\n"}});
  auto counters = countersOf(tree);
  EXPECT_EQ(counters.memory().value(), (MemoryUse{.used = 4000, .total = gib}));
  EXPECT_EQ(counters.processorCount(), 3);
  tree.set("sys/fs/cgroup/memory/memory.limit_in_bytes", "9223372036854771712\n");
  tree.set("sys/fs/cgroup/cpu,cpuacct/cpu.cfs_quota_us", "-1\n");
  counters.forgetKept();
  EXPECT_EQ(counters.memory()->total, 16'000'000 * kib);
  EXPECT_EQ(counters.processorCount(), 64);
}

TEST(ControlGroupTests, areFoundWhereTheyAreMounted) {
  const std::string mount = "2 1 0:2 / /cg rw - cgroup2 c rw\n";
  const auto found = [](std::string_view groups, std::string_view mounts) {
    std::vector<std::string> paths;
    for (const ControlGroupFolder& folder : controlGroupFolders("memory", groups, mounts))
      paths.push_back(folder.path.bytes);
    return paths;
  };
  EXPECT_THAT(found("0::/a/b\n", mount), ElementsAre("/cg/a/b", "/cg/a", "/cg"));
  EXPECT_THAT(found("0::/../x\n", "2 1 0:2 /own /cg rw - cgroup2 c rw\n"), ElementsAre("/cg")) << "seen from outside";
  EXPECT_THAT(found("0::/\n", "nonsense\n" + mount), ElementsAre("/cg"));
  for (const char* none : {"", "0:\n", "0::relative\n", "7:cpu:/a\n"})
    EXPECT_THAT(found(none, mount), ElementsAre()) << none;
  EXPECT_THAT(found("0::/a\n", "2 1 0:2 / relative rw - cgroup2 c rw\n"), ElementsAre());
  std::string deep = "0::";
  for (int i = 0; i < 1000; ++i) deep += "/d";
  EXPECT_EQ(found(deep + "\n", mount).size(), 32U);
}

TEST(SystemCountersTests, readThisMachine) {
  const auto counters = makeSystemCounters();
  EXPECT_GT(counters->processorTicks().value().idle, 0U);
  const MemoryUse memory = counters->memory().value();
  EXPECT_GT(memory.used, 0);
  EXPECT_GT(memory.total, memory.used);
  EXPECT_TRUE(counters->network().has_value());
  std::ifstream uptime("/proc/uptime");
  double seconds = 0;
  ASSERT_TRUE(uptime >> seconds);
  EXPECT_NEAR(counters->uptimeSeconds().value(), seconds, 60) << "neither the date nor the time without sleep";
  EXPECT_GE(counters->processorCount(), 1);
}

}  // namespace
}  // namespace quorvane
