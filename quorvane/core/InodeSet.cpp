#include "quorvane/core/InodeSet.h"

#include <utility>

namespace quorvane {

bool InodeSet::insert(std::uint64_t inode) {
  if (inode == 0) return !std::exchange(hasZero_, true);
  if (2 * (count_ + 1) > slots_.size()) grow();
  const std::size_t place = placeOf(inode);
  if (slots_[place] == inode) return false;
  slots_[place] = inode;
  ++count_;
  return true;
}

void InodeSet::grow() {
  std::vector<std::uint64_t> old(slots_.empty() ? 64 : 2 * slots_.size());
  old.swap(slots_);
  for (const std::uint64_t inode : old)
    if (inode != 0) slots_[placeOf(inode)] = inode;
}

std::size_t InodeSet::placeOf(std::uint64_t inode) const {
  const std::size_t mask = slots_.size() - 1;
  std::size_t place = static_cast<std::size_t>(inode * 0x9E37'79B9'7F4A'7C15u >> 32) & mask;
  while (slots_[place] != 0 && slots_[place] != inode) place = (place + 1) & mask;
  return place;
}

}  // namespace quorvane
