#include "quorvane/core/TreeDigest.h"

#include <algorithm>

namespace quorvane {

namespace {

constexpr std::size_t flushSize = std::size_t{32} << 10;

/// Little-endian, in as many bytes as the type has.
template <class Integer>
void append(std::string& bytes, Integer value) {
  const auto bits = static_cast<std::make_unsigned_t<Integer>>(value);
  char encoded[sizeof(Integer)];
  for (std::size_t i = 0; i < sizeof(Integer); ++i) encoded[i] = static_cast<char>(bits >> (8 * i) & 0xFFu);
  bytes.append(encoded, sizeof(Integer));
}

void append(std::string& bytes, const FileTime& time) {
  append(bytes, time.seconds);
  append(bytes, static_cast<std::uint32_t>(time.nanoseconds));
}

}  // namespace

Sha256Digest TreeDigest::ofEntries(const FolderListing& listing) {
  const auto& entries = listing.entries();
  order_.clear();
  for (std::uint32_t i = 0; i < entries.size(); ++i)
    if (!entries[i].isFolder) order_.push_back(i);
  std::ranges::sort(order_, {}, [&](std::uint32_t i) { return listing.nameOf(entries[i]); });
  for (const std::uint32_t i : order_) {
    addName(listing.nameOf(entries[i]));
    append(buffer_, static_cast<std::uint8_t>(entries[i].error != 0));
    addStatus(entries[i].status, /*isRoot=*/false);
    if (buffer_.size() >= flushSize) flush();
  }
  flush();
  return hash_.finish();
}

Sha256Digest TreeDigest::ofFolder(const FileStatus& folder, bool isRoot, const Sha256Digest& entries,
                                  const std::vector<Child>& children) {
  addStatus(folder, isRoot);
  flush();
  hash_.add(entries);
  for (const Child& child : children) {
    addName(child.name);
    flush();
    hash_.add(child.digest);
  }
  return hash_.finish();
}

Sha256Digest TreeDigest::ofSingleObject(const FileStatus& object) {
  addStatus(object, /*isRoot=*/false);
  flush();
  return hash_.finish();
}

void TreeDigest::addStatus(const FileStatus& status, bool isRoot) {
  append(buffer_, status.kind);
  append(buffer_, status.permissions);
  append(buffer_, status.owner);
  append(buffer_, status.group);
  append(buffer_, status.inode);
  // What a file system reports as the size of a folder is its own affair.
  append(buffer_, status.isFolder() ? std::int64_t{0} : status.size);
  append(buffer_, status.modified);
  append(buffer_, isRoot ? FileTime{} : status.changed);
}

void TreeDigest::addName(std::string_view name) {
  append(buffer_, static_cast<std::uint16_t>(name.size()));
  buffer_ += name;
}

void TreeDigest::flush() {
  hash_.add(buffer_);
  buffer_.clear();
}

}  // namespace quorvane
