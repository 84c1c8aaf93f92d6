#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace quorvane {

/// A set of inode numbers that takes some sixteen bytes for each, since a tree may hold millions of hard links.
class InodeSet {
 public:
  /// Whether it was not there before.
  bool insert(std::uint64_t inode);

 private:
  void grow();
  std::size_t placeOf(std::uint64_t inode) const;

  std::vector<std::uint64_t> slots_;  // open addressing; 0 is an empty slot
  std::size_t count_ = 0;
  bool hasZero_ = false;
};

}  // namespace quorvane
