#include "quorvane/app/cli/terminal/OutputChannel.h"

#include "quorvane/base/Utf8.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <climits>
#include <utility>

#include <fcntl.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace quorvane {

namespace {

constexpr std::size_t usualColumns = 80, fewestColumns = 20, usualRows = 24;

std::string_view valueOf(const EnvironmentVariables& environment, const std::string& name) {
  const auto found = environment.find(name);
  return found == environment.end() ? std::string_view() : found->second;
}

// The first of these that is set decides, as everywhere (POSIX, chapter 8.2).
bool isUtf8Locale(const EnvironmentVariables& environment) {
  for (const char* name : {"LC_ALL", "LC_CTYPE", "LANG"}) {
    const std::string_view value = valueOf(environment, name);
    if (value.empty()) continue;
    const std::string lowered = asciiLowered(value);
    return lowered.contains("utf-8") || lowered.contains("utf8");
  }
  return false;
}

std::string_view sequenceOf(Tone tone) {
  switch (tone) {
    case Tone::plain: return "";
    case Tone::strong: return "\x1b[1m";
    case Tone::faint: return "\x1b[2m";
    case Tone::good: return "\x1b[32m";
    case Tone::caution: return "\x1b[35m";  // yellow cannot be read on white
    case Tone::bad: return "\x1b[31m";
    case Tone::accent: return "\x1b[36m";
  }
  std::unreachable();
}

}  // namespace

DescriptorChannel::DescriptorChannel(int descriptor)
    : descriptor_(descriptor), isTerminal_(::isatty(descriptor) == 1) {}

// A pipe with room takes as much as PIPE_BUF at once. A terminal may take less and keep the rest waiting, unless it was
// opened so as not to wait; the descriptor that was inherited stays as it is, since others write to it as well.
void DescriptorChannel::giveUpAfter(int interrupt) {
  interrupt_ = interrupt;
  if (!isTerminal_ || unwaiting_.isOpen()) return;
  const std::string path = "/dev/fd/" + std::to_string(descriptor_);
  unwaiting_ = FileDescriptor(::open(path.c_str(), O_WRONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
}

void DescriptorChannel::write(std::string_view bytes) {
  constexpr int fullFor = 10;  // milliseconds; there may be room, but too little for the two bytes of a line break
  while (!bytes.empty() && failure_ == 0 && waitForRoom()) {
    const bool isWhole = unwaiting_.isOpen() || interrupt_ == nothing;
    const ssize_t written = ::write(unwaiting_.isOpen() ? unwaiting_.number() : descriptor_, bytes.data(),
                                    isWhole ? bytes.size() : std::min<std::size_t>(bytes.size(), PIPE_BUF));
    if (written >= 0) {
      bytes.remove_prefix(static_cast<std::size_t>(written));
    } else if (errno == EAGAIN) {
      pollfd interrupt{interrupt_, POLLIN, 0};
      if (::poll(&interrupt, 1, fullFor) > 0) return;
    } else if (errno != EINTR) {
      failure_ = errno;
    }
  }
}

/// False where there will be none before the end.
bool DescriptorChannel::waitForRoom() const {
  constexpr int moment = 250;  // milliseconds
  if (interrupt_ == nothing) return true;
  std::array<pollfd, 2> waiting{pollfd{descriptor_, POLLOUT, 0}, pollfd{interrupt_, POLLIN, 0}};
  while (::poll(waiting.data(), waiting.size(), -1) < 0)
    if (errno != EINTR) return true;
  return waiting[0].revents != 0 || ::poll(waiting.data(), 1, moment) > 0;
}

int DescriptorChannel::pipe() const {
  struct stat status {};
  const bool isPipe = ::fstat(descriptor_, &status) == 0 && S_ISFIFO(status.st_mode);
  return isPipe && (::fcntl(descriptor_, F_GETFL) & O_ACCMODE) == O_WRONLY ? descriptor_ : nothing;
}

std::size_t DescriptorChannel::columns() const {
  winsize size{};
  if (!isTerminal_ || ::ioctl(descriptor_, TIOCGWINSZ, &size) != 0 || size.ws_col == 0) return usualColumns;
  return std::max<std::size_t>(size.ws_col, fewestColumns);
}

std::size_t DescriptorChannel::rows() const {
  winsize size{};
  if (!isTerminal_ || ::ioctl(descriptor_, TIOCGWINSZ, &size) != 0 || size.ws_row == 0) return usualRows;
  return size.ws_row;
}

TextStyle textStyle(const OutputChannel& channel, const EnvironmentVariables& environment) {
  TextStyle style;
  const std::string_view terminal = valueOf(environment, "TERM");
  style.isLaidOut = channel.isTerminal() && terminal != "dumb";
  style.canRedraw = style.isLaidOut && !terminal.empty();
  style.hasColours = style.canRedraw && valueOf(environment, "NO_COLOR").empty();
  style.characters = isUtf8Locale(environment) ? CharacterSet::unicode : CharacterSet::ascii;
  style.columns = channel.columns();
  return style;
}

std::string toned(std::string_view text, Tone tone, const TextStyle& style) {
  if (!style.hasColours || tone == Tone::plain || text.empty()) return std::string(text);
  return std::string(sequenceOf(tone)) + std::string(text) + "\x1b[0m";
}

}  // namespace quorvane
