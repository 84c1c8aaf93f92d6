#include "quorvane/app/cli/terminal/TerminalScreen.h"

#include "quorvane/app/cli/terminal/InterruptSignal.h"
#include "quorvane/app/model/MainLoop.h"
#include "quorvane/base/Assert.h"

#include <algorithm>
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
// These end no program by themselves, or are left to who listens to them.
constexpr std::array otherSignals{SIGCHLD, SIGCONT, SIGSTOP, SIGTSTP, SIGTTIN, SIGTTOU,
                                  SIGURG,  SIGKILL, SIGINT,  SIGHUP,  SIGTERM, SIGWINCH};

/// All others, the real-time ones included.
std::vector<int> deadlySignals() {
  std::vector<int> numbers;
  for (int number = 1; number < NSIG; ++number)
    if (std::ranges::find(otherSignals, number) == otherSignals.end()) numbers.push_back(number);
  return numbers;
}

// A signal handler is given nothing but its number, so these are what has to lie where all can reach it.
std::atomic<const WakePipe*> signalPipe{nullptr};
std::atomic<bool> isEntered{false};
std::atomic<bool> hasModes{false};
termios modesBefore{};  // written before `hasModes` is set

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
  if (!hasModes) return;
  if (isInFront()) ::tcsetattr(STDIN_FILENO, TCSANOW, &modesBefore);
  hasModes = false;  // not before: a signal that ends the program meanwhile restores them as well
}

void giveBack() {
  restoreModes();  // first, since they need no room in the terminal
  if (!isEntered.exchange(false)) return;
  constexpr int moment = 250;  // milliseconds for a terminal that is not read from
  pollfd output{STDOUT_FILENO, POLLOUT, 0};
  if (::poll(&output, 1, moment) <= 0) return;
  [[maybe_unused]] const auto written = ::write(STDOUT_FILENO, leaveSequence.data(), leaveSequence.size());
}

void giveBackAndDie(int number) {
  giveBack();
  ::signal(number, SIG_DFL);
  ::raise(number);
}

}  // namespace

TerminalScreen::TerminalScreen(InputChannel& input, OutputChannel& output, MainLoop& loop, Handlers handlers)
    : input_(input), output_(output), loop_(loop), handlers_(std::move(handlers)) {
  require(signalPipe.exchange(&pipe_) == nullptr, "one screen at a time is drawn on");
  loop_.watch(pipe_.descriptor(), [this] { takeSignals(); });
  signals_.handle(toldSignals, tellSignal);
  signals_.handle(overlookedSignals, SIG_IGN);
  signals_.handle(deadlySignals(), giveBackAndDie);
  setLastAct([](int) { giveBack(); });
  isInFront() ? enter() : rest();
}

TerminalScreen::~TerminalScreen() {
  leave();
  setLastAct(nullptr);
  signals_.putBack();
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
  if (std::exchange(isScreenDoubtful_, false)) isEntered = false;
  if (!isEntered.exchange(true)) output_.write(secondScreen);
  output_.write(drawingModes);
  if (input_.isTerminal()) loop_.watch(input_.descriptor(), [this] { takeKeys(); });
  isActive_ = true;
}

void TerminalScreen::leave() {
  rest();
  restoreModes();
  if (!isEntered) return;
  output_.write(leaveSequence);
  isEntered = false;  // not before: a signal that ends the program meanwhile writes it as well
}

/// Leaves the terminal alone until the program is in front.
void TerminalScreen::rest() {
  loop_.unwatch(input_.descriptor());
  isActive_ = false;
  if (!std::exchange(isLooking_, true)) lookLater();
}

// No signal tells a program that ran in the background that it is in front now.
void TerminalScreen::lookLater() {
  constexpr std::chrono::milliseconds pace(250);
  loop_.postAfter(pace, [this, life = std::weak_ptr(life_)] {
    if (!life.expired()) look();
  });
}

void TerminalScreen::look() {
  if (!isActive_ && isInFront()) handlers_.changed();
  isLooking_ = !isActive_;
  if (isLooking_) lookLater();
}

void TerminalScreen::stopUntilContinued() {
  leave();
  struct sigaction handled {};
  ::sigaction(SIGTSTP, nullptr, &handled);
  ::signal(SIGTSTP, SIG_DFL);
  ::raise(SIGTSTP);  // returns once the program is continued
  ::sigaction(SIGTSTP, &handled, nullptr);
  isContinueDue_ = true;
}

/// What stopped it may have left other modes, and unless it left the screen itself, another screen.
void TerminalScreen::noteContinued() {
  if (!std::exchange(isContinueDue_, false)) isScreenDoubtful_ = true;
  rest();
}

void TerminalScreen::takeSignals() {
  for (const char number : pipe_.take()) {
    if (number == SIGTSTP) stopUntilContinued();
    if (number == SIGCONT) noteContinued();
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
