#pragma once

#include "quorvane/app/cli/arguments/CommandError.h"
#include "quorvane/app/cli/terminal/OutputChannel.h"
#include "quorvane/app/cli/terminal/SignalHandlers.h"
#include "quorvane/app/model/MainLoop.h"
#include "quorvane/platform/WakePipe.h"

#include <array>
#include <csignal>
#include <string>

namespace quorvane {

/// As long as it lives, Ctrl-C ends the process, as ever, with this line on standard error before: outside of the two
/// below, which take its place. It stays overlooked where the process was started to overlook it. One at a time.
class InterruptNotice {
 public:
  explicit InterruptNotice(std::string line);
  ~InterruptNotice();
  InterruptNotice(const InterruptNotice&) = delete;
  InterruptNotice& operator=(const InterruptNotice&) = delete;

 private:
  const std::string line_;
  struct sigaction before_ {};
};

/// What is done in the handler of a signal just before it ends the process; given its number.
using LastAct = void (*)(int);

/// What the second one of the signals below does from now on before it ends the process; nothing for `nullptr`.
void setLastAct(LastAct act);

/// As long as it lives, Ctrl-C (SIGINT), a lost terminal (SIGHUP) and a request to end (SIGTERM) interrupt the loop
/// instead of ending the process, the first time each; a second one of its kind ends it, after the last act that was
/// set. One that the process was started to overlook stays overlooked. One at a time.
///
/// The thread of the loop may write to `drawn` meanwhile: a reader that reads nothing does not keep it from its end.
class InterruptSignal {
 public:
  InterruptSignal(MainLoop& loop, OutputChannel& drawn);
  ~InterruptSignal();
  InterruptSignal(const InterruptSignal&) = delete;
  InterruptSignal& operator=(const InterruptSignal&) = delete;

  /// How a run ends that was cancelled: by the first signal that came, as Ctrl-C where none did.
  ExitCode exitCode() const;

 private:
  static constexpr std::array numbers_{SIGINT, SIGHUP, SIGTERM};

  OutputChannel& drawn_;
  const WakePipe pipe_;
  SignalHandlers signals_;
};

/// As long as it lives, Ctrl-C ends a wait for an answer instead of the process, the first time; a second one ends the
/// process. It stays overlooked where the process was started to overlook it. One at a time.
class QuestionInterrupt {
 public:
  QuestionInterrupt();
  ~QuestionInterrupt();
  QuestionInterrupt(const QuestionInterrupt&) = delete;
  QuestionInterrupt& operator=(const QuestionInterrupt&) = delete;

  /// Becomes readable with Ctrl-C, and stays so.
  int descriptor() const { return pipe_.descriptor(); }
  bool hasCome() const;

 private:
  const WakePipe pipe_;
  struct sigaction before_ {};
};

}  // namespace quorvane
