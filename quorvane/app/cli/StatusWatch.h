#pragma once

#include "quorvane/app/cli/Commands.h"
#include "quorvane/app/cli/reports/StatusBoard.h"
#include "quorvane/app/cli/terminal/PlainKeys.h"
#include "quorvane/app/cli/terminal/TerminalScreen.h"
#include "quorvane/health/SystemStatusMonitor.h"

#include <string_view>

namespace quorvane {

/// The board on a terminal: draws the status over itself and obeys the keys.
class StatusWatch {
 public:
  StatusWatch(Console& console, MainLoop& loop, SystemStatusMonitor& monitor, SystemProcessSortMode sort);

  /// Draws what the monitor has. Of its first sample, which has no rates yet, only what somebody asks for.
  void sampled();
  /// Whether the terminal went away.
  bool isLost() const { return isLost_; }

 private:
  void draw();
  void obey(std::string_view keys);
  void obeyKey(char key);

  Console& console_;
  MainLoop& loop_;
  SystemStatusMonitor& monitor_;
  SystemProcessSortMode sort_;
  PlainKeys keys_;
  bool hasSample_ = false;
  bool isLost_ = false;
  TerminalScreen screen_;
};

}  // namespace quorvane
