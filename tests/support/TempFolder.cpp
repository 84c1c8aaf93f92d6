#include "tests/support/TempFolder.h"

#include "quorvane/base/Assert.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <tuple>
#include <vector>

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace quorvane {

namespace {

constexpr std::string_view leafPrefix = "quorvane-test-";

struct NamedEntry {
  std::string name;
  bool isFolder;
};

std::vector<NamedEntry> entriesOf(int folder) {
  std::vector<NamedEntry> entries;
  DIR* const stream = ::fdopendir(::openat(folder, ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  require(stream != nullptr, "a test's folder cannot be listed");
  while (const dirent* const entry = ::readdir(stream)) {  // NOLINT(concurrency-mt-unsafe): a stream of its own
    const std::string name = entry->d_name;
    if (name == "." || name == "..") continue;
    struct stat status {};
    const bool isKnown = ::fstatat(folder, name.c_str(), &status, AT_SYMLINK_NOFOLLOW) == 0;
    entries.push_back({name, isKnown && S_ISDIR(status.st_mode)});
  }
  ::closedir(stream);
  return entries;
}

/// Takes everything out of the folder `name`: files are removed, folders moved up to `top`, so that no depth needs more
/// than two descriptors. Then the folder goes too. One on another file system is left as it is.
void emptyIntoAndRemove(int top, const std::string& name, std::size_t& moved) {
  std::ignore = ::fchmodat(top, name.c_str(), S_IRWXU, 0);
  const FileDescriptor folder(::openat(top, name.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
  if (!folder.isOpen()) return;
  for (const NamedEntry& entry : entriesOf(folder.number())) {
    if (!entry.isFolder) {
      ::unlinkat(folder.number(), entry.name.c_str(), 0);
    } else {
      std::ignore = ::fchmodat(folder.number(), entry.name.c_str(), S_IRWXU, 0);
      const std::string unused = "removing-" + std::to_string(++moved);
      ::renameat(folder.number(), entry.name.c_str(), top, unused.c_str());
    }
  }
  ::unlinkat(top, name.c_str(), AT_REMOVEDIR);
}

void removeEverythingIn(int top) {
  std::size_t moved = 0, remaining = 0;
  for (std::vector<NamedEntry> entries = entriesOf(top); !entries.empty(); entries = entriesOf(top)) {
    const std::size_t before = moved;
    for (const NamedEntry& entry : entries) {
      if (entry.isFolder) {
        emptyIntoAndRemove(top, entry.name, moved);
      } else {
        ::unlinkat(top, entry.name.c_str(), 0);
      }
    }
    if (moved == before && entries.size() == remaining) return;  // something will not go
    remaining = entries.size();
  }
}

std::filesystem::path nativePath(const FilePath& path) { return path.bytes; }

}  // namespace

TempFolder::TempFolder() {
  const std::filesystem::path parent = std::filesystem::canonical(std::filesystem::temp_directory_path());
  std::string path = (parent / (std::string(leafPrefix) + "XXXXXX")).string();
  require(::mkdtemp(path.data()) != nullptr, "no temporary folder can be made");
  path_ = {path};
  folder_ = FileDescriptor(::open(path.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
  require(folder_.isOpen(), "a test's folder cannot be opened");
}

TempFolder::~TempFolder() {
  require(leafOf(path_).starts_with(leafPrefix), "a test's folder has lost its name");
  ::fchmod(folder_.number(), S_IRWXU);
  removeEverythingIn(folder_.number());
  ::rmdir(path_.bytes.c_str());
}

void TempFolder::write(std::string_view relative, std::string_view content) const {
  const std::filesystem::path path = nativePath(at(relative));
  std::filesystem::create_directories(path.parent_path());
  std::ofstream file(path, std::ios::binary);
  file << content;
  require(file.flush().good(), "a test's file cannot be written");
}

void TempFolder::makeFolders(std::string_view relative) const {
  std::filesystem::create_directories(nativePath(at(relative)));
}

void TempFolder::makeLink(std::string_view relative, const std::string& target) const {
  std::filesystem::create_symlink(target, nativePath(at(relative)));
}

std::string TempFolder::read(std::string_view relative) const {
  std::ifstream file(nativePath(at(relative)), std::ios::binary);
  require(file.good(), "a test's file cannot be read");
  return {std::istreambuf_iterator<char>(file), {}};
}

bool TempFolder::holds(std::string_view relative) const {
  return std::filesystem::exists(std::filesystem::symlink_status(nativePath(at(relative))));
}

std::vector<std::string> TempFolder::names(std::string_view relative) const {
  std::vector<std::string> names;
  std::error_code missing;
  for (const auto& entry : std::filesystem::directory_iterator(nativePath(at(relative)), missing))
    names.push_back(entry.path().filename().string());
  std::ranges::sort(names);
  return names;
}

}  // namespace quorvane
