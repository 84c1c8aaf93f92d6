#include "quorvane/platform/FileDescriptor.h"

#include <unistd.h>

namespace quorvane {

FileDescriptor& FileDescriptor::operator=(FileDescriptor&& other) noexcept {
  if (this != &other) {
    close();
    number_ = std::exchange(other.number_, -1);
  }
  return *this;
}

void FileDescriptor::close() {
  // Not repeated after EINTR: whether the number is still ours is unknown then, and it may be another thread's by now.
  if (isOpen()) ::close(std::exchange(number_, -1));
}

}  // namespace quorvane
