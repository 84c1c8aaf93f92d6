#include "quorvane/platform/linux/KernelFile.h"

#include "quorvane/platform/posix/Retry.h"

#include <algorithm>
#include <cerrno>

#include <fcntl.h>
#include <unistd.h>

namespace quorvane {

Outcome<void, PosixError> KernelFile::open() {
  // Without waiting: what stands there may be anything where somebody else has made the tree.
  file_ = FileDescriptor(::open(path_.bytes.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
  if (!file_.isOpen()) return failure(lastPosixError());
  return {};
}

Outcome<std::string_view, PosixError> KernelFile::beginning(std::span<char> buffer) {
  const auto read = [&] { return ::pread(file_.number(), buffer.data(), buffer.size(), 0); };
  ssize_t size = file_.isOpen() ? retried(read) : -1;
  if (size < 0) {
    if (const auto opened = open(); !opened) return failure(opened.error());
    size = retried(read);
  }
  if (size < 0) return failure(lastPosixError());
  return std::string_view(buffer.data(), static_cast<std::size_t>(size));
}

Outcome<std::string_view, PosixError> KernelFile::whole(std::span<char> buffer) {
  const auto first = beginning(buffer);
  if (!first) return first;
  std::size_t size = first->size();
  for (ssize_t more = 1; more > 0 && size > 0 && size < buffer.size(); size += static_cast<std::size_t>(more)) {
    const auto read = [&] {
      return ::pread(file_.number(), buffer.data() + size, buffer.size() - size, static_cast<off_t>(size));
    };
    more = retried(read);
    if (more < 0) return failure(lastPosixError());
  }
  if (size == buffer.size()) return failure(PosixError{EFBIG});
  return std::string_view(buffer.data(), size);
}

Outcome<std::string_view, PosixError> KernelFile::whole(std::string& buffer, std::size_t longest) {
  constexpr std::size_t usual = 4096;
  if (buffer.empty()) buffer.resize(usual);
  while (true) {
    auto text = whole(std::span(buffer));
    const bool isTooShort = !text && text.error().code == EFBIG;
    if (!isTooShort || buffer.size() >= longest) return text;
    buffer.resize(std::min(longest, buffer.size() * 2));
  }
}

}  // namespace quorvane
