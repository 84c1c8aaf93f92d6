#include "quorvane/platform/WakePipe.h"

#include "quorvane/base/Assert.h"

#include <array>
#include <cerrno>

#include <fcntl.h>
#include <unistd.h>

namespace quorvane {

WakePipe::WakePipe() {
  std::array<int, 2> ends{};
  require(::pipe(ends.data()) == 0, "there is no descriptor left for a pipe");
  reader_ = FileDescriptor(ends[0]);
  writer_ = FileDescriptor(ends[1]);
  for (const int end : ends)
    require(::fcntl(end, F_SETFD, FD_CLOEXEC) == 0 && ::fcntl(end, F_SETFL, O_NONBLOCK) == 0,
            "a pipe cannot be prepared");
}

void WakePipe::wake(char byte) const noexcept {
  const int before = errno;  // a signal handler leaves it as it was
  [[maybe_unused]] const auto written = ::write(writer_.number(), &byte, 1);
  errno = before;
}

std::string WakePipe::take() const {
  std::string taken;
  std::array<char, 64> bytes{};
  for (ssize_t count = 0; (count = ::read(reader_.number(), bytes.data(), bytes.size())) > 0;)
    taken.append(bytes.data(), static_cast<std::size_t>(count));
  return taken;
}

}  // namespace quorvane
