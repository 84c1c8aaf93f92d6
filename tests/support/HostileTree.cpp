#include "tests/support/HostileTree.h"

#include "quorvane/base/Assert.h"

#include <fmt/format.h>

#include <dirent.h>
#include <fcntl.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <sys/xattr.h>
#include <unistd.h>

namespace quorvane {

namespace {

void makeSocket(const std::string& path) {
  const FileDescriptor socket(::socket(AF_UNIX, SOCK_STREAM, 0));
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  path.copy(address.sun_path, sizeof address.sun_path - 1);
  const bool isMade = ::bind(socket.number(), reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0;
  require(isMade, "a test cannot make a socket");
}

std::string contentOf(int folder, const char* name, const struct stat& status) {
  std::string content(64 << 10, '\0');
  if (S_ISLNK(status.st_mode)) {
    const auto length = ::readlinkat(folder, name, content.data(), content.size());
    require(length >= 0, "a test's link cannot be read");
    content.resize(static_cast<std::size_t>(length));
  } else if (S_ISREG(status.st_mode)) {
    const FileDescriptor file(::openat(folder, name, O_RDONLY | O_NOFOLLOW | O_CLOEXEC));
    const auto length = ::read(file.number(), content.data(), content.size());
    require(length >= 0, "a test's file cannot be read");
    content.resize(static_cast<std::size_t>(length));
  } else {
    content.clear();
  }
  return content;
}

/// The extended attributes of an object that is no link, as far as the file system has some.
std::string attributesOf(int folder, const char* name) {
  const std::string path = folder == AT_FDCWD ? name : fmt::format("/proc/self/fd/{}/{}", folder, name);
  std::string names(4096, '\0');
  const auto length = ::llistxattr(path.c_str(), names.data(), names.size());
  if (length <= 0) return {};
  names.resize(static_cast<std::size_t>(length));
  std::string told;
  for (std::size_t at = 0; at < names.size(); at = names.find('\0', at) + 1) {
    std::string value(4096, '\0');
    const auto size = ::lgetxattr(path.c_str(), names.c_str() + at, value.data(), value.size());
    value.resize(size > 0 ? static_cast<std::size_t>(size) : 0);
    told += fmt::format("[{}={}]", names.c_str() + at, value);
  }
  return told;
}

void list(int folder, const char* name, const std::string& path, TreeListing& listing) {
  struct stat status {};
  require(::fstatat(folder, name, &status, AT_SYMLINK_NOFOLLOW) == 0, "a test's entry cannot be looked at");
  listing[path] = fmt::format("{:o} {}:{} {}x{} {} {}.{:09} {}{}", status.st_mode, status.st_uid, status.st_gid,
                              status.st_ino, status.st_nlink, status.st_size, status.st_mtim.tv_sec,
                              status.st_mtim.tv_nsec, attributesOf(folder, name), contentOf(folder, name, status));
  if (!S_ISDIR(status.st_mode)) return;
  DIR* const stream = ::fdopendir(::openat(folder, name, O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
  require(stream != nullptr, "a test's folder cannot be listed");
  while (const dirent* const entry = ::readdir(stream)) {  // NOLINT(concurrency-mt-unsafe): a stream of its own
    const std::string child = entry->d_name;
    if (child != "." && child != "..")
      list(::dirfd(stream), child.c_str(), path.empty() ? child : path + '/' + child, listing);
  }
  ::closedir(stream);
}

}  // namespace

void makeHostileTree(const TempFolder& folder, const std::string& root) {
  const auto in = [&](const std::string& name) { return root + '/' + name; };
  const auto at = [&](const std::string& name) { return folder.at(in(name)).bytes; };
  folder.write(in("plain"), std::string(10'000, 'x'));
  folder.write(in(std::string(255, 'n')), "long name");
  folder.write(in("line\nbreak\x1b[31m/\xff\xfe"), "not UTF-8");
  folder.write("outside/big", std::string(1 << 20, 'o'));
  folder.makeLink(in("to folder"), "../outside");
  folder.makeLink(in("dangling"), "nowhere");
  folder.makeLink(in("circle"), ".");
  folder.makeLink(in("self"), "self");
  folder.write(in("sub/linked"), std::string(50'000, 'h'));
  for (const char* name : {"second name", "sub/third name"})
    require(::link(at("sub/linked").c_str(), at(name).c_str()) == 0, "a test cannot make a hard link");
  require(::mkfifo(at("pipe").c_str(), 0600) == 0, "a test cannot make a pipe");
  makeSocket(at("socket"));
  folder.write(in("sparse"), "x");
  require(::truncate(at("sparse").c_str(), off_t{1} << 40) == 0, "a test cannot make a sparse file");
}

void makeDeepTree(const TempFolder& folder, const std::string& root, int depth) {
  folder.makeFolders(root);
  FileDescriptor at(::open(folder.at(root).bytes.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  for (int i = 0; i < depth; ++i) {
    require(::mkdirat(at.number(), "down", 0700) == 0, "a test cannot make a folder");
    if (i % 64 == 0) require(::mkdirat(at.number(), "aside", 0700) == 0, "a test cannot make a folder");
    at = FileDescriptor(::openat(at.number(), "down", O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  }
}

TreeListing listingOf(const FilePath& root) {
  TreeListing listing;
  list(AT_FDCWD, root.bytes.c_str(), "", listing);
  return listing;
}

}  // namespace quorvane
