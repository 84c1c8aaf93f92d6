#include "quorvane/app/cli/InterruptSignal.h"

#include "quorvane/base/Assert.h"

#include <atomic>

#include <signal.h>

namespace quorvane {

namespace {

// A signal handler is given nothing but its number, so this is the one thing that has to lie where all can reach it.
std::atomic<MainLoop*> interrupted{nullptr};

void interruptLoop(int) {
  if (MainLoop* loop = interrupted.load()) loop->interrupt();
}

}  // namespace

InterruptSignal::InterruptSignal(MainLoop& loop) {
  require(interrupted.exchange(&loop) == nullptr, "one loop at a time listens to Ctrl-C");
  ::sigaction(SIGINT, nullptr, &before_);
  if (before_.sa_handler == SIG_IGN) return;
  struct sigaction action {};
  action.sa_handler = interruptLoop;
  action.sa_flags = static_cast<int>(SA_RESETHAND | SA_RESTART);
  ::sigaction(SIGINT, &action, nullptr);
}

InterruptSignal::~InterruptSignal() {
  ::sigaction(SIGINT, &before_, nullptr);
  interrupted.store(nullptr);
}

}  // namespace quorvane
