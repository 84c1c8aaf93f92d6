#include "quorvane/platform/FileSystem.h"

#include "quorvane/platform/SystemPlatform.h"
#include "tests/support/FailingFileSystem.h"
#include "tests/support/TempFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <string>

#include <fcntl.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

namespace quorvane {
namespace {

using testing::UnorderedElementsAreArray;

class FileSystemTests : public testing::Test {
 protected:
  FileStatus statusOf(const char* name) { return fileSystem_->status(temp_.descriptor(), name).value(); }

  int codeOf(const Outcome<FileDescriptor, PosixError>& outcome) { return outcome ? 0 : outcome.error().code; }

  void makeFifo(const char* name) { ASSERT_EQ(::mkfifoat(temp_.descriptor(), name, 0600), 0); }

  void makeSocket(const char* name) {
    const FileDescriptor socket(::socket(AF_UNIX, SOCK_STREAM, 0));
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    const std::string path = temp_.at(name).bytes;
    ASSERT_LT(path.size(), sizeof address.sun_path);
    path.copy(address.sun_path, path.size());
    ASSERT_EQ(::bind(socket.number(), reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
  }

  TempFolder temp_;
  std::unique_ptr<FileSystem> fileSystem_ = makeSystemFileSystem();
};

TEST_F(FileSystemTests, tellsEveryKindOfObjectApart) {
  temp_.write("file", "12345");
  temp_.makeFolders("folder");
  temp_.makeLink("link", "folder");
  makeFifo("fifo");
  makeSocket("socket");
  struct Case {
    const char* name;
    mode_t kind;
    std::int64_t size;
  };
  for (const Case& each : {Case{"file", S_IFREG, 5}, Case{"folder", S_IFDIR, -1}, Case{"link", S_IFLNK, 6},
                           Case{"fifo", S_IFIFO, 0}, Case{"socket", S_IFSOCK, 0}}) {
    SCOPED_TRACE(each.name);
    const FileStatus status = statusOf(each.name);
    struct stat raw {};
    ASSERT_EQ(::fstatat(temp_.descriptor(), each.name, &raw, AT_SYMLINK_NOFOLLOW), 0);
    EXPECT_EQ(status.kind, each.kind);
    EXPECT_EQ(status.size, each.size >= 0 ? each.size : raw.st_size);
    EXPECT_EQ(status.inode, raw.st_ino);
    EXPECT_EQ(status.device, static_cast<std::int32_t>(raw.st_dev));
    EXPECT_EQ(status.permissions, raw.st_mode & 07777u);
    EXPECT_EQ(status.linkCount, raw.st_nlink);
    EXPECT_EQ(status.allocated, raw.st_blocks * 512);
    EXPECT_EQ(status.owner, ::geteuid());
    EXPECT_EQ(status.modified, (FileTime{raw.st_mtim.tv_sec, raw.st_mtim.tv_nsec}));
    EXPECT_EQ(status.changed, (FileTime{raw.st_ctim.tv_sec, raw.st_ctim.tv_nsec}));
  }
  EXPECT_TRUE(statusOf("link").isLink() && statusOf("folder").isFolder() && statusOf("file").isRegularFile());
  EXPECT_EQ(fileSystem_->status(temp_.descriptor(), "none").error().code, ENOENT);
  const auto file = fileSystem_->openFile(temp_.descriptor(), "file").value();
  EXPECT_EQ(fileSystem_->status(file.number()).value(), statusOf("file"));
  EXPECT_NE(statusOf("file").mount, 0u);
}

TEST_F(FileSystemTests, birthTimeStaysWhenAFileIsRenamedAndRewritten) {
  temp_.write("a", "x");
  const FileStatus before = statusOf("a");
  if (before.born == FileTime{}) GTEST_SKIP() << "the file system of the temporary folder keeps no birth times";
  ASSERT_TRUE(fileSystem_->renameReplacing(temp_.descriptor(), "a", temp_.descriptor(), "b"));
  const timespec past[2] = {{1'000'000'000, 5}, {1'000'000'000, 7}};
  ASSERT_EQ(::utimensat(temp_.descriptor(), "b", past, 0), 0);
  const FileStatus after = statusOf("b");
  EXPECT_EQ(after.born, before.born);
  EXPECT_EQ(after.inode, before.inode);
  EXPECT_EQ(after.modified, (FileTime{1'000'000'000, 7}));
}

TEST_F(FileSystemTests, listsEveryNameWithItsStatus) {
  std::vector<std::string> names = {
      std::string(255, 'n'), "new\nline", "\xff\xfe invalid", "\x1b[31mescape", " ", "...", "-rf", ".hidden"};
  for (int i = 0; i < 3000; ++i) names.push_back(std::string(100, 'x') + std::to_string(i));  // of many blocks
  for (const std::string& name : names) temp_.write(name, "abc");
  temp_.makeFolders("folder");
  temp_.makeLink("link", "folder");
  FolderListing listing;
  listing.add("from before");
  const auto file = fileSystem_->openFile(temp_.descriptor(), " ").value();
  EXPECT_EQ(fileSystem_->list(file.number(), listing).error().code, ENOTDIR);
  EXPECT_TRUE(listing.entries().empty());
  for (int round = 0; round < 2; ++round) {  // the same descriptor and listing again
    ASSERT_TRUE(fileSystem_->list(temp_.descriptor(), listing));
    std::vector<std::string> listed;
    for (const FolderEntry& entry : listing.entries()) {
      const std::string name(listing.nameOf(entry));
      EXPECT_EQ(listing.nameOf(entry).data()[entry.nameLength], '\0');
      EXPECT_EQ(entry.isFolder, name == "folder");
      EXPECT_EQ(entry.error, 0);
      if (name == "link") {
        EXPECT_TRUE(entry.status.isLink());
      } else if (!entry.isFolder) {
        FileStatus full = statusOf(name.c_str());
        full.mount = 0;
        full.born = {};
        EXPECT_EQ(entry.status, full) << name;
        listed.push_back(name);
      }
    }
    EXPECT_THAT(listed, UnorderedElementsAreArray(names));
  }
}

TEST_F(FileSystemTests, opensOnlyWhatItIsAskedFor) {
  temp_.write("file", "content");
  temp_.makeFolders("folder");
  temp_.makeLink("linkToFile", "file");
  temp_.makeLink("linkToFolder", "folder");
  temp_.makeLink("longLink", std::string(3000, 't'));
  makeSocket("socket");
  const int folder = temp_.descriptor();
  EXPECT_EQ(codeOf(fileSystem_->openFile(folder, "linkToFile")), ELOOP);
  EXPECT_NE(codeOf(fileSystem_->openFolder(folder, "linkToFolder")), 0);
  EXPECT_EQ(codeOf(fileSystem_->openFolder(folder, "file")), ENOTDIR);
  EXPECT_EQ(codeOf(fileSystem_->openFile(folder, "socket")), ENXIO);
  EXPECT_EQ(codeOf(fileSystem_->openFile(folder, "none")), ENOENT);
  EXPECT_EQ(fileSystem_->linkTarget(folder, "linkToFile").value(), "file");
  EXPECT_EQ(fileSystem_->linkTarget(folder, "longLink").value(), std::string(3000, 't'));
  const auto devices = fileSystem_->openStartingFolder({"/dev"}).value();
  EXPECT_EQ(codeOf(fileSystem_->openFile(devices.number(), "null")), ENXIO);
}

TEST_F(FileSystemTests, refusesNamesThatAreNotOneComponent) {
  temp_.makeFolders("folder/inner");
  const int folder = temp_.descriptor();
  for (const char* name : {"", ".", "..", "folder/inner", "/tmp", "folder/"}) {
    SCOPED_TRACE(name);
    EXPECT_EQ(codeOf(fileSystem_->openFolder(folder, name)), EINVAL);
    EXPECT_EQ(codeOf(fileSystem_->createFile(folder, name)), EINVAL);
    EXPECT_EQ(fileSystem_->status(folder, name).error().code, EINVAL);
    EXPECT_EQ(fileSystem_->removeFile(folder, name).error().code, EINVAL);
    EXPECT_EQ(fileSystem_->renameReplacing(folder, "folder", folder, name).error().code, EINVAL);
  }
}

TEST_F(FileSystemTests, aFifoDoesNotBlock) {
  makeFifo("fifo");
  const auto fifo = fileSystem_->openFile(temp_.descriptor(), "fifo").value();
  std::array<std::byte, 8> buffer{};
  EXPECT_EQ(fileSystem_->read(fifo.number(), buffer).value(), 0u);
  const FileDescriptor writer(::openat(temp_.descriptor(), "fifo", O_WRONLY | O_NONBLOCK));
  ASSERT_TRUE(writer.isOpen());
  EXPECT_EQ(fileSystem_->read(fifo.number(), buffer).value(), 0u);
}

TEST_F(FileSystemTests, resolvesLinksAndKeepsWhatIsMissing) {
  temp_.makeFolders("real/inner");
  temp_.makeLink("link", "real");
  temp_.makeLink("dangling", "real/missing");
  temp_.makeLink("chain", "dangling");
  temp_.makeLink("loop", "loop");
  const auto resolved = [&](std::string_view relative) {
    const auto path = fileSystem_->resolved(temp_.at(relative));
    return path ? std::string(relativeTo(temp_.path(), *path)) : std::to_string(path.error().code);
  };
  EXPECT_EQ(resolved("link/inner/"), "real/inner");
  EXPECT_EQ(resolved("link/../real"), "real");
  EXPECT_EQ(resolved("link/a/b/c"), "real/a/b/c");
  EXPECT_EQ(resolved("dangling"), "real/missing");
  EXPECT_EQ(resolved("chain/below"), "real/missing/below");
  EXPECT_EQ(resolved("missing/../real"), std::to_string(ENOENT));
  EXPECT_EQ(resolved("loop/x"), std::to_string(ELOOP));
  EXPECT_EQ(fileSystem_->resolved({"relative"}).error().code, EINVAL);
  EXPECT_EQ(fileSystem_->resolved({"/"}).value().bytes, "/");
}

TEST_F(FileSystemTests, opensFoldersBelowOneComponentAtATime) {
  temp_.makeFolders("a/b/c");
  temp_.makeFolders("elsewhere/b/c");
  temp_.makeLink("link", "a");
  temp_.makeLink("a/link", "../elsewhere/b");
  temp_.makeLink("a/b/link", "c");
  temp_.write("a/file", "");
  const auto open = [&](std::string_view relative) {
    return codeOf(openFolderBelow(*fileSystem_, temp_.descriptor(), relative));
  };
  EXPECT_EQ(open("a"), 0);
  EXPECT_EQ(open("a/b/c"), 0);
  for (const char* link : {"link", "link/b/c", "a/link", "a/link/c", "a/b/link", "a/file"})
    EXPECT_NE(open(link), 0) << link;
  for (const char* fault : {"", "/", "/a", "a/", "a//b", ".", "a/./b", "..", "a/../a", "a/b/.."})
    EXPECT_EQ(open(fault), EINVAL) << fault;
  EXPECT_EQ(open(std::string_view("a\0b", 3)), EINVAL);
  EXPECT_EQ(open("a/none/c"), ENOENT);
}

TEST_F(FileSystemTests, makesMissingFoldersPrivateAndDurable) {
  temp_.makeFolders("a");
  FailingFileSystem recorded(*fileSystem_);
  ASSERT_TRUE(makeFoldersBelow(recorded, temp_.descriptor(), "a/b/c"));
  EXPECT_EQ(std::ranges::count(recorded.record(), FileCall::synchronise), 2);
  EXPECT_EQ(fileSystem_->status(openFolderBelow(*fileSystem_, temp_.descriptor(), "a/b")->number(), "c")->permissions,
            0700);
  temp_.makeLink("a/link", "b");
  EXPECT_NE(codeOf(makeFoldersBelow(*fileSystem_, temp_.descriptor(), "a/link/new")), 0);
  EXPECT_FALSE(temp_.holds("a/b/new"));
}

TEST_F(FileSystemTests, aFolderThatAnotherProcessMakesMeanwhileIsUsed) {
  FailingFileSystem raced(*fileSystem_);
  raced.countOnly({FileCall::makeFolder});
  raced.beforeCall(1, [&] { temp_.makeFolders("new"); });
  EXPECT_TRUE(makeFoldersBelow(raced, temp_.descriptor(), "new/inner"));
}

TEST_F(FileSystemTests, readsToTheEndWithinTheLimit) {
  const std::string content(200'000, 'c');
  temp_.write("file", content);
  const auto read = [&](std::size_t limit) {
    const auto file = fileSystem_->openFile(temp_.descriptor(), "file").value();
    return readToEnd(*fileSystem_, file.number(), limit);
  };
  EXPECT_EQ(read(content.size()).value(), content);
  EXPECT_EQ(read(content.size() - 1).error().code, EFBIG);
  EXPECT_EQ(read(0).error().code, EFBIG);
}

TEST_F(FileSystemTests, aLockHasOneHolder) {
  const int folder = temp_.descriptor();
  {
    const auto first = fileSystem_->lockFile(folder, "lock");
    ASSERT_TRUE(first);
    EXPECT_EQ(statusOf("lock").permissions, 0600);
    EXPECT_EQ(codeOf(fileSystem_->lockFile(folder, "lock")), EWOULDBLOCK);
  }
  EXPECT_TRUE(fileSystem_->lockFile(folder, "lock"));
  temp_.makeLink("link", "lock");
  EXPECT_EQ(codeOf(fileSystem_->lockFile(folder, "link")), ELOOP);
}

}  // namespace
}  // namespace quorvane
