#include "quorvane/app/cli/terminal/TerminalScreen.h"

#include "quorvane/app/model/MainLoop.h"
#include "quorvane/base/Assert.h"

#include <array>
#include <atomic>
#include <utility>

#include <poll.h>
#include <signal.h>
#include <termios.h>
#include <unistd.h>

namespace quorvane {

namespace {

// Second screen; no cursor, no new line behind the last column; and all back, after a frame that was cut off as well.
constexpr std::string_view secondScreen = "\x1b[?1049h\x1b[2J", drawingModes = "\x1b[?25l\x1b[?7l";
constexpr std::string_view leaveSequence = "\x1b[?2026l\x1b[?7h\x1b[?25h\x1b[?1049l";
// What stands between these two is shown at once by terminals that know them; others overlook them.
constexpr std::string_view beginFrame = "\x1b[?2026h\x1b[H", endFrame = "\x1b[K\x1b[J\x1b[?2026l";
constexpr std::string_view endLine = "\x1b[K\r\n";

constexpr std::array toldSignals{SIGWINCH, SIGTSTP, SIGCONT};
constexpr std::array overlookedSignals{SIGTTOU};  // nothing that is done to the terminal stops the program
constexpr std::array deadlySignals{SIGQUIT, SIGABRT, SIGSEGV, SIGBUS,    SIGFPE,  SIGILL,  SIGTRAP,
                                   SIGSYS,  SIGXCPU, SIGALRM, SIGVTALRM, SIGPROF, SIGUSR1, SIGUSR2};

// A signal handler is given nothing but its number, so these are what has to lie where all can reach it.
std::atomic<const WakePipe*> signalPipe{nullptr};
std::atomic<bool> isEntered{false};
std::atomic<bool> hasModes{false};
termios modesBefore{};  // written before `hasModes` is set
std::array<struct sigaction, toldSignals.size()> toldBefore{};
std::array<struct sigaction, overlookedSignals.size()> overlookedBefore{};
std::array<struct sigaction, deadlySignals.size()> deadlyBefore{};

void tellSignal(int number) {
  if (const WakePipe* pipe = signalPipe.load()) pipe->wake(static_cast<char>(number));
}

/// Whether the terminal is this program's at the moment, and not the shell's or another job's.
bool isInFront() {
  for (const int each : {STDIN_FILENO, STDOUT_FILENO}) {
    const pid_t front = ::tcgetpgrp(each);  // -1: none, or one that is not handed round
    if (front != -1 && front != ::getpgrp()) return false;
  }
  return true;
}

void restoreModes() {
  if (hasModes.exchange(false) && isInFront()) ::tcsetattr(STDIN_FILENO, TCSANOW, &modesBefore);
}

void giveBackAndDie(int number) {
  if (isEntered.exchange(false)) {
    constexpr int moment = 250;  // milliseconds for a terminal that is not read from
    pollfd output{STDOUT_FILENO, POLLOUT, 0};
    if (::poll(&output, 1, moment) > 0) {
      [[maybe_unused]] const auto written = ::write(STDOUT_FILENO, leaveSequence.data(), leaveSequence.size());
    }
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
  require(signalPipe.exchange(&pipe_) == nullptr, "one screen at a time is drawn on");
  loop_.watch(pipe_.descriptor(), [this] { takeSignals(); });
  handle(toldSignals, tellSignal, toldBefore);
  handle(overlookedSignals, SIG_IGN, overlookedBefore);
  handle(deadlySignals, giveBackAndDie, deadlyBefore);
  if (isInFront()) enter();
}

TerminalScreen::~TerminalScreen() {
  leave();
  putBack(deadlySignals, deadlyBefore);
  putBack(overlookedSignals, overlookedBefore);
  putBack(toldSignals, toldBefore);
  loop_.unwatch(pipe_.descriptor());
  signalPipe = nullptr;
}

void TerminalScreen::enter() {
  termios modes{};
  if (input_.isTerminal() && ::tcgetattr(STDIN_FILENO, &modes) == 0) {
    if (!hasModes) modesBefore = modes;
    hasModes = true;
    modes.c_lflag &= ~static_cast<tcflag_t>(ICANON | ECHO);  // keys that send signals still do
    modes.c_iflag &= ~static_cast<tcflag_t>(IXON);           // a held board could neither be ended nor be given back
    modes.c_cc[VMIN] = 1;
    modes.c_cc[VTIME] = 0;
    ::tcsetattr(STDIN_FILENO, TCSANOW, &modes);
  }
  if (!isEntered.exchange(true)) output_.write(secondScreen);
  output_.write(drawingModes);
  if (input_.isTerminal()) loop_.watch(input_.descriptor(), [this] { takeKeys(); });
  isActive_ = true;
}

void TerminalScreen::leave() {
  rest();
  if (isEntered.exchange(false)) output_.write(leaveSequence);
  restoreModes();
}

/// Leaves the terminal alone until there is something to draw on it in front.
void TerminalScreen::rest() {
  loop_.unwatch(input_.descriptor());
  isActive_ = false;
}

void TerminalScreen::stopUntilContinued() {
  leave();
  struct sigaction handled {};
  ::sigaction(SIGTSTP, nullptr, &handled);
  ::signal(SIGTSTP, SIG_DFL);
  ::raise(SIGTSTP);  // returns once the program is continued
  ::sigaction(SIGTSTP, &handled, nullptr);
}

void TerminalScreen::takeSignals() {
  for (const char number : pipe_.take()) {
    if (number == SIGTSTP) stopUntilContinued();
    if (number == SIGCONT) rest();  // what stopped it may have left other modes
  }
  handlers_.changed();
}

void TerminalScreen::takeKeys() {
  if (!isInFront()) return rest();  // reading would stop the program
  const std::string keys = input_.readKeys();
  if (keys.empty()) loop_.unwatch(input_.descriptor());
  handlers_.typed(keys);
}

void TerminalScreen::draw(const std::vector<std::string_view>& lines) {
  if (!isInFront()) return rest();
  if (!isActive_) enter();
  std::string frame(beginFrame);
  for (std::size_t i = 0; i < lines.size(); ++i) {
    if (i > 0) frame += endLine;
    frame += lines[i];
  }
  output_.write(frame += endFrame);
}

}  // namespace quorvane
