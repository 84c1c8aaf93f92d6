#include "quorvane/app/cli/terminal/OutputChannel.h"

#include "quorvane/base/Utf8.h"

#include <algorithm>
#include <cerrno>
#include <utility>

#include <sys/ioctl.h>
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

void DescriptorChannel::write(std::string_view bytes) {
  while (!bytes.empty() && failure_ == 0) {
    const ssize_t written = ::write(descriptor_, bytes.data(), bytes.size());
    if (written >= 0) {
      bytes.remove_prefix(static_cast<std::size_t>(written));
    } else if (errno != EINTR) {
      failure_ = errno;
    }
  }
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
