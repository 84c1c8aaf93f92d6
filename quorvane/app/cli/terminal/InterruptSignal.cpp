#include "quorvane/app/cli/terminal/InterruptSignal.h"

#include "quorvane/base/Assert.h"

#include <atomic>
#include <utility>

#include <poll.h>
#include <signal.h>
#include <unistd.h>

namespace quorvane {

namespace {

static_assert(std::atomic<int>::is_always_lock_free && std::atomic<LastAct>::is_always_lock_free,
              "a signal handler may touch only what takes no lock");

// A signal handler is given nothing but its number, so these are what has to lie where all can reach it.
std::atomic<MainLoop*> interrupted{nullptr};
std::atomic<const WakePipe*> interruptedWriting{nullptr};
std::atomic<int> firstNumber{0};
std::atomic<LastAct> lastAct{nullptr};

std::atomic<const WakePipe*> interruptedQuestion{nullptr};
std::atomic<const std::string*> notice{nullptr};

void endWithNotice(int number) {
  if (const std::string* line = notice.load()) {
    [[maybe_unused]] const auto written = ::write(STDERR_FILENO, line->data(), line->size());
  }
  ::signal(number, SIG_DFL);
  ::raise(number);
}

void interruptQuestion(int) {
  if (const WakePipe* pipe = interruptedQuestion.load()) pipe->wake();
}

void endAtOnce(int number) {
  if (const LastAct act = lastAct.load()) act(number);
  ::signal(number, SIG_DFL);
  ::raise(number);
}

void interruptLoop(int number) {
  ::signal(number, endAtOnce);
  int none = 0;
  firstNumber.compare_exchange_strong(none, number);
  if (MainLoop* loop = interrupted.load()) loop->interrupt();
  if (const WakePipe* pipe = interruptedWriting.load()) pipe->wake();
}

}  // namespace

void setLastAct(LastAct act) { lastAct = act; }

InterruptNotice::InterruptNotice(std::string line) : line_(std::move(line)) {
  require(notice.exchange(&line_) == nullptr, "one run at a time has a last word");
  struct sigaction action {};
  action.sa_handler = endWithNotice;
  ::sigaction(SIGINT, nullptr, &before_);
  if (before_.sa_handler != SIG_IGN) ::sigaction(SIGINT, &action, nullptr);
}

InterruptNotice::~InterruptNotice() {
  ::sigaction(SIGINT, &before_, nullptr);
  notice = nullptr;
}

QuestionInterrupt::QuestionInterrupt() {
  require(interruptedQuestion.exchange(&pipe_) == nullptr, "one question at a time is asked");
  struct sigaction action {};
  action.sa_handler = interruptQuestion;
  action.sa_flags = static_cast<int>(SA_RESETHAND | SA_RESTART);
  ::sigaction(SIGINT, nullptr, &before_);
  if (before_.sa_handler != SIG_IGN) ::sigaction(SIGINT, &action, nullptr);
}

QuestionInterrupt::~QuestionInterrupt() {
  ::sigaction(SIGINT, &before_, nullptr);
  interruptedQuestion = nullptr;
}

bool QuestionInterrupt::hasCome() const {
  pollfd waiting{pipe_.descriptor(), POLLIN, 0};
  return ::poll(&waiting, 1, 0) > 0;
}

InterruptSignal::InterruptSignal(MainLoop& loop, OutputChannel& drawn) : drawn_(drawn) {
  require(interrupted.exchange(&loop) == nullptr, "one loop at a time listens to signals");
  interruptedWriting = &pipe_;
  drawn_.giveUpAfter(pipe_.descriptor());
  if (!loop.isInterrupted()) firstNumber = 0;  // or else it came too late for the operation before, and ends this one
  signals_.handle(numbers_, interruptLoop);
}

InterruptSignal::~InterruptSignal() {
  signals_.putBack();
  drawn_.giveUpAfter(OutputChannel::nothing);
  interruptedWriting = nullptr;
  interrupted = nullptr;
}

ExitCode InterruptSignal::exitCode() const {
  switch (firstNumber) {
    case SIGHUP: return ExitCode::hungUp;
    case SIGTERM: return ExitCode::terminated;
    default: return ExitCode::cancelled;
  }
}

}  // namespace quorvane
