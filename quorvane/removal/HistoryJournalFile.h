#pragma once

#include "quorvane/platform/FileSystem.h"
#include "quorvane/platform/RandomSource.h"
#include "quorvane/removal/RecoveryStoreError.h"

#include <cstddef>
#include <functional>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace quorvane {

/// The file that holds the cleaning history, locked for as long as the object lives. Everything is done relative to the
/// open folder, so a folder that is swapped meanwhile is never written.
class HistoryJournalFile {
 public:
  /// As much as is read or written.
  static constexpr std::size_t largestFile = std::size_t{256} << 20;
  /// A history of this size takes no more entries. An entry at most doubles until its item was moved and put back, so
  /// all that it holds can be completed.
  static constexpr std::size_t fullFile = largestFile / 2;

  /// Makes the folder (permissions 0700) and the lock file beside the history where they are missing, and takes the
  /// lock. Never waits: `busy` when anybody else holds it, this process included. Temporaries that a killed process
  /// left are taken away.
  static Outcome<HistoryJournalFile, RecoveryStoreError> open(FileSystem& fileSystem, RandomSource& random,
                                                              const FilePath& fileURL);

  /// The whole content; nothing when the file does not exist.
  Outcome<std::optional<std::string>, RecoveryStoreError> read();

  /// Replaces the content by the pieces, one behind the other, as `replaceFile` does.
  Outcome<void, RecoveryStoreError> write(std::span<const std::string_view> pieces,
                                          const std::function<Outcome<void, PosixError>()>& beforeRename = {});

  /// What stands there now; nothing when that cannot be told, or is nothing.
  std::optional<FileStatus> status();

  const FilePath& fileURL() const { return fileURL_; }

 private:
  HistoryJournalFile(FileSystem& fileSystem, RandomSource& random, FilePath fileURL)
      : fileSystem_(&fileSystem), random_(&random), fileURL_(std::move(fileURL)) {}

  FileSystem* fileSystem_;
  RandomSource* random_;
  FilePath fileURL_;
  std::string name_;
  FileDescriptor directory_;
  FileDescriptor lease_;
};

/// Reads the history without its lock: whole, but possibly outdated at once. Makes nothing.
Outcome<std::optional<std::string>, RecoveryStoreError> readHistoryFile(FileSystem& fileSystem,
                                                                        const FilePath& fileURL);

}  // namespace quorvane
