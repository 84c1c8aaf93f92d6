#include "quorvane/core/TreeDigest.h"

#include <gtest/gtest.h>

#include <sys/stat.h>

namespace quorvane {
namespace {

FileStatus statusOf(std::uint16_t kind, std::uint16_t permissions, std::uint64_t inode, std::int64_t size,
                    FileTime modified, FileTime changed) {
  FileStatus status;
  status.kind = kind;
  status.permissions = permissions;
  status.owner = status.group = 1000;
  status.inode = inode;
  status.size = size;
  status.modified = modified;
  status.changed = changed;
  return status;
}

// The example of docs/formats/tree-digest.md: what is recorded today has to be recognised by every later version.
TEST(TreeDigestTests, isWhatTheFormatSays) {
  const FileStatus root = statusOf(S_IFDIR, 0755, 100, 4096, {1700000000, 0}, {1700000009, 0});
  const FileStatus file = statusOf(S_IFREG, 0644, 101, 5, {1700000001, 500'000'000}, {1700000002, 0});
  const FileStatus sub = statusOf(S_IFDIR, 0700, 102, 4096, {1700000003, 0}, {1700000003, 0});
  FolderListing listing;
  listing.add("s").isFolder = true;
  listing.add("a").status = file;

  TreeDigest digest;
  const Sha256Digest entries = digest.ofEntries(listing);
  EXPECT_EQ(hexText(entries), "03cfebd66d4db89bd48ee9bbdf7cbcc92bea13166bc890b789402ef88b34145e");
  const Sha256Digest nothing = digest.ofEntries({});
  const Sha256Digest ofSub = digest.ofFolder(sub, /*isRoot=*/false, nothing, {});
  EXPECT_EQ(hexText(ofSub), "dc3034c5d8a5b0229ca01da509982c46b04b9a303f1127484bbda88a85248acc");
  EXPECT_EQ(hexText(digest.ofFolder(root, /*isRoot=*/true, entries, {{"s", ofSub}})),
            "354ae939b7c1e6e475eb41a9db9f0f644379e8b05b540080ff8226cb2fb3e7eb");
  EXPECT_EQ(hexText(digest.ofSingleObject(file)), "718420d46ef70db4d709f44f9a5d525e43f988739027bb6773983a7220d6fcca");
}

}  // namespace
}  // namespace quorvane
