#pragma once

#include "quorvane/base/Assert.h"
#include "quorvane/platform/SystemPlatform.h"
#include "quorvane/platform/Trash.h"
#include "tests/support/TempFolder.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include <sys/stat.h>

namespace quorvane {

inline const Uuid someMove = uuidFromText("6F9619FF-8B86-4011-B42D-00C04FC964FF").value();
inline const Uuid otherMove = uuidFromText("00000000-8B86-4011-B42D-00C04FC964FF").value();

inline std::string outputOf(const std::string& command) {
  FILE* const pipe = ::popen((command + " 2>&1").c_str(), "re");
  require(pipe != nullptr, "no shell can be started");
  std::string output;
  for (int c = std::fgetc(pipe); c != EOF; c = std::fgetc(pipe)) output += static_cast<char>(c);
  const int status = ::pclose(pipe);
  EXPECT_EQ(status, 0) << command << '\n' << output;
  return output;
}

inline std::vector<std::string> namesIn(const FilePath& folder) {
  std::vector<std::string> names;
  for (const auto& entry : std::filesystem::directory_iterator(folder.bytes)) names.push_back(entry.path().filename());
  return names;
}

inline void setPermissions(const FilePath& path, mode_t mode) {
  require(::chmod(path.bytes.c_str(), mode) == 0, "chmod");
}

inline mode_t permissionsOf(const FilePath& path) {
  struct stat status {};
  require(::lstat(path.bytes.c_str(), &status) == 0, "lstat");
  return status.st_mode & 07777;
}

/// A home with a folder "work" in it, and its Trash.
class TrashHome : public testing::Test {
 protected:
  TrashHome() { home_.makeFolders("work"), home_.makeFolders("data"); }

  ApplicationFolders folders() const {
    ApplicationFolders folders;
    folders.home = home_.path();
    folders.data = home_.at("data");
    return folders;
  }

  Outcome<std::unique_ptr<TrashFolder>, PosixError> folderFor(const FilePath& path) {
    return makeSystemTrash(*fileSystem_, random_, folders())->folderFor(path);
  }
  std::unique_ptr<TrashFolder> homeTrash() { return folderFor(home_.at("work/x")).value(); }

  FileDescriptor work() { return fileSystem_->openFolder(home_.descriptor(), "work").value(); }

  TrashNote noteFor(const std::string& name, const Uuid& move = someMove) const {
    return {home_.at("work/" + name), deletedAt_, move};
  }

  Outcome<std::string, PosixError> receive(TrashFolder& trash, const std::string& name) {
    return trash.receive(work().number(), name, noteFor(name));
  }

  std::string received(TrashFolder& trash, const std::string& name, const std::string& content = "content") {
    home_.write("work/" + name, content);
    return receive(trash, name).value();
  }

  std::vector<std::string> notes() const { return namesIn(home_.at("data/Trash/info")); }
  std::vector<std::string> items() const { return namesIn(home_.at("data/Trash/files")); }

  std::string environment() const { return "XDG_DATA_HOME='" + home_.at("data").bytes + "' GVFS_DISABLE_FUSE=1 "; }
  std::string onDesktop(const std::string& command) const {
    return outputOf("cd / && " + environment() + "dbus-run-session -- sh -c '" + command + "' 2>/dev/null");
  }

  TempFolder home_;
  Date deletedAt_ = dateFromIsoText("2026-11-21T10:00:00Z").value();
  SystemRandomSource random_;
  std::unique_ptr<FileSystem> fileSystem_ = makeSystemFileSystem();
};

}  // namespace quorvane
