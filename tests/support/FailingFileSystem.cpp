#include "tests/support/FailingFileSystem.h"

#include <algorithm>

namespace quorvane {

void FailingFileSystem::failAt(std::size_t call, FaultSpan span, int code) {
  const MutexLock lock(mutex_);
  fault_ = Fault{call, span, code};
}

void FailingFileSystem::beforeCall(std::size_t call, std::function<void()> action) {
  const MutexLock lock(mutex_);
  actions_[call] = std::move(action);
}

void FailingFileSystem::countOnly(std::vector<FileCall> calls) {
  const MutexLock lock(mutex_);
  counted_ = std::move(calls);
}

void FailingFileSystem::limitWritesTo(std::size_t bytes) {
  const MutexLock lock(mutex_);
  writeLimit_ = bytes;
}

std::size_t FailingFileSystem::calls() const {
  const MutexLock lock(mutex_);
  return record_.size();
}

std::vector<FileCall> FailingFileSystem::record() const {
  const MutexLock lock(mutex_);
  return record_;
}

bool FailingFileSystem::isCounted(FileCall call) const {
  return !counted_ || std::ranges::find(*counted_, call) != counted_->end();
}

std::optional<PosixError> FailingFileSystem::faultAt(std::size_t number) const {
  if (!fault_ || number < fault_->call) return std::nullopt;
  if (fault_->span == FaultSpan::once && number > fault_->call) return std::nullopt;
  return PosixError{fault_->code};
}

std::optional<PosixError> FailingFileSystem::arrival(FileCall call) {
  std::function<void()> action;
  std::optional<PosixError> fault;
  {
    const MutexLock lock(mutex_);
    if (!isCounted(call)) return std::nullopt;
    record_.push_back(call);
    if (const auto found = actions_.find(record_.size()); found != actions_.end()) action = found->second;
    fault = faultAt(record_.size());
  }
  if (action) action();
  return fault;
}

Outcome<FileDescriptor, PosixError> FailingFileSystem::openStartingFolder(const FilePath& path) {
  return passed(FileCall::openStartingFolder, [&] { return real_.openStartingFolder(path); });
}

Outcome<FilePath, PosixError> FailingFileSystem::resolved(const FilePath& path) {
  return passed(FileCall::resolved, [&] { return real_.resolved(path); });
}

Outcome<FileDescriptor, PosixError> FailingFileSystem::openRealFolder(const FilePath& path) {
  return passed(FileCall::openRealFolder, [&] { return real_.openRealFolder(path); });
}

Outcome<FileDescriptor, PosixError> FailingFileSystem::openFolder(int folder, const char* name) {
  return passed(FileCall::openFolder, [&] { return real_.openFolder(folder, name); });
}

Outcome<FileDescriptor, PosixError> FailingFileSystem::openFile(int folder, const char* name) {
  return passed(FileCall::openFile, [&] { return real_.openFile(folder, name); });
}

Outcome<FileStatus, PosixError> FailingFileSystem::status(int folder, const char* name) {
  return passed(FileCall::statusOfName, [&] { return real_.status(folder, name); });
}

Outcome<FileStatus, PosixError> FailingFileSystem::status(int descriptor) {
  return passed(FileCall::statusOfDescriptor, [&] { return real_.status(descriptor); });
}

Outcome<std::string, PosixError> FailingFileSystem::linkTarget(int folder, const char* name) {
  return passed(FileCall::linkTarget, [&] { return real_.linkTarget(folder, name); });
}

Outcome<void, PosixError> FailingFileSystem::list(int folder, FolderListing& listing) {
  listing.clear();  // a caller must not take the entries of the folder before for this one's
  return passed(FileCall::list, [&] { return real_.list(folder, listing); });
}

Outcome<std::vector<std::string>, PosixError> FailingFileSystem::names(int folder, std::size_t most) {
  return passed(FileCall::list, [&] { return real_.names(folder, most); });
}

Outcome<std::size_t, PosixError> FailingFileSystem::read(int file, std::span<std::byte> buffer) {
  return passed(FileCall::read, [&] { return real_.read(file, buffer); });
}

Outcome<void, PosixError> FailingFileSystem::makeFolder(int folder, const char* name, std::uint16_t permissions) {
  return passed(FileCall::makeFolder, [&] { return real_.makeFolder(folder, name, permissions); });
}

Outcome<FileDescriptor, PosixError> FailingFileSystem::createFile(int folder, const char* name) {
  return passed(FileCall::createFile, [&] { return real_.createFile(folder, name); });
}

Outcome<std::size_t, PosixError> FailingFileSystem::write(int file, std::span<const std::string_view> pieces) {
  std::size_t limit = 0;
  {
    const MutexLock lock(mutex_);
    limit = writeLimit_;
  }
  return passed(FileCall::write, [&] {
    if (limit == unlimited) return real_.write(file, pieces);
    const auto first = std::ranges::find_if_not(pieces, &std::string_view::empty);
    const std::string_view part = first == pieces.end() ? std::string_view() : first->substr(0, limit);
    return real_.write(file, std::span(&part, 1));
  });
}

Outcome<void, PosixError> FailingFileSystem::synchronise(int descriptor) {
  return passed(FileCall::synchronise, [&] { return real_.synchronise(descriptor); });
}

Outcome<void, PosixError> FailingFileSystem::renameReplacing(int fromFolder, const char* from, int toFolder,
                                                             const char* to) {
  return passed(FileCall::renameReplacing, [&] { return real_.renameReplacing(fromFolder, from, toFolder, to); });
}

Outcome<void, PosixError> FailingFileSystem::renameExclusive(int fromFolder, const char* from, int toFolder,
                                                             const char* to) {
  return passed(FileCall::renameExclusive, [&] { return real_.renameExclusive(fromFolder, from, toFolder, to); });
}

Outcome<void, PosixError> FailingFileSystem::removeFile(int folder, const char* name) {
  return passed(FileCall::removeFile, [&] { return real_.removeFile(folder, name); });
}

Outcome<FileDescriptor, PosixError> FailingFileSystem::lockFile(int folder, const char* name) {
  return passed(FileCall::lockFile, [&] { return real_.lockFile(folder, name); });
}

}  // namespace quorvane
