#pragma once

#include "quorvane/app/cli/terminal/InputChannel.h"
#include "quorvane/app/cli/terminal/OutputChannel.h"
#include "quorvane/app/cli/terminal/SignalHandlers.h"
#include "quorvane/platform/WakePipe.h"

#include <functional>
#include <memory>
#include <string_view>
#include <vector>

namespace quorvane {

class MainLoop;

/// As long as it lives, the whole terminal is drawn on: its second screen is shown, without a cursor, and what is typed
/// comes at once and unseen. At the end, and when a signal ends the process, all is as it was before; the first
/// Ctrl-C and its kind are left to whoever listens to them.
///
/// The program can be stopped (Ctrl-Z) and continued; the terminal is given back in between. In the background it
/// leaves the terminal alone, and has all drawn anew once it is in front. Ctrl-S holds nothing back. One at a time,
/// on the thread of the loop.
class TerminalScreen {
 public:
  struct Handlers {
    std::function<void()> changed;  ///< all is to be drawn anew: another size, or the program is in front again
    std::function<void(std::string_view keys)> typed;  ///< empty when nothing more will be typed
  };

  /// Without a terminal to type on nothing is listened to.
  TerminalScreen(InputChannel& input, OutputChannel& output, MainLoop& loop, Handlers handlers);
  ~TerminalScreen();
  TerminalScreen(const TerminalScreen&) = delete;
  TerminalScreen& operator=(const TerminalScreen&) = delete;

  /// Draws the lines over what was drawn before, in one write that a terminal shows at once. Each fits its width.
  /// Nothing in the background.
  void draw(const std::vector<std::string_view>& lines);

 private:
  void enter();
  void leave();
  void rest();
  void lookLater();
  void look();
  void stopUntilContinued();
  void noteContinued();
  void takeSignals();
  void takeKeys();

  InputChannel& input_;
  OutputChannel& output_;
  MainLoop& loop_;
  const Handlers handlers_;
  const WakePipe pipe_;  ///< the numbers of signals
  SignalHandlers signals_;
  bool isActive_ = false;          ///< the terminal is as it was made for drawing
  bool isLooking_ = false;         ///< now and then, whether it is in front
  bool isContinueDue_ = false;     ///< the SIGCONT that ended a stop of its own is still to come
  bool isScreenDoubtful_ = false;  ///< somebody may have left the second screen
  /// What was posted holds a weak reference.
  const std::shared_ptr<const bool> life_ = std::make_shared<const bool>(true);
};

}  // namespace quorvane
