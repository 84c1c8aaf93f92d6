#pragma once

#include "quorvane/base/CaseNames.h"
#include "quorvane/base/ThreadAnnotations.h"
#include "quorvane/platform/FileSystem.h"

#include <cerrno>
#include <cstddef>
#include <functional>
#include <map>
#include <optional>
#include <vector>

namespace quorvane {

enum class FileCall {
  openStartingFolder,
  resolved,
  openRealFolder,
  openFolder,
  openFile,
  statusOfName,
  statusOfDescriptor,
  linkTarget,
  list,
  read,
  makeFolder,
  createFile,
  write,
  synchronise,
  renameReplacing,
  renameExclusive,
  removeFile,
  lockFile,
};
QV_CASE_NAMES(FileCall, openStartingFolder, resolved, openRealFolder, openFolder, openFile, statusOfName,
              statusOfDescriptor, linkTarget, list, read, makeFolder, createFile, write, synchronise, renameReplacing,
              renameExclusive, removeFile, lockFile)

/// How long a fault lasts.
enum class FaultSpan {
  once,         ///< only the chosen call fails: a hiccup
  fromThereOn,  ///< it and all that follow: the disk is gone, or the process died there
};

/// Passes every call on to another file system, and lets a test make the n-th one fail or do something just before it.
/// Calls count from 1. A call that fails is not passed on: it leaves no trace.
///
/// The usual loop: run the work once and ask `calls()`; then run it anew for every n up to that number with `failAt(n)`
/// and check what is left. Callable from any thread; the order of the count is then the order of arrival.
class FailingFileSystem final : public FileSystem {
 public:
  explicit FailingFileSystem(FileSystem& real) : real_(real) {}

  void failAt(std::size_t call, FaultSpan span = FaultSpan::once, int code = EIO);

  /// Runs `action` before the given call is made, while no lock is held: to put another object in a path's place.
  void beforeCall(std::size_t call, std::function<void()> action);

  /// From now on only these calls count, and only these fail.
  void countOnly(std::vector<FileCall> calls);

  /// Each write passes on at most this many bytes, as a full or slow disk does.
  void limitWritesTo(std::size_t bytes);

  std::size_t calls() const;
  /// The counted calls in the order of their arrival.
  std::vector<FileCall> record() const;

  Outcome<FileDescriptor, PosixError> openStartingFolder(const FilePath& path) override;
  Outcome<FilePath, PosixError> resolved(const FilePath& path) override;
  Outcome<FileDescriptor, PosixError> openRealFolder(const FilePath& path) override;
  Outcome<FileDescriptor, PosixError> openFolder(int folder, const char* name) override;
  Outcome<FileDescriptor, PosixError> openFile(int folder, const char* name) override;
  Outcome<FileStatus, PosixError> status(int folder, const char* name) override;
  Outcome<FileStatus, PosixError> status(int descriptor) override;
  Outcome<std::string, PosixError> linkTarget(int folder, const char* name) override;
  Outcome<void, PosixError> list(int folder, FolderListing& listing) override;
  Outcome<std::vector<std::string>, PosixError> names(int folder, std::size_t most) override;
  Outcome<std::size_t, PosixError> read(int file, std::span<std::byte> buffer) override;
  Outcome<void, PosixError> makeFolder(int folder, const char* name, std::uint16_t permissions) override;
  Outcome<FileDescriptor, PosixError> createFile(int folder, const char* name) override;
  Outcome<std::size_t, PosixError> write(int file, std::span<const std::string_view> pieces) override;
  Outcome<void, PosixError> synchronise(int descriptor) override;
  Outcome<void, PosixError> renameReplacing(int fromFolder, const char* from, int toFolder, const char* to) override;
  Outcome<void, PosixError> renameExclusive(int fromFolder, const char* from, int toFolder, const char* to) override;
  Outcome<void, PosixError> removeFile(int folder, const char* name) override;
  Outcome<FileDescriptor, PosixError> lockFile(int folder, const char* name) override;

 private:
  struct Fault {
    std::size_t call;
    FaultSpan span;
    int code;
  };

  /// Counts a call and runs what was to be run before it; the code to fail with, if it is to fail.
  std::optional<PosixError> arrival(FileCall call);
  std::optional<PosixError> faultAt(std::size_t number) const QV_REQUIRES(mutex_);
  bool isCounted(FileCall call) const QV_REQUIRES(mutex_);

  template <class Pass>
  auto passed(FileCall call, Pass pass) -> decltype(pass()) {
    if (const auto fault = arrival(call)) return failure(*fault);
    return pass();
  }

  static constexpr std::size_t unlimited = static_cast<std::size_t>(-1);

  FileSystem& real_;
  mutable Mutex mutex_;
  std::optional<Fault> fault_ QV_GUARDED_BY(mutex_);
  std::map<std::size_t, std::function<void()>> actions_ QV_GUARDED_BY(mutex_);
  std::optional<std::vector<FileCall>> counted_ QV_GUARDED_BY(mutex_);
  std::vector<FileCall> record_ QV_GUARDED_BY(mutex_);
  std::size_t writeLimit_ QV_GUARDED_BY(mutex_) = unlimited;
};

}  // namespace quorvane
