#include "quorvane/app/cli/terminal/InputChannel.h"

#include <array>
#include <cerrno>
#include <utility>

#include <poll.h>
#include <unistd.h>

namespace quorvane {

namespace {

constexpr std::size_t longestLine = std::size_t{64} * 1024;

// Whether there is something to read, or an end or an error to find, and no interrupt.
bool isReadyBefore(int interrupt, int input) {
  std::array<pollfd, 2> waiting{pollfd{interrupt, POLLIN, 0}, pollfd{input, POLLIN, 0}};
  while (::poll(waiting.data(), waiting.size(), -1) < 0)
    if (errno != EINTR) return false;
  return waiting[0].revents == 0;
}

}  // namespace

DescriptorInput::DescriptorInput(int descriptor) : descriptor_(descriptor), isTerminal_(::isatty(descriptor) == 1) {}

Outcome<bool, PosixError> DescriptorInput::readMore() {
  std::array<char, 16384> bytes{};
  while (true) {
    const ssize_t count = ::read(descriptor_, bytes.data(), bytes.size());
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) return failure(lastPosixError());
    buffer_.append(bytes.data(), static_cast<std::size_t>(count));
    return count > 0;
  }
}

std::string DescriptorInput::readKeys() {
  if (buffer_.empty() && !readMore().value_or(false)) return {};
  return std::exchange(buffer_, {});
}

std::optional<std::string> DescriptorInput::readLine(int interrupt) {
  std::size_t end = 0;
  while ((end = buffer_.find('\n')) == std::string::npos) {
    if (buffer_.size() > longestLine) return std::nullopt;
    if (!isReadyBefore(interrupt, descriptor_)) return std::nullopt;
    if (!readMore().value_or(false)) return std::nullopt;  // an answer without its end was not given
  }
  std::string line = buffer_.substr(0, end);
  buffer_.erase(0, end + 1);
  return line;
}

Outcome<std::string, PosixError> DescriptorInput::readAll(std::size_t limit) {
  while (buffer_.size() <= limit) {
    const auto more = readMore();
    if (!more) return failure(more.error());
    if (!*more) return std::exchange(buffer_, {});
  }
  return failure(PosixError{EFBIG});
}

}  // namespace quorvane
