#include "quorvane/platform/DurableFile.h"

#include "quorvane/base/Assert.h"
#include "quorvane/platform/SystemPlatform.h"
#include "tests/support/FailingFileSystem.h"
#include "tests/support/TempFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cerrno>
#include <functional>
#include <memory>

#include <sys/stat.h>
#include <unistd.h>

namespace quorvane {
namespace {

using testing::ElementsAre;

class DurableFileTests : public testing::Test {
 protected:
  std::vector<std::string> names() {
    FolderListing listing;
    EXPECT_TRUE(fileSystem_->list(temp_.descriptor(), listing));
    std::vector<std::string> names;
    for (const FolderEntry& entry : listing.entries()) names.emplace_back(listing.nameOf(entry));
    return names;
  }

  Outcome<void, PosixError> replace(FileSystem& fileSystem) {
    return replaceFile(fileSystem, temp_.descriptor(), "state", "new", identifier_);
  }

  TempFolder temp_;
  const Uuid identifier_;
  std::unique_ptr<FileSystem> fileSystem_ = makeSystemFileSystem();
};

TEST_F(DurableFileTests, bringsTheContentToTheDiskBeforeTheNameAndTheNameBeforeItReturns) {
  FailingFileSystem recorded(*fileSystem_);
  ASSERT_TRUE(replace(recorded));
  EXPECT_THAT(recorded.record(), ElementsAre(FileCall::createFile, FileCall::write, FileCall::synchronise,
                                             FileCall::renameReplacing, FileCall::synchronise));
  EXPECT_EQ(temp_.read("state"), "new");
  EXPECT_EQ(fileSystem_->status(temp_.descriptor(), "state")->permissions, 0600);
  EXPECT_THAT(names(), ElementsAre("state"));
}

TEST_F(DurableFileTests, shortWritesAreContinued) {
  FailingFileSystem slow(*fileSystem_);
  slow.limitWritesTo(1);
  ASSERT_TRUE(replace(slow));
  EXPECT_EQ(temp_.read("state"), "new");
  slow.limitWritesTo(0);
  EXPECT_EQ(replace(slow).error().code, EIO);
}

TEST_F(DurableFileTests, everyFailingStepLeavesTheOldFileOrTheNewOneWhole) {
  FailingFileSystem counted(*fileSystem_);
  ASSERT_TRUE(replace(counted));
  for (std::size_t step = 1; step <= counted.calls(); ++step) {
    for (const FaultSpan span : {FaultSpan::once, FaultSpan::fromThereOn}) {
      SCOPED_TRACE(testing::Message() << "step " << step << ", span " << static_cast<int>(span));
      ::unlink(temp_.at("state.writing-00000000-0000-0000-0000-000000000000").bytes.c_str());
      temp_.write("state", "old");
      FailingFileSystem failing(*fileSystem_);
      failing.failAt(step, span, ENOSPC);
      EXPECT_EQ(replace(failing).error().code, ENOSPC);
      const bool onlyTheFolderIsNotOnTheDisk = step == counted.calls();
      EXPECT_EQ(temp_.read("state"), onlyTheFolderIsNotOnTheDisk ? "new" : "old");
      if (span == FaultSpan::once) {
        EXPECT_THAT(names(), ElementsAre("state"));
      }
    }
  }
}

TEST_F(DurableFileTests, aForeignTemporaryIsNeitherUsedNorRemoved) {
  temp_.write("victim", "kept");
  temp_.makeLink("state.writing-00000000-0000-0000-0000-000000000000", "victim");
  EXPECT_EQ(replace(*fileSystem_).error().code, EEXIST);
  EXPECT_EQ(temp_.read("victim"), "kept");
  EXPECT_TRUE(temp_.holds("state.writing-00000000-0000-0000-0000-000000000000"));
}

TEST_F(DurableFileTests, readsOnlyAFileThatNobodyElseCanHaveWritten) {
  struct Case {
    const char* what;
    std::function<void()> make;
    std::optional<TrustFault> fault;
  };
  const std::string path = temp_.at("state").bytes;
  const auto file = [&] { temp_.write("state", "12345"); };
  const auto permissions = [&](mode_t mode) { file(), require(::chmod(path.c_str(), mode) == 0, "chmod"); };
  const Case cases[] = {
      {"private file", [&] { permissions(0600); }, {}},
      {"readable by others", [&] { permissions(0644); }, {}},
      {"nothing", [] {}, TrustFault::missing},
      {"link", [&] { temp_.write("other", "12345"), temp_.makeLink("state", "other"); }, TrustFault::notRegularFile},
      {"fifo", [&] { require(::mkfifo(path.c_str(), 0600) == 0, "mkfifo"); }, TrustFault::notRegularFile},
      {"folder", [&] { temp_.makeFolders("state"); }, TrustFault::notRegularFile},
      {"two links", [&] { file(), require(::link(path.c_str(), (path + "2").c_str()) == 0, "link"); },
       TrustFault::severalLinks},
      {"writable by group", [&] { permissions(0660); }, TrustFault::writableByOthers},
      {"writable by others", [&] { permissions(0602); }, TrustFault::writableByOthers},
      {"too large", [&] { temp_.write("state", "123456"), ::chmod(path.c_str(), 0600); }, TrustFault::tooLarge},
  };
  for (const Case& each : cases) {
    SCOPED_TRACE(each.what);
    ::unlink(path.c_str()), ::rmdir(path.c_str()), ::unlink((path + "2").c_str());
    each.make();
    const auto content = readTrusted(*fileSystem_, temp_.descriptor(), "state", 5);
    if (!each.fault) {
      EXPECT_EQ(content.value(), "12345");
    } else {
      ASSERT_FALSE(content);
      EXPECT_EQ(caseName(content.error().fault), caseName(*each.fault));
    }
  }
}

TEST_F(DurableFileTests, refusesAForeignOwnersFile) {
  if (::geteuid() != 0) GTEST_SKIP() << "only the administrator can give a file away";
  temp_.write("state", "x");
  ASSERT_EQ(::chown(temp_.at("state").bytes.c_str(), 12345, 12345), 0);
  EXPECT_EQ(readTrusted(*fileSystem_, temp_.descriptor(), "state", 5).error().fault, TrustFault::foreignOwner);
}

TEST_F(DurableFileTests, whatWasOpenedIsWhatWasChecked) {
  // Another object takes the name's place at every step: either the checked file is read, or nothing is.
  for (std::size_t step = 1; step <= 3; ++step) {
    SCOPED_TRACE(step);
    temp_.write("state", "mine");
    ASSERT_EQ(::chmod(temp_.at("state").bytes.c_str(), 0600), 0);
    temp_.write("other", "bad");
    ASSERT_EQ(::chmod(temp_.at("other").bytes.c_str(), 0666), 0);
    FailingFileSystem swapped(*fileSystem_);
    swapped.beforeCall(step, [&] { ::rename(temp_.at("other").bytes.c_str(), temp_.at("state").bytes.c_str()); });
    const auto content = readTrusted(swapped, temp_.descriptor(), "state", 100);
    if (step == 1) {
      EXPECT_EQ(content.error().fault, TrustFault::writableByOthers);
    } else {
      EXPECT_EQ(content.value(), "mine");
    }
  }
}

TEST_F(DurableFileTests, aFileThatGrowsWhileItIsReadIsTooLarge) {
  temp_.write("state", "12345");
  ASSERT_EQ(::chmod(temp_.at("state").bytes.c_str(), 0600), 0);
  FailingFileSystem growing(*fileSystem_);
  growing.countOnly({FileCall::read});
  growing.beforeCall(1, [&] { temp_.write("state", "1234567890"); });
  EXPECT_EQ(readTrusted(growing, temp_.descriptor(), "state", 5).error().fault, TrustFault::tooLarge);
}

}  // namespace
}  // namespace quorvane
