#include "quorvane/platform/Volumes.h"

#include "quorvane/platform/SystemPlatform.h"
#include "quorvane/platform/linux/MountInfo.h"
#include "quorvane/platform/linux/VolumeIdentifiers.h"
#include "tests/support/TempFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cerrno>

#include <sys/mount.h>
#include <sys/statvfs.h>
#include <sys/vfs.h>
#include <unistd.h>

namespace quorvane {
namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::Not;

TEST(MountInfoTests, readsPointsAndTheirEscapes) {
  EXPECT_THAT(mountPointsFromMountInfo("36 35 98:0 / /z rw,noatime master:1 - ext3 /dev/root rw\n"
                                       "40 36 0:5 /sub /a\\040b\\011\\012\\134\\043 rw - tmpfs t rw\n"
                                       "41 36 0:5 / /z rw - tmpfs over rw\n"
                                       "42 36 0:6 / /removed//deleted rw - tmpfs t rw\n")
                  .value(),
              ElementsAre(FilePath{"/a b\t\n\\#"}, FilePath{"/z"}));
  EXPECT_TRUE(mountPointsFromMountInfo("")->empty());
}

TEST(MountInfoTests, refusesTheWholeTextForOneBadLine) {
  const std::string good = "36 35 98:0 / /z rw - ext3 /dev/root rw\n";
  for (const char* bad :
       {"\n", "36 35 98:0 /\n", "36 35 98:0 / relative rw\n", "36 35 98:0 / /cut", "36 35 98:0 / /a\\04 rw\n",
        "36 35 98:0 / /a\\000b rw\n", "36 35 98:0 / /a\\777 rw\n", "36 35 98:0 / /a\\ rw\n"})
    EXPECT_FALSE(mountPointsFromMountInfo(good + bad)) << bad;
}

TEST(VolumeIdentifiersTests, aDerivedUuidTellsEveryTypeAndIdentifierApart) {
  EXPECT_EQ(uuidText(derivedVolumeUuid(0x01020304, {0x11223344, -2})), "01020304-0000-8011-8022-3344FFFFFFFE");
  EXPECT_NE(derivedVolumeUuid(1, {2, 3}), derivedVolumeUuid(1, {3, 2}));
  EXPECT_NE(derivedVolumeUuid(1, {2, 3}), derivedVolumeUuid(2, {2, 3}));
}

TEST(VolumesTests, oneVolumeHasOneIdentity) {
  TempFolder temp;
  temp.makeFolders("inner");
  const auto fileSystem = makeSystemFileSystem();
  const auto volumes = makeSystemVolumes();
  const auto inner = fileSystem->openFolder(temp.descriptor(), "inner").value();
  const VolumeIdentity identity = volumes->identity(temp.descriptor()).value();
  EXPECT_EQ(volumes->identity(inner.number()).value(), identity);
  EXPECT_NE(identity.uuid, Uuid{});
  EXPECT_EQ(volumes->identity(-1).error().code, EBADF);
}

TEST(VolumesTests, capacityIsWhatThisUserCanWrite) {
  TempFolder temp;
  struct statvfs raw {};
  ASSERT_EQ(::statvfs(temp.path().bytes.c_str(), &raw), 0);
  const VolumeCapacity capacity = makeSystemVolumes()->capacity(temp.path()).value();
  EXPECT_EQ(capacity.total, static_cast<std::int64_t>(raw.f_blocks * raw.f_frsize));
  EXPECT_GT(capacity.available, 0);
  EXPECT_LE(capacity.available, capacity.total);
  EXPECT_EQ(makeSystemVolumes()->capacity(temp.at("missing")).error().code, ENOENT);
}

TEST(VolumesTests, aMountedVolumeIsAnotherOne) {
  if (::geteuid() != 0) GTEST_SKIP() << "only the administrator can mount";
  TempFolder temp;
  temp.makeFolders("a mount\n\\");
  const std::string point = temp.at("a mount\n\\").bytes;
  if (::mount("quorvane-test", point.c_str(), "tmpfs", 0, "size=1m") != 0)
    GTEST_SKIP() << "this system does not let us mount";
  const auto fileSystem = makeSystemFileSystem();
  const auto volumes = makeSystemVolumes();
  {
    const auto mounted = fileSystem->openFolder(temp.descriptor(), "a mount\n\\").value();
    const VolumeIdentity here = volumes->identity(temp.descriptor()).value();
    const VolumeIdentity there = volumes->identity(mounted.number()).value();
    EXPECT_NE(here.uuid, there.uuid);
    EXPECT_NE(here.fileSystemID, there.fileSystemID);
    EXPECT_EQ(volumes->capacity({point})->total, 1 << 20);
    EXPECT_THAT(volumes->mountPoints().value(), Contains(FilePath{point}));
  }
  ASSERT_EQ(::umount(point.c_str()), 0);
  EXPECT_THAT(volumes->mountPoints().value(), Not(Contains(FilePath{point})));
}

}  // namespace
}  // namespace quorvane
