#pragma once

#include "quorvane/platform/Trash.h"

#include <atomic>
#include <deque>
#include <memory>
#include <string>
#include <thread>
#include <vector>

namespace quorvane {

/// Writes the notes of a batch into the Trash on a thread of its own, ahead of the items: making so many small files
/// takes as long as everything else about the moves.
class NotesAhead {
 public:
  struct Item {
    std::shared_ptr<TrashFolder> trash;  ///< none: no note is wanted
    std::string name;
    TrashNote note;
  };

  /// Begins with the first item.
  explicit NotesAhead(std::vector<Item> items);
  /// Takes the notes away that nobody asked for.
  ~NotesAhead();
  NotesAhead(const NotesAhead&) = delete;
  NotesAhead& operator=(const NotesAhead&) = delete;

  /// The leaf that is reserved for an item, or why there is none; waits for it. Once for each item.
  Outcome<std::string, PosixError> take(std::size_t index);

 private:
  struct Reservation {
    Item item;
    Outcome<std::string, PosixError> leaf = failure(cancelledError());
    std::atomic<bool> isDone = false;
    bool isTaken = false;

    explicit Reservation(Item wanted) : item(std::move(wanted)) {}
  };

  void work();

  std::deque<Reservation> reservations_;
  std::atomic<std::size_t> next_ = 0;
  std::thread thread_;
};

}  // namespace quorvane
