#include "quorvane/platform/linux/RootWalk.h"

#include <cerrno>

namespace quorvane {

namespace {

/// Systems that do not tell mounts have 0 for all of them.
bool isSameMount(const FileStatus& one, const FileStatus& other) {
  return one.mount == other.mount && (one.mount != 0 || one.device == other.device);
}

class RootWalk {
 public:
  explicit RootWalk(FileSystem& fileSystem) : fileSystem_(fileSystem) {}

  Outcome<void, PosixError> start() {
    path_ = at_.top = {"/"};
    return arriveAt(fileSystem_.openStartingFolder(path_));
  }

  Outcome<void, PosixError> enter(std::string_view component, bool isLast) {
    path_ = joined(path_, component);
    auto next = isBehindUnreadable_ ? openByPath() : fileSystem_.openFolder(at_.folder.number(), leaf(component));
    if (!next && next.error().code == EACCES && !isLast) {
      isBehindUnreadable_ = true;
      return {};
    }
    return arriveAt(std::move(next));
  }

  WalkedFolder take() { return std::move(at_); }

 private:
  const char* leaf(std::string_view component) { return (leaf_ = component).c_str(); }

  Outcome<FileDescriptor, PosixError> openByPath() {
    const auto real = fileSystem_.resolved(path_);
    if (!real) return failure(real.error());
    if (*real != path_) return failure(linkError());
    return fileSystem_.openStartingFolder(path_);
  }

  Outcome<void, PosixError> arriveAt(Outcome<FileDescriptor, PosixError> opened) {
    if (!opened) return failure(opened.error());
    const auto status = fileSystem_.status(opened->number());
    if (!status) return failure(status.error());
    const bool isFirst = !at_.folder.isOpen();
    // Which of the unreadable folders the mount begins at is not known.
    if (!isFirst && !isSameMount(*status, at_.status)) at_.top = isBehindUnreadable_ ? FilePath() : path_;
    at_.folder = *std::move(opened);
    at_.status = *status;
    isBehindUnreadable_ = false;
    return {};
  }

  FileSystem& fileSystem_;
  WalkedFolder at_;
  FilePath path_;
  std::string leaf_;
  bool isBehindUnreadable_ = false;
};

}  // namespace

bool isSameVolume(const FileStatus& one, const FileStatus& other) {
  return one.mount == other.mount && one.device == other.device;
}

Outcome<WalkedFolder, PosixError> walkFromRoot(FileSystem& fileSystem, const FilePath& path) {
  if (!isAbsolute(path.bytes)) return failure(PosixError{EINVAL});
  RootWalk walk(fileSystem);
  if (const auto started = walk.start(); !started) return failure(started.error());
  const std::vector<std::string_view> components = componentsOf(path.bytes);
  for (std::size_t i = 0; i < components.size(); ++i) {
    const auto entered = walk.enter(components[i], i + 1 == components.size());
    if (!entered) return failure(entered.error());
  }
  return walk.take();
}

}  // namespace quorvane
