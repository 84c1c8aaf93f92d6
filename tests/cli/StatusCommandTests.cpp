// The command as a whole, and the board on real terminals.
#include "quorvane/base/Json.h"
#include "tests/cli/CleanHome.h"
#include "tests/cli/CommandLineRun.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <pty.h>

#include <chrono>
#include <sstream>
#include <thread>

#include <fcntl.h>
#include <poll.h>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>

namespace quorvane {
namespace {

TEST(StatusCommandTests, printsOneDocument) {
  const CommandLineRun run({"status", "--json"});
  EXPECT_EQ(run.code, 0);
  const Json document = parsedJson(run.output).value();
  for (const char* member : {"sampledAt",
                             "cpuPercent",
                             "memoryUsedBytes",
                             "memoryTotalBytes",
                             "memoryPercent",
                             "diskAvailableBytes",
                             "diskTotalBytes",
                             "diskUsedPercent",
                             "networkDownloadBytesPerSecond",
                             "networkUploadBytesPerSecond",
                             "isCharging",
                             "thermalLevel",
                             "uptime",
                             "osVersion",
                             "processorCount",
                             "topProcesses",
                             "healthScore",
                             "healthLevel",
                             "deductions",
                             "notMeasured"})
    EXPECT_TRUE(document.contains(member)) << member;
  EXPECT_GT(document["memoryPercent"], 0.0);
  EXPECT_GE(document["topProcesses"].size(), 1U);
  for (const Json& input : document["notMeasured"])
    EXPECT_TRUE(input != "processor" && input != "network") << "the second sample has rates";
}

TEST(StatusCommandTests, streamsADocumentALine) {
  const CommandLineRun run({"status", "--json", "--watch", "--interval", "0.1", "--count", "3"});
  EXPECT_EQ(run.code, 0);
  std::istringstream lines(run.output);
  int count = 0;
  for (std::string line; std::getline(lines, line); ++count) EXPECT_TRUE(parsedJson(line).has_value()) << line;
  EXPECT_EQ(count, 3);
}

TEST(StatusCommandTests, endsWithItsReader) {
  EXPECT_EQ(CommandLineRun({"status", "--json", "--watch", "--interval", "0.1"}, {.output = {.failsWith = EPIPE}}).code,
            0);
}

TEST(StatusCommandTests, endsWithItsReaderThoughNothingIsToBeWritten) {
  const auto begin = std::chrono::steady_clock::now();
  FILE* reader = ::popen("exec '" QUORVANE_PROGRAM "' status --json --watch --interval 300", "r");
  ASSERT_NE(reader, nullptr);
  EXPECT_EQ(std::fgetc(reader), '{');
  EXPECT_EQ(::pclose(reader), 0);  // goes away and waits for the end
  EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(200)) << "before the next document";
}

TEST(StatusCommandTests, printsReportsWhereNothingCanBeDrawnOver) {
  const CommandLineRun plain({"status", "--count", "2", "--interval", "0.1"});
  EXPECT_TRUE(plain.output.starts_with("Health: ")) << plain.output;
  EXPECT_FALSE(plain.output.contains('\x1b'));
  const CommandLineRun dumb({"status", "--watch", "--count", "1"},
                            {.variables = {{"TERM", "dumb"}}, .output = {.isTerminal = true}});
  EXPECT_FALSE(dumb.output.contains('\x1b'));
}

TEST(StatusCommandTests, theOverviewTellsTheScore) {
  const CleanHome home;
  const Json document = home.json({});
  const int score = document["healthScore"].get<int>();
  EXPECT_TRUE(score >= 0 && score <= 100) << score;
  EXPECT_EQ(document["healthLevel"], score >= 85 ? "healthy" : score >= 65 ? "fair" : "attention") << score;
  EXPECT_THAT(home.run({}).output, testing::ContainsRegex("The machine: [0-9]+ of 100, "));
}

TEST(StatusCommandTests, refusesWhatItDoesNotKnow) {
  const CommandLineRun refused({"status", "--sort", "cpus"});
  EXPECT_EQ(refused.code, 2);
  EXPECT_TRUE(refused.errors.contains("Did you mean \"cpu\"?")) << refused.errors;
  for (const char* interval : {"0", "0.05", "-1", "nan", "inf", "86401", "2s", ""})
    EXPECT_EQ(CommandLineRun({"status", "--interval", interval}).code, 2) << interval;
  for (const char* count : {"0", "-1", "1.5", "x"})
    EXPECT_EQ(CommandLineRun({"status", "--count", count}).code, 2) << count;
}

/// A program on a terminal of its own, of 90 columns and 30 lines.
class OnTerminal {
 public:
  explicit OnTerminal(std::vector<std::string> command) {
    const winsize size{.ws_row = 30, .ws_col = 90, .ws_xpixel = 0, .ws_ypixel = 0};
    child_ = ::forkpty(&terminal_, nullptr, nullptr, &size);
    if (child_ != 0) {
      ::tcgetattr(terminal_, &before_);
      return;
    }
    for (const int signal : {SIGINT, SIGTERM, SIGHUP, SIGQUIT, SIGTSTP, SIGCONT}) ::signal(signal, SIG_DFL);
    ::setenv("TERM", "xterm-256color", 1);
    ::setenv("LC_ALL", "C.UTF-8", 1);
    std::vector<char*> words;
    for (std::string& word : command) words.push_back(word.data());
    words.push_back(nullptr);
    ::execvp(words[0], words.data());
    ::_exit(127);
  }
  ~OnTerminal() {
    hangUp();
    if (child_ <= 0) return;
    ::kill(child_, SIGKILL);
    ::waitpid(child_, nullptr, 0);
  }
  OnTerminal(const OnTerminal&) = delete;
  OnTerminal& operator=(const OnTerminal&) = delete;

  /// Whether the text is shown within some seconds, behind what was waited for before.
  bool shows(const std::string& text) {
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(20);
    while (true) {
      const std::size_t found = shown_.find(text, seen_);
      if (found != std::string::npos) {
        seen_ = found + text.size();
        return true;
      }
      if (std::chrono::steady_clock::now() > end || !readMore()) return false;
    }
  }
  void type(const std::string& keys) const {
    EXPECT_EQ(::write(terminal_, keys.data(), keys.size()), std::ssize(keys));
  }
  void send(int signal) const { ::kill(child_, signal); }
  void resize(unsigned short columns, unsigned short rows) const {
    const winsize size{.ws_row = rows, .ws_col = columns, .ws_xpixel = 0, .ws_ypixel = 0};
    ::ioctl(terminal_, TIOCSWINSZ, &size);
  }
  void hangUp() {
    if (terminal_ >= 0) ::close(std::exchange(terminal_, -1));
  }

  /// Makes it hold as much as it can.
  void fill() const {
    std::array<char, 128> name{};
    ASSERT_EQ(::ptsname_r(terminal_, name.data(), name.size()), 0);
    const FileDescriptor other(::open(name.data(), O_WRONLY | O_NONBLOCK | O_NOCTTY));
    while (::write(other.number(), "x", 1) > 0) continue;
  }

  /// Its exit status, or 1000 and the signal that ended it.
  int wait() {
    while (readMore()) continue;
    int status = 0;
    EXPECT_EQ(::waitpid(std::exchange(child_, -1), &status, 0) > 0, true);
    return codeOf(status);
  }
  /// The same; -1 after some seconds.
  int waitWithoutReading() {
    for (int tenths = 0; tenths < 50; ++tenths) {
      int status = 0;
      if (::waitpid(child_, &status, WNOHANG) > 0) {
        child_ = -1;
        return codeOf(status);
      }
      std::this_thread::sleep_for(std::chrono::milliseconds(100));
    }
    return -1;
  }

  /// Whether the terminal was given back: its first screen, its cursor and its modes.
  bool isAsBefore() const {
    return hasModesAsBefore() && shown_.rfind("\x1b[?1049l") > shown_.rfind("\x1b[?1049h") &&
           shown_.rfind("\x1b[?25h") > shown_.rfind("\x1b[?25l");
  }
  bool hasModesAsBefore() const {
    termios now{};
    return ::tcgetattr(terminal_, &now) == 0 && now.c_lflag == before_.c_lflag && now.c_iflag == before_.c_iflag;
  }
  const std::string& shown() const { return shown_; }

 private:
  static int codeOf(int status) { return WIFSIGNALED(status) ? 1000 + WTERMSIG(status) : WEXITSTATUS(status); }

  bool readMore() {
    if (terminal_ < 0) return false;
    pollfd waiting{terminal_, POLLIN, 0};
    std::array<char, 65536> bytes{};
    const ssize_t count = ::poll(&waiting, 1, 20'000) > 0 ? ::read(terminal_, bytes.data(), bytes.size()) : -1;
    if (count > 0) shown_.append(bytes.data(), static_cast<std::size_t>(count));
    return count > 0;
  }

  int terminal_ = -1;
  pid_t child_ = -1;
  termios before_{};
  std::string shown_;
  std::size_t seen_ = 0;
};

const std::vector<std::string> board{QUORVANE_PROGRAM, "status", "--watch", "--interval", "0.2"};

TEST(StatusBoardOnTerminalTests, obeysItsKeys) {
  OnTerminal terminal(board);
  ASSERT_TRUE(terminal.shows("s by memory"));
  EXPECT_THAT(terminal.shown(), testing::Not(testing::ContainsRegex("Processor +not measured")))
      << "rates are waited for";
  terminal.type("s");
  EXPECT_TRUE(terminal.shows("s by processor"));
  terminal.type("\x1b[A\x1b[1;5C\x1bOq\x1bq ");  // an arrow, one with Ctrl, a key of the pad, Alt and q, the space bar
  EXPECT_TRUE(terminal.shows("PAUSED"));
  terminal.type(" r");
  EXPECT_TRUE(terminal.shows("space pause"));
  terminal.resize(70, 8);
  EXPECT_TRUE(terminal.shows("\x1b[H"));
  terminal.type("q");
  EXPECT_EQ(terminal.wait(), 0);
  EXPECT_TRUE(terminal.isAsBefore());
  EXPECT_THAT(terminal.shown(), testing::ContainsRegex("▁|▂|▃|▄|▅|▆|▇|█")) << "histories are drawn";
}

TEST(StatusBoardOnTerminalTests, leavesItsLastFiguresBehindOnceAllWereShown) {
  OnTerminal terminal({QUORVANE_PROGRAM, "status", "--count", "1"});
  EXPECT_TRUE(terminal.shows("q quit"));
  EXPECT_TRUE(terminal.shows("\x1b[?1049l"));
  EXPECT_TRUE(terminal.shows("of 100"));
  EXPECT_EQ(terminal.wait(), 0);
  EXPECT_TRUE(terminal.isAsBefore());
}

TEST(StatusBoardOnTerminalTests, givesTheTerminalBackWhateverEndsIt) {
  const struct {
    int signal, status;
  } cases[] = {{SIGINT, 130},
               {SIGTERM, 143},
               {SIGHUP, 129},
               {SIGQUIT, 1000 + SIGQUIT},
               {SIGABRT, 1000 + SIGABRT},
               {SIGSEGV, 1000 + SIGSEGV},
               {SIGXCPU, 1000 + SIGXCPU},
               {SIGUSR1, 1000 + SIGUSR1},
               {SIGIO, 1000 + SIGIO},
               {SIGRTMIN, 1000 + SIGRTMIN},
               {SIGRTMAX, 1000 + SIGRTMAX}};
  for (const auto& [signal, status] : cases) {
    OnTerminal terminal(board);
    ASSERT_TRUE(terminal.shows("q quit")) << signal;
    terminal.send(signal);
    EXPECT_EQ(terminal.wait(), status);
    EXPECT_TRUE(terminal.isAsBefore()) << signal;
  }
  OnTerminal terminal(board);
  ASSERT_TRUE(terminal.shows("q quit"));
  terminal.type("\x13\x03");  // Ctrl-S holds nothing back
  EXPECT_EQ(terminal.wait(), 130);
  EXPECT_TRUE(terminal.isAsBefore());
}

TEST(StatusBoardOnTerminalTests, endsWhenItIsToldToThoughNobodyReadsWhatItWrites) {
  OnTerminal terminal(board);
  ASSERT_TRUE(terminal.shows("q quit"));
  terminal.fill();
  std::this_thread::sleep_for(std::chrono::milliseconds(500));  // some frames that find no room
  terminal.send(SIGTERM);
  std::this_thread::sleep_for(std::chrono::milliseconds(100));
  terminal.send(SIGTERM);  // it may have ended by now, or be waiting for room
  EXPECT_THAT(terminal.waitWithoutReading(), testing::AnyOf(143, 1000 + SIGTERM));
  EXPECT_TRUE(terminal.hasModesAsBefore());
}

/// The board as a job of a shell, which is told what to do with it.
std::vector<std::string> boardInShell(const std::string& script) {
  std::vector<std::string> command{"bash", "-mc", script, "bash"};
  command.insert(command.end(), board.begin(), board.end());
  return command;
}

TEST(StatusBoardOnTerminalTests, leavesTheTerminalAloneInTheBackground) {
  OnTerminal terminal(boardInShell(R"("$@" & sleep 1; kill %1; wait %1; echo "ENDED $?")"));
  EXPECT_TRUE(terminal.shows("ENDED 143"));
  EXPECT_EQ(terminal.wait(), 0);
  EXPECT_FALSE(terminal.shown().contains('\x1b')) << terminal.shown();

  OnTerminal later(boardInShell(R"("$@" & sleep 1; echo FRONT; fg; echo "STOPPED $?"; bg; sleep 1; echo KILLED;
                                   kill %1; wait %1; echo "ENDED $?")"));
  ASSERT_TRUE(later.shows("FRONT"));
  EXPECT_TRUE(later.shows("q quit")) << "it shows itself once it is in front";
  later.type("\x1a");
  EXPECT_TRUE(later.shows("STOPPED 148"));
  EXPECT_TRUE(later.shows("KILLED"));
  EXPECT_TRUE(later.shows("ENDED 143"));
  EXPECT_EQ(later.wait(), 0);
  EXPECT_TRUE(later.isAsBefore());
}

TEST(StatusBoardOnTerminalTests, isStoppedAndGoesOn) {
  OnTerminal terminal(boardInShell(R"("$@"; echo "STOPPED $?"; stty -a; fg; echo "ENDED $?")"));
  ASSERT_TRUE(terminal.shows("q quit"));
  terminal.type("\x1a");
  ASSERT_TRUE(terminal.shows("\x1b[?1049l"));
  ASSERT_TRUE(terminal.shows("STOPPED 148"));
  EXPECT_TRUE(terminal.shows(" icanon")) << "the modes are given back in between";
  EXPECT_TRUE(terminal.shows("\x1b[?1049h"));
  EXPECT_TRUE(terminal.shows("q quit"));
  EXPECT_TRUE(terminal.shows("q quit"));
  terminal.type("q");
  const std::string& shown = terminal.shown();
  EXPECT_EQ(shown.find("\x1b[?1049h", shown.find("STOPPED")), shown.rfind("\x1b[?1049h")) << "entered once more";
  EXPECT_TRUE(terminal.shows("ENDED 0"));
  EXPECT_EQ(terminal.wait(), 0);
  EXPECT_TRUE(terminal.isAsBefore());
}

TEST(StatusBoardOnTerminalTests, showsItselfWheneverItIsInFrontAgain) {
  OnTerminal paused(boardInShell(R"("$@"; bg; sleep 1; echo FRONT; fg; echo "ENDED $?")"));
  ASSERT_TRUE(paused.shows("q quit"));
  paused.type(" ");
  ASSERT_TRUE(paused.shows("PAUSED"));
  paused.type("\x1a");
  ASSERT_TRUE(paused.shows("FRONT"));
  EXPECT_TRUE(paused.shows("PAUSED")) << "nothing tells it but its own look";
  paused.type("q");
  EXPECT_TRUE(paused.shows("ENDED 0"));
  EXPECT_EQ(paused.wait(), 0);
  EXPECT_TRUE(paused.isAsBefore());

  OnTerminal halted(board);
  ASSERT_TRUE(halted.shows("q quit"));
  halted.send(SIGSTOP);
  halted.send(SIGCONT);
  EXPECT_TRUE(halted.shows("\x1b[?1049h")) << "others may have left the screen meanwhile";
  halted.type("q");
  EXPECT_EQ(halted.wait(), 0);
  EXPECT_TRUE(halted.isAsBefore());
}

TEST(StatusBoardOnTerminalTests, endsWithItsTerminal) {
  OnTerminal terminal(board);
  ASSERT_TRUE(terminal.shows("q quit"));
  terminal.hangUp();
  EXPECT_EQ(terminal.wait(), 129);
}

}  // namespace
}  // namespace quorvane
