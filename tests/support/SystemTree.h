#pragma once

#include "tests/support/TempFolder.h"

#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace quorvane {

/// A tree with the files in which a machine tells of itself, for readers that are given another root.
class SystemTree {
 public:
  using Files = std::vector<std::pair<std::string, std::string>>;

  explicit SystemTree(const Files& files) { add(files); }

  void add(const Files& files) const {
    for (const auto& [path, content] : files) temp_.write(path, content);
  }
  void set(std::string_view path, std::string_view content) const { temp_.write(path, content); }

  const FilePath& root() const { return temp_.path(); }
  FilePath at(std::string_view path) const { return temp_.at(path); }

 private:
  TempFolder temp_;
};

/// A desktop: no battery, no control groups, one interface that is up.
inline SystemTree::Files desktopFiles() {
  return {
      {"proc/stat", "cpu  100 20 30 800 50 7 3 40 0 0\ncpu0 100 20 30 800 50 7 3 40 0 0\nintr 5\n"},
      {"proc/meminfo", "MemTotal:       16000000 kB\nMemFree:  1000 kB\nMemAvailable:   12000000 kB\nBuffers: 1 kB\n"},
      {"proc/net/dev",
       "Inter-|   Receive                                                |  Transmit\n"
       " face |bytes    packets errs drop fifo frame compressed multicast|bytes    packets\n"
       "    lo: 5000 1 0 0 0 0 0 0 5000 1 0 0 0 0 0 0\n"
       "  eth0: 18446744073 9 0 0 0 0 0 0 700 4 0 0 0 0 0 0\n"
       " wlan0:900 9 0 0 0 0 0 0 90 4 0 0 0 0 0 0\n"},
      {"sys/class/net/lo/flags", "0x9\n"},
      {"sys/class/net/eth0/flags", "0x1003\n"},
      {"sys/class/net/wlan0/flags", "0x1002\n"},
      {"etc/os-release", "NAME=\"Debian\"\nPRETTY_NAME=\"Debian GNU/Linux 12 (bookworm)\"\n"}};
}

}  // namespace quorvane
