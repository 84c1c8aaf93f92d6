#include "quorvane/app/cli/terminal/InterruptSignal.h"

#include "quorvane/base/Assert.h"

#include <array>
#include <atomic>
#include <cerrno>
#include <utility>

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <unistd.h>

namespace quorvane {

namespace {

static_assert(std::atomic<int>::is_always_lock_free, "a signal handler may touch only what takes no lock");

// A signal handler is given nothing but its number, so these are what has to lie where all can reach it.
std::atomic<MainLoop*> interrupted{nullptr};
std::atomic<int> firstNumber{0};

std::atomic<int> questionWriter{-1};
std::atomic<const std::string*> notice{nullptr};

void endWithNotice(int number) {
  if (const std::string* line = notice.load()) {
    [[maybe_unused]] const auto written = ::write(STDERR_FILENO, line->data(), line->size());
  }
  ::signal(number, SIG_DFL);
  ::raise(number);
}

void interruptQuestion(int) {
  const int before = errno;  // a signal handler leaves it as it was
  const char byte = 0;
  [[maybe_unused]] const auto written = ::write(questionWriter.load(), &byte, 1);
  errno = before;
}

void interruptLoop(int number) {
  int none = 0;
  firstNumber.compare_exchange_strong(none, number);
  if (MainLoop* loop = interrupted.load()) loop->interrupt();
}

}  // namespace

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
  std::array<int, 2> ends{};
  require(::pipe(ends.data()) == 0, "there is no descriptor left for a pipe");
  reader_ = FileDescriptor(ends[0]);
  writer_ = FileDescriptor(ends[1]);
  for (const int end : ends) require(::fcntl(end, F_SETFD, FD_CLOEXEC) == 0, "a pipe cannot be prepared");
  require(questionWriter.exchange(writer_.number()) == -1, "one question at a time is asked");
  struct sigaction action {};
  action.sa_handler = interruptQuestion;
  action.sa_flags = static_cast<int>(SA_RESETHAND | SA_RESTART);
  ::sigaction(SIGINT, nullptr, &before_);
  if (before_.sa_handler != SIG_IGN) ::sigaction(SIGINT, &action, nullptr);
}

QuestionInterrupt::~QuestionInterrupt() {
  ::sigaction(SIGINT, &before_, nullptr);
  questionWriter = -1;
}

bool QuestionInterrupt::hasCome() const {
  pollfd waiting{reader_.number(), POLLIN, 0};
  return ::poll(&waiting, 1, 0) > 0;
}

InterruptSignal::InterruptSignal(MainLoop& loop) {
  require(interrupted.exchange(&loop) == nullptr, "one loop at a time listens to signals");
  if (!loop.isInterrupted()) firstNumber = 0;  // or else it came too late for the operation before, and ends this one
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
