#include "quorvane/platform/linux/OpenTrash.h"

#include "quorvane/platform/DurableFile.h"
#include "quorvane/platform/linux/DirectorySizes.h"
#include "quorvane/platform/linux/TrashInfo.h"
#include "quorvane/platform/linux/TrashName.h"

#include <algorithm>
#include <cerrno>
#include <span>
#include <utility>

namespace quorvane {

namespace {

constexpr std::size_t longestNote = 64 << 10;
constexpr std::chrono::hours longestMove(1);     // from the date of a note to the moment it is made
constexpr std::chrono::minutes longestAhead(1);  // dates of runs that follow each other fast lie ahead of the clock

std::string noteNameOf(const std::string& leaf) { return leaf + std::string(trashInfoSuffix); }

bool isTaken(PosixError error) { return error.code == EEXIST; }

}  // namespace

OpenTrash::OpenTrash(FileSystem& fileSystem, RandomSource& random, TrashFolders folders)
    : fileSystem_(fileSystem), random_(random), folders_(std::move(folders)) {}

std::string OpenTrash::textOf(const TrashNote& note) const {
  const bool isRelative = !folders_.top.bytes.empty() && isBelow(note.originalPath, folders_.top);
  const std::string_view path =
      isRelative ? relativeTo(folders_.top, note.originalPath) : std::string_view(note.originalPath.bytes);
  return trashInfoText(path, note.deletedAt, note.move);
}

Outcome<void, PosixError> OpenTrash::writeNewNote(const std::string& noteName, const std::string& text) {
  const auto file = fileSystem_.createFile(info(), noteName.c_str());
  if (!file) return failure(file.error());
  const std::string_view whole = text;
  auto written = writeWhole(fileSystem_, file->number(), std::span(&whole, 1));
  if (!written) (void)fileSystem_.removeFile(info(), noteName.c_str());  // what failed first is what the caller is told
  return written;
}

Outcome<void, PosixError> OpenTrash::receiveAs(const std::string& leaf, int folder, const std::string& name,
                                               const std::string& text) {
  const std::string noteName = noteNameOf(leaf);
  if (auto noted = writeNewNote(noteName, text); !noted) return noted;
  auto moved = fileSystem_.renameExclusive(folder, name.c_str(), descriptor(), leaf.c_str());
  if (!moved) (void)fileSystem_.removeFile(info(), noteName.c_str());
  return moved;
}

Outcome<std::string, PosixError> OpenTrash::receive(int folder, const std::string& name, const TrashNote& note) {
  if (!isOneComponent(name)) return failure(PosixError{EINVAL});
  const std::string text = textOf(note);
  const auto known = firstAttempts_.find(name);
  for (unsigned attempt = known == firstAttempts_.end() ? 1 : known->second; attempt <= mostTrashNames; ++attempt) {
    std::string leaf = trashName(name, note.move, attempt);
    const auto received = receiveAs(leaf, folder, name, text);
    if (!received && isTaken(received.error())) continue;
    if (!received) return failure(received.error());
    // Names that only this move uses say nothing about the next one's.
    if (attempt > 1) firstAttempts_.insert_or_assign(name, std::min(attempt, numberedTrashNames) + 1);
    return leaf;
  }
  return failure(PosixError{EEXIST});
}

std::vector<std::string> OpenTrash::leavesFor(const std::string& name, const Uuid& move) const {
  std::vector<std::string> leaves;
  leaves.reserve(mostTrashNames);
  for (unsigned attempt = 1; attempt <= mostTrashNames; ++attempt) leaves.push_back(trashName(name, move, attempt));
  return leaves;
}

Outcome<void, PosixError> OpenTrash::forget(const std::string& leaf) {
  auto removed = fileSystem_.removeFile(info(), noteNameOf(leaf).c_str());
  if (!removed && removed.error().isMissing()) return {};
  return removed;
}

Outcome<std::string, PosixError> OpenTrash::readNote(const std::string& noteName) {
  auto text = readTrusted(fileSystem_, info(), noteName, longestNote);
  if (text) return *std::move(text);
  const bool isOfTheSystem = text.error().fault == TrustFault::missing || text.error().fault == TrustFault::unreadable;
  return failure(isOfTheSystem ? text.error().reason : PosixError{EEXIST});
}

/// A note that is empty tells nothing but its name and its time: of a process that ended before it wrote, or of a power
/// cut soon after.
bool OpenTrash::isEmptyNoteSince(const std::string& noteName, Date deletedAt) {
  const auto status = fileSystem_.status(info(), noteName.c_str());
  if (!status || status->size != 0) return false;
  const auto age = status->modified.date() - wholeSeconds(deletedAt);
  return age >= -longestAhead && age <= longestMove;
}

bool OpenTrash::isUnfinished(const std::string& leaf, const TrashNote& note) {
  const std::string noteName = noteNameOf(leaf);
  const auto text = readNote(noteName);
  if (!text) return false;
  const auto found = trashInfoFromText(*text);
  const bool isOurs = found ? found->move == note.move : isEmptyNoteSince(noteName, note.deletedAt);
  if (!isOurs) return false;
  const auto item = fileSystem_.status(descriptor(), leaf.c_str());
  return !item && item.error().isMissing();
}

void OpenTrash::forgetUnfinished(const std::string& name, const TrashNote& note) {
  if (!isOneComponent(name)) return;
  for (const std::string& leaf : leavesFor(name, note.move))
    if (isUnfinished(leaf, note)) (void)forget(leaf);
}

Outcome<void, PosixError> OpenTrash::ensureNote(const std::string& leaf, const TrashNote& note) {
  const std::string noteName = noteNameOf(leaf);
  const auto text = readNote(noteName);
  if (!text && text.error().isMissing()) return writeNewNote(noteName, textOf(note));
  if (!text) return failure(text.error());
  if (trashInfoFromText(*text)) return {};
  return replaceNote(noteName, textOf(note));
}

/// The name stays taken all the time: another program would put its own item in the place of one without a note.
Outcome<void, PosixError> OpenTrash::replaceNote(const std::string& noteName, const std::string& text) {
  removeAbandonedTemporaries(fileSystem_, info(), {});  // the name of the note may leave no room for more
  const std::string temporary = ".writing-" + uuidText(random_.uuid());
  if (auto written = writeNewNote(temporary, text); !written) return written;
  auto replaced = fileSystem_.renameReplacing(info(), temporary.c_str(), info(), noteName.c_str());
  if (!replaced) (void)fileSystem_.removeFile(info(), temporary.c_str());
  return replaced;
}

void OpenTrash::tellSizes(const std::vector<Size>& folders) {
  addDirectorySizes(fileSystem_, random_, folders_.trash.number(), info(), folders);
}

}  // namespace quorvane
