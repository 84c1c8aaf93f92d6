#pragma once

#include "quorvane/platform/FileSystem.h"
#include "quorvane/platform/RandomSource.h"
#include "quorvane/platform/Trash.h"

#include <map>
#include <string>
#include <vector>

namespace quorvane {

/// The open folders of a Trash that was checked, and how its notes tell paths.
struct TrashFolders {
  FilePath directory{};  ///< of `files`, links resolved
  FilePath top{};        ///< notes tell paths relative to it; empty when they tell absolute ones
  FileDescriptor trash{};
  FileDescriptor files{};
  FileDescriptor info{};
};

/// A Trash as FreeDesktop.org describes it (version 1.0): items in `files`, notes in `info`.
class OpenTrash final : public TrashFolder {
 public:
  OpenTrash(FileSystem& fileSystem, RandomSource& random, TrashFolders folders);

  const FilePath& directory() const override { return folders_.directory; }
  int descriptor() const override { return folders_.files.number(); }

  Outcome<std::string, PosixError> receive(int folder, const std::string& name, const TrashNote& note) override;
  std::vector<std::string> leavesFor(const std::string& name, const Uuid& move) const override;
  Outcome<void, PosixError> forget(const std::string& leaf) override;
  void forgetUnfinished(const std::string& name, const TrashNote& note) override;
  Outcome<void, PosixError> ensureNote(const std::string& leaf, const TrashNote& note) override;
  void tellSizes(const std::vector<Size>& folders) override;
  std::vector<int> changedFolders() const override { return {descriptor()}; }

 private:
  int info() const { return folders_.info.number(); }

  std::string textOf(const TrashNote& note) const;
  Outcome<void, PosixError> writeNewNote(const std::string& noteName, const std::string& text);
  Outcome<void, PosixError> replaceNote(const std::string& noteName, const std::string& text);
  Outcome<void, PosixError> receiveAs(const std::string& leaf, int folder, const std::string& name,
                                      const std::string& text);
  Outcome<std::string, PosixError> readNote(const std::string& noteName);
  bool isEmptyNoteSince(const std::string& noteName, Date deletedAt);
  bool isUnfinished(const std::string& leaf, const TrashNote& note);

  FileSystem& fileSystem_;
  RandomSource& random_;
  TrashFolders folders_;
  std::map<std::string, unsigned> firstAttempts_;  ///< by name: those before are known to be taken
};

}  // namespace quorvane
