#include "quorvane/removal/NotesAhead.h"

#include <system_error>
#include <utility>

namespace quorvane {

NotesAhead::NotesAhead(std::vector<Item> items) {
  for (Item& item : items) reservations_.emplace_back(std::move(item));
  try {
    thread_ = std::thread([this] { work(); });
  } catch (const std::system_error&) {
    work();
  }
}

NotesAhead::~NotesAhead() {
  next_ = reservations_.size();
  if (thread_.joinable()) thread_.join();
  for (Reservation& each : reservations_)
    if (!each.isTaken && each.leaf) (void)each.item.trash->forget(*each.leaf);
}

void NotesAhead::work() {
  for (std::size_t i = next_++; i < reservations_.size(); i = next_++) {
    Reservation& each = reservations_[i];
    if (each.item.trash) each.leaf = each.item.trash->reserve(each.item.name, each.item.note);
    each.isDone = true;
    each.isDone.notify_one();
  }
}

Outcome<std::string, PosixError> NotesAhead::take(std::size_t index) {
  Reservation& each = reservations_[index];
  each.isDone.wait(false);
  each.isTaken = true;
  return each.leaf;
}

}  // namespace quorvane
