#include "quorvane/app/cli/InterruptSignal.h"

#include "quorvane/base/Assert.h"

#include <atomic>

#include <signal.h>

namespace quorvane {

namespace {

static_assert(std::atomic<int>::is_always_lock_free, "a signal handler may touch only what takes no lock");

// A signal handler is given nothing but its number, so these are what has to lie where all can reach it.
std::atomic<MainLoop*> interrupted{nullptr};
std::atomic<int> firstNumber{0};

void interruptLoop(int number) {
  int none = 0;
  firstNumber.compare_exchange_strong(none, number);
  if (MainLoop* loop = interrupted.load()) loop->interrupt();
}

}  // namespace

InterruptSignal::InterruptSignal(MainLoop& loop) {
  require(interrupted.exchange(&loop) == nullptr, "one loop at a time listens to signals");
  firstNumber = 0;
  struct sigaction action {};
  action.sa_handler = interruptLoop;
  action.sa_flags = static_cast<int>(SA_RESETHAND | SA_RESTART);
  for (std::size_t i = 0; i < numbers_.size(); ++i) {
    ::sigaction(numbers_[i], nullptr, &before_[i]);
    if (before_[i].sa_handler != SIG_IGN) ::sigaction(numbers_[i], &action, nullptr);
  }
}

InterruptSignal::~InterruptSignal() {
  for (std::size_t i = 0; i < numbers_.size(); ++i) ::sigaction(numbers_[i], &before_[i], nullptr);
  interrupted.store(nullptr);
}

ExitCode InterruptSignal::exitCode() const {
  switch (firstNumber) {
    case SIGHUP: return ExitCode::hungUp;
    case SIGTERM: return ExitCode::terminated;
    default: return ExitCode::cancelled;
  }
}

}  // namespace quorvane
