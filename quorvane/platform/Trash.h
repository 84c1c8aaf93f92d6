#pragma once

#include "quorvane/base/Date.h"
#include "quorvane/base/FilePath.h"
#include "quorvane/base/Uuid.h"
#include "quorvane/platform/PosixError.h"

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace quorvane {

/// What the Trash writes down about an item, so that the desktop can show it and put it back.
struct TrashNote {
  FilePath originalPath;  ///< absolute, links resolved
  Date deletedAt;
  Uuid move;  ///< tells the notes of this program's moves from each other and from everybody else's
};

/// One Trash folder, open. It holds items under names of their own (`leaf` below), each with a note beside it.
///
/// Used by one thread at a time; calls wait for the disk.
class TrashFolder {
 public:
  virtual ~TrashFolder() = default;

  /// The folder that holds the items, with links resolved.
  virtual const FilePath& directory() const = 0;
  /// Of that folder; open as long as this object lives.
  virtual int descriptor() const = 0;

  /// Moves what is called `name` in an open folder into the Trash, and returns its leaf there: the name, or one made
  /// from it where that is taken or too long. The note is written first and under that name alone; then follows one
  /// rename that replaces nothing. Never copies: EXDEV when the folder is on another mount.
  ///
  /// After a failure the object is where it was and the note is taken away; a process that is killed in between leaves
  /// the note for `forgetUnfinished`.
  virtual Outcome<std::string, PosixError> receive(int folder, const std::string& name, const TrashNote& note) = 0;

  /// The leaves that `receive` tries for an item of this name in this move, the likeliest first.
  virtual std::vector<std::string> leavesFor(const std::string& name, const Uuid& move) const = 0;

  /// Takes the note of an item away that has left the Trash, or never came. Succeeds when there is none.
  virtual Outcome<void, PosixError> forget(const std::string& leaf) = 0;

  /// Takes away a note that `receive` left for an item of this name and note when the process was killed before its
  /// rename. Notes with an item, of other moves and of other programs stay; an empty note,
  /// which says nothing of whose it is, goes only if its name and time are those of the item.
  virtual void forgetUnfinished(const std::string& name, const TrashNote& note) = 0;

  /// Makes sure that an item that is here has its note: writes it where it is missing or was never completed.
  virtual Outcome<void, PosixError> ensureNote(const std::string& leaf, const TrashNote& note) = 0;

  struct Size {
    std::string leaf;
    std::int64_t bytes = 0;
  };
  /// Tells the desktop how much folders hold that were received, so that it need not measure them; what it was told of
  /// items that are gone is dropped. Only a help: what cannot be written is left out.
  virtual void tellSizes(const std::vector<Size>& folders) = 0;

  /// The folders to be brought to the disk after something was received or forgotten; open as long as this object
  /// lives. That of the notes is not among them: a note that a power cut took is only a help that the desktop lacks.
  virtual std::vector<int> changedFolders() const = 0;
};

/// Finds the Trash folders of one user.
class Trash {
 public:
  virtual ~Trash() = default;

  /// The Trash of the home, with what it holds and its notes; whether it exists or not.
  virtual FilePath homeTrash() const = 0;

  /// The Trash for an object at this path (absolute, links resolved), made where it is missing with permissions 0700.
  /// EXDEV when its mount has none that can be trusted: one that is no link, belongs to the user, and so on.
  virtual Outcome<std::unique_ptr<TrashFolder>, PosixError> folderFor(const FilePath& path) = 0;

  /// The Trash whose `directory()` this is, as long as it stands there as such; makes nothing. ENOENT when it is
  /// missing.
  virtual Outcome<std::unique_ptr<TrashFolder>, PosixError> open(const FilePath& directory) = 0;
};

}  // namespace quorvane
