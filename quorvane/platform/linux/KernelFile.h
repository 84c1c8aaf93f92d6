#pragma once

#include "quorvane/base/FilePath.h"
#include "quorvane/platform/FileDescriptor.h"
#include "quorvane/platform/PosixError.h"

#include <cstddef>
#include <span>
#include <string>
#include <string_view>

namespace quorvane {

/// A file that the kernel writes anew for each reading. It stays open in between, which saves most of what a reading
/// costs; when that no longer works (the device went and came back) it is opened again.
class KernelFile {
 public:
  explicit KernelFile(FilePath path) : path_(std::move(path)) {}

  /// As much as one call of the system gives, `buffer.size()` bytes at most: enough for what stands in the first lines,
  /// and for a file of one line. The text lives in the buffer.
  Outcome<std::string_view, PosixError> beginning(std::span<char> buffer);

  /// All of it; EFBIG when it fills the buffer.
  Outcome<std::string_view, PosixError> whole(std::span<char> buffer);
  /// The same with a buffer that is made as long as it must be; EFBIG from `longest` bytes on.
  Outcome<std::string_view, PosixError> whole(std::string& buffer, std::size_t longest);

  /// Gives its descriptor back until the next reading.
  void close() { file_.close(); }

 private:
  Outcome<void, PosixError> open();

  FilePath path_;
  FileDescriptor file_;
};

}  // namespace quorvane
