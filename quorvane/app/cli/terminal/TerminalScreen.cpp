#include "quorvane/app/cli/terminal/TerminalScreen.h"

#include "quorvane/app/model/MainLoop.h"
#include "quorvane/base/Assert.h"

#include <array>
#include <atomic>
#include <cerrno>
#include <utility>

#include <fcntl.h>
#include <signal.h>
#include <termios.h>
#include <unistd.h>

namespace quorvane {

namespace {

// Second screen, no cursor, no new line behind the last column; and back.
constexpr std::string_view enterSequence = "\x1b[?1049h\x1b[?25l\x1b[?7l\x1b[2J";
constexpr std::string_view leaveSequence = "\x1b[?7h\x1b[?25h\x1b[?1049l";
// What stands between these two is shown at once by terminals that know them; others overlook them.
constexpr std::string_view beginFrame = "\x1b[?2026h\x1b[H", endFrame = "\x1b[K\x1b[J\x1b[?2026l";
constexpr std::string_view endLine = "\x1b[K\r\n";

constexpr std::array toldSignals{SIGWINCH, SIGTSTP, SIGCONT};
constexpr std::array deadlySignals{SIGQUIT, SIGABRT, SIGSEGV, SIGBUS,    SIGFPE,  SIGILL,  SIGTRAP,
                                   SIGSYS,  SIGXCPU, SIGALRM, SIGVTALRM, SIGPROF, SIGUSR1, SIGUSR2};

// A signal handler is given nothing but its number, so these are what has to lie where all can reach it.
std::atomic<int> signalPipe{-1};
std::atomic<bool> isEntered{false};
std::atomic<bool> hasModes{false};
termios modesBefore{};  // written before `hasModes` is set
std::array<struct sigaction, toldSignals.size()> toldBefore{};
std::array<struct sigaction, deadlySignals.size()> deadlyBefore{};

void tellSignal(int number) {
  const int before = errno;  // a signal handler leaves it as it was
  const char byte = static_cast<char>(number);
  [[maybe_unused]] const auto written = ::write(signalPipe.load(), &byte, 1);
  errno = before;
}

void restoreModes() {
  if (hasModes) ::tcsetattr(STDIN_FILENO, TCSANOW, &modesBefore);
}

void giveBackAndDie(int number) {
  if (isEntered.exchange(false)) {
    [[maybe_unused]] const auto written = ::write(STDOUT_FILENO, leaveSequence.data(), leaveSequence.size());
    restoreModes();
  }
  ::signal(number, SIG_DFL);
  ::raise(number);
}

template <std::size_t count>
void handle(const std::array<int, count>& numbers, void (*handler)(int), std::array<struct sigaction, count>& before) {
  struct sigaction action {};
  action.sa_handler = handler;
  action.sa_flags = SA_RESTART;
  for (std::size_t i = 0; i < count; ++i) {
    ::sigaction(numbers[i], nullptr, &before[i]);
    if (before[i].sa_handler != SIG_IGN) ::sigaction(numbers[i], &action, nullptr);
  }
}

template <std::size_t count>
void putBack(const std::array<int, count>& numbers, const std::array<struct sigaction, count>& before) {
  for (std::size_t i = 0; i < count; ++i) ::sigaction(numbers[i], &before[i], nullptr);
}

}  // namespace

TerminalScreen::TerminalScreen(InputChannel& input, OutputChannel& output, MainLoop& loop, Handlers handlers)
    : input_(input), output_(output), loop_(loop), handlers_(std::move(handlers)) {
  std::array<int, 2> ends{};
  require(::pipe(ends.data()) == 0, "there is no descriptor left for a pipe");
  signalReader_ = FileDescriptor(ends[0]);
  signalWriter_ = FileDescriptor(ends[1]);
  for (const int end : ends)
    require(::fcntl(end, F_SETFD, FD_CLOEXEC) == 0 && ::fcntl(end, F_SETFL, O_NONBLOCK) == 0,
            "a pipe cannot be prepared");
  require(signalPipe.exchange(signalWriter_.number()) == -1, "one screen at a time is drawn on");

  loop_.watch(signalReader_.number(), [this] { takeSignals(); });
  if (input_.isTerminal()) loop_.watch(input_.descriptor(), [this] { takeKeys(); });
  handle(toldSignals, tellSignal, toldBefore);
  handle(deadlySignals, giveBackAndDie, deadlyBefore);
  enter();
}

TerminalScreen::~TerminalScreen() {
  leave();
  putBack(deadlySignals, deadlyBefore);
  putBack(toldSignals, toldBefore);
  loop_.unwatch(input_.descriptor());
  loop_.unwatch(signalReader_.number());
  signalPipe = -1;
}

void TerminalScreen::enter() {
  termios modes{};
  if (input_.isTerminal() && ::tcgetattr(STDIN_FILENO, &modes) == 0) {
    if (!hasModes) modesBefore = modes;
    hasModes = true;
    modes.c_lflag &= ~static_cast<tcflag_t>(ICANON | ECHO);  // keys that send signals still do
    modes.c_cc[VMIN] = 1;
    modes.c_cc[VTIME] = 0;
    ::tcsetattr(STDIN_FILENO, TCSANOW, &modes);
  }
  isEntered = true;
  output_.write(enterSequence);
}

void TerminalScreen::leave() {
  if (!isEntered.exchange(false)) return;
  output_.write(leaveSequence);
  restoreModes();
  hasModes = false;
}

void TerminalScreen::stopUntilContinued() {
  leave();
  struct sigaction handled {};
  ::sigaction(SIGTSTP, nullptr, &handled);
  ::signal(SIGTSTP, SIG_DFL);
  ::raise(SIGTSTP);  // returns once the program is continued
  ::sigaction(SIGTSTP, &handled, nullptr);
  enter();
}

void TerminalScreen::takeSignals() {
  std::array<unsigned char, 16> numbers{};
  for (ssize_t count = 0; (count = ::read(signalReader_.number(), numbers.data(), numbers.size())) > 0;) {
    for (ssize_t i = 0; i < count; ++i) {
      const int number = numbers[static_cast<std::size_t>(i)];
      if (number == SIGTSTP) stopUntilContinued();
      if (number == SIGCONT) enter();  // what stopped it may have left other modes
    }
  }
  handlers_.changed();
}

void TerminalScreen::takeKeys() {
  const std::string keys = input_.readKeys();
  if (keys.empty()) loop_.unwatch(input_.descriptor());
  handlers_.typed(keys);
}

void TerminalScreen::draw(const std::vector<std::string_view>& lines) {
  std::string frame(beginFrame);
  for (std::size_t i = 0; i < lines.size(); ++i) {
    if (i > 0) frame += endLine;
    frame += lines[i];
  }
  output_.write(frame += endFrame);
}

}  // namespace quorvane
