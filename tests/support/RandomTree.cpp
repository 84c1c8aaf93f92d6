#include "tests/support/RandomTree.h"

#include "quorvane/base/Assert.h"

#include <array>
#include <ctime>
#include <tuple>

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

namespace quorvane {

namespace {

constexpr int deepest = 4;
constexpr std::size_t longestName = 255;

constexpr std::size_t longestPath = 3500;  // the system takes no longer ones than 4096

std::string bytesOfChance(Chance& chance, std::size_t length) {
  std::string bytes;
  while (bytes.size() < length) {
    const char byte = static_cast<char>(1 + chance.below(255));
    if (byte != '/') bytes += byte;
  }
  return bytes;
}

std::string randomName(Chance& chance) {
  static const std::vector<std::string> odd{"-rf",       "~",         "*",        " ",           "a b.trashinfo",
                                            "%2e%2e",    "...",       "x.tar.gz", ".hidden",     "directorysizes",
                                            "new\nline", "Grüße.txt", "\xff\xfe", "\x1b[31mred", "same"};
  switch (chance.below(8)) {
    case 0: return chance.of(odd);
    case 1: return bytesOfChance(chance, 1 + chance.below(40));
    case 2: return bytesOfChance(chance, longestName - chance.below(12));
    default: return "n" + std::to_string(chance.below(1000)) + (chance.percent(50) ? ".log" : "");
  }
}

}  // namespace

std::vector<std::string> RandomTree::fill(const std::string& parent, std::size_t count) {
  folder_.makeFolders(parent);
  std::vector<std::string> made;
  for (std::size_t i = 0; i < count; ++i) made.push_back(makeOne(parent, 0));
  return made;
}

std::string RandomTree::freeName(const std::string& parent) {
  while (true) {
    const std::string name = randomName(chance_);
    if (isOneComponent(name) && !folder_.holds(parent + '/' + name)) return name;
  }
}

std::string RandomTree::makeOne(const std::string& parent, int depth) {
  std::string relative = parent + '/' + freeName(parent);
  makeContent(relative, depth);
  dress(relative);
  return relative;
}

void RandomTree::makeContent(const std::string& relative, int depth) {
  const std::string path = folder_.at(relative).bytes;
  const std::size_t kind = chance_.below(100);
  if (kind < 30 && depth < deepest && path.size() < longestPath - longestName) {
    folder_.makeFolders(relative);
    for (std::size_t count = chance_.below(7); count > 0; --count) makeOne(relative, depth + 1);
  } else if (kind < 40) {
    makeLink(relative);
  } else if (kind < 48 && !files_.empty()) {
    require(::link(folder_.at(chance_.of(files_)).bytes.c_str(), path.c_str()) == 0, "a test cannot make a hard link");
  } else if (kind < 51) {
    require(::mkfifo(path.c_str(), 0600) == 0, "a test cannot make a pipe");
  } else {
    makeFile(relative);
  }
}

void RandomTree::makeFile(const std::string& relative) {
  constexpr std::array<std::size_t, 5> sizes{0, 1, 200, 5'000, 70'000};
  folder_.write(relative, std::string(sizes[chance_.below(sizes.size())], static_cast<char>('a' + chance_.below(26))));
  if (chance_.percent(10))
    require(
        ::truncate(folder_.at(relative).bytes.c_str(), static_cast<off_t>(chance_.below(std::size_t{1} << 36))) == 0,
        "a test cannot make a sparse file");
  files_.push_back(relative);
}

void RandomTree::makeLink(const std::string& relative) {
  static const std::vector<std::string> targets{".", "..", "nowhere", "/", "/etc/passwd", "../..", "a\nb\xff"};
  folder_.makeLink(relative,
                   files_.empty() || chance_.percent(50) ? chance_.of(targets) : folder_.at(chance_.of(files_)).bytes);
}

void RandomTree::dress(const std::string& relative) {
  const std::string path = folder_.at(relative).bytes;
  struct stat status {};
  require(::lstat(path.c_str(), &status) == 0, "a test's object is gone");
  const bool isLink = S_ISLNK(status.st_mode);
  if (!isLink && chance_.percent(15)) {
    const std::string value = bytesOfChance(chance_, chance_.below(100));
    // Where the file system knows no attributes, there are none.
    std::ignore = ::setxattr(path.c_str(), "user.quorvane.test", value.data(), value.size(), 0);
  }
  static const std::vector<mode_t> modes{0600, 0644, 0755, 0777, 0400, 0000, 04755, 02770, 01777};
  const mode_t needed = ::geteuid() == 0 ? 0 : S_ISDIR(status.st_mode) ? S_IRWXU : S_IRUSR;
  if (!isLink && chance_.percent(40))
    require(::chmod(path.c_str(), chance_.of(modes) | needed) == 0, "a test cannot set permissions");
  constexpr std::time_t day = 86'400;
  const std::time_t written = std::time(nullptr) - 30 * day - static_cast<std::time_t>(chance_.below(3'000 * day));
  const auto part = static_cast<long>(chance_.below(1'000'000'000));
  const std::array<timespec, 2> times{timespec{written, part}, timespec{written, part}};
  require(::utimensat(AT_FDCWD, path.c_str(), times.data(), AT_SYMLINK_NOFOLLOW) == 0, "a test cannot set times");
}

}  // namespace quorvane
