// Makes the data that `./bench` measures: a tree as the caches of a home, the same one for the same numbers.
//
//   MakeData [--files N] [--seed N] HOME        makes HOME/.cache/tree, which must not exist
//
// A tenth as many folders as files: three flat ones with a twentieth of all files each, five chains sixty folders deep,
// the others grown at random. Of every hundred files one is a hard link to an earlier one and one a symbolic link. File
// lengths are mostly below a block and up to 128 KiB; nothing is written into the files, their blocks are only set
// aside. All modification times lie in 2021 and 2022.

#include "quorvane/platform/FileDescriptor.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <charconv>
#include <cstdint>
#include <optional>
#include <random>
#include <span>
#include <string>
#include <string_view>
#include <system_error>
#include <vector>

#include <fcntl.h>
#include <sys/stat.h>
#include <time.h>
#include <unistd.h>

using namespace quorvane;

namespace {

constexpr std::int64_t start2021 = 1'609'459'200;
constexpr std::int64_t twoYears = 730 * 86'400;
constexpr std::size_t flatFolders = 3;
constexpr std::size_t chains = 5;
constexpr std::size_t chainDepth = 60;
constexpr std::size_t grownFrom = 1 + flatFolders + chains * chainDepth;  // as many are not grown, the top among them

struct Failure {
  std::string path;
  int number = 0;  ///< an `errno` number
};

struct Request {
  std::uint64_t files = 60'000;
  std::uint64_t seed = 1;
  std::string home;
};

/// Makes the folders first and then the files, folder by folder, so that each folder is opened once.
class TreeMaker {
 public:
  TreeMaker(const Request& request, int top) : random_(request.seed), files_(request.files), top_(top) {}

  /// What could not be made, if anything; what had been made until then stays.
  std::optional<Failure> make() {
    placeFolders();
    const std::vector<std::uint64_t> counts = fileCounts();
    for (std::size_t folder = 0; folder < folders_.size() && !failure_; ++folder) fill(folder, counts[folder]);
    // Last, since making something in a folder changes its time; inner ones first for the same reason.
    for (std::size_t folder = folders_.size(); folder-- > 0 && !failure_;) {
      const std::array<timespec, 2> times = oldTimes();
      check(utimensat(top_, folders_[folder].c_str(), times.data(), 0), folders_[folder]);
    }
    return failure_;
  }

  std::size_t folderCount() const { return folders_.size(); }

 private:
  std::uint64_t below(std::uint64_t bound) { return random_() % bound; }

  /// Keeps the first failure of a system call.
  void check(int result, const std::string& path) {
    if (result != 0 && !failure_) failure_ = Failure{path, errno};
  }

  bool happens(unsigned percent) { return below(100) < percent; }

  void addFolder(std::size_t parent, const std::string& name) {
    folders_.push_back(parent == 0 ? name : folders_[parent] + '/' + name);
    check(mkdirat(top_, folders_.back().c_str(), 0755), folders_.back());
  }

  void placeFolders() {
    folders_.assign(1, ".");
    for (std::size_t flat = 0; flat < flatFolders; ++flat) addFolder(0, fmt::format("objects-{}", flat));
    for (std::size_t chain = 0; chain < chains; ++chain) {
      for (std::size_t depth = 0; depth < chainDepth; ++depth) {
        addFolder(depth == 0 ? 0 : folders_.size() - 1, fmt::format("layer-{}", depth == 0 ? chain : depth));
      }
    }
    const std::size_t wanted = std::max<std::size_t>(files_ / 10, grownFrom + 1);
    while (folders_.size() < wanted && !failure_) {
      const std::size_t known = folders_.size() - grownFrom;
      // One in eight stands at the top; the others in one of the grown folders.
      const std::size_t parent = known == 0 || below(8) == 0 ? 0 : grownFrom + below(known);
      addFolder(parent, name(folders_.size()) + ".d");
    }
  }

  /// How many files each folder gets: half of the other files go to a few busy folders, as in real caches.
  std::vector<std::uint64_t> fileCounts() {
    std::vector<std::uint64_t> counts(folders_.size());
    for (std::size_t flat = 1; flat <= flatFolders; ++flat) counts[flat] = files_ / 20;
    const std::uint64_t others = files_ - flatFolders * (files_ / 20);
    const std::size_t grown = folders_.size() - flatFolders - 1;
    for (std::uint64_t file = 0; file < others; ++file) {
      const std::size_t among = happens(50) ? grown / 10 + 1 : grown;
      ++counts[folders_.size() - 1 - below(among)];
    }
    return counts;
  }

  void fill(std::size_t folder, std::uint64_t count) {
    if (count == 0) return;
    const FileDescriptor opened(openat(top_, folders_[folder].c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (!opened.isOpen()) return check(-1, folders_[folder]);
    for (std::uint64_t file = 0; file < count && !failure_; ++file) {
      addEntry(opened.number(), folders_[folder], name(file));
    }
  }

  void addEntry(int folder, const std::string& path, const std::string& fileName) {
    const std::uint64_t kind = below(100);
    if (kind == 0 && !linkable_.empty()) {
      const std::string& earlier = linkable_[below(linkable_.size())];
      check(linkat(top_, earlier.c_str(), folder, fileName.c_str(), 0), fileName);
    } else if (kind == 1) {
      addSymbolicLink(folder, fileName);
    } else {
      addFile(folder, fileName);
      if (kind == 2) linkable_.push_back(path + '/' + fileName);
    }
  }

  void addSymbolicLink(int folder, const std::string& fileName) {
    constexpr std::array targets = {".", "..", "missing/file", "/usr/bin/env"};
    check(symlinkat(targets[below(targets.size())], folder, fileName.c_str()), fileName);
    const std::array<timespec, 2> times = oldTimes();
    check(utimensat(folder, fileName.c_str(), times.data(), AT_SYMLINK_NOFOLLOW), fileName);
  }

  void addFile(int folder, const std::string& fileName) {
    const FileDescriptor file(openat(folder, fileName.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0644));
    if (!file.isOpen()) return check(-1, fileName);
    const off_t length = static_cast<off_t>(fileLength());
    if (length > 0) {
      errno = posix_fallocate(file.number(), 0, length);
      check(errno == 0 ? 0 : -1, fileName);
    }
    const std::array<timespec, 2> times = oldTimes();
    check(futimens(file.number(), times.data()), fileName);
  }

  std::uint64_t fileLength() {
    const std::uint64_t kind = below(1000);
    if (kind < 100) return 0;
    if (kind < 900) return 1 + below(4096);
    return 1 + below(kind < 995 ? 32'768 : 131'072);
  }

  std::array<timespec, 2> oldTimes() {
    const auto seconds = start2021 + static_cast<std::int64_t>(below(twoYears));
    const timespec time{.tv_sec = static_cast<time_t>(seconds), .tv_nsec = static_cast<long>(below(1'000'000'000))};
    return {time, time};
  }

  /// 6 to 40 characters; the number keeps the names of one folder apart.
  std::string name(std::uint64_t number) {
    constexpr std::array endings = {"", "", ".js", ".json", ".o", ".h", ".png", ".pack", ".cache"};
    const int digits = static_cast<int>(2 + below(28));
    std::string letters;
    while (letters.size() < 32) letters += fmt::format("{:016x}", random_());
    return fmt::format("{}-{:x}{}", letters.substr(0, static_cast<std::size_t>(digits)), number + 0x100,
                       endings[below(endings.size())]);
  }

  std::mt19937_64 random_;
  std::uint64_t files_;
  int top_;
  std::vector<std::string> folders_;   // below the top, an outer one before those inside it
  std::vector<std::string> linkable_;  // files that may get a second name
  std::optional<Failure> failure_;
};

std::optional<std::uint64_t> number(std::string_view text) {
  std::uint64_t value = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  if (error != std::errc() || end != text.data() + text.size()) return std::nullopt;
  return value;
}

std::optional<Request> parse(std::span<char*> arguments) {
  Request request;
  while (arguments.size() > 1) {
    const std::string_view option = arguments[0];
    const std::optional<std::uint64_t> value = number(arguments[1]);
    if (!value || (option != "--files" && option != "--seed")) return std::nullopt;
    (option == "--files" ? request.files : request.seed) = *value;
    arguments = arguments.subspan(2);
  }
  if (arguments.empty() || arguments[0][0] == '-' || arguments[0][0] == '\0') return std::nullopt;
  request.home = arguments[0];
  return request;
}

int say(const Failure& failed) {
  fmt::print(stderr, "MakeData: {}: {}\n", failed.path, std::generic_category().message(failed.number));
  return 1;
}

}  // namespace

int main(int count, char** arguments) {
  const auto request = parse(std::span(arguments, static_cast<std::size_t>(count)).subspan(1));
  if (!request) {
    fmt::print(stderr, "usage: MakeData [--files N] [--seed N] HOME\n");
    return 2;
  }
  const std::string tree = request->home + "/.cache/tree";
  for (const std::string& folder : {request->home, request->home + "/.cache", tree}) {
    if (mkdir(folder.c_str(), 0755) == 0 || (folder != tree && errno == EEXIST)) continue;
    return say({folder, errno});
  }
  const FileDescriptor top(open(tree.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  if (!top.isOpen()) return say({tree, errno});
  TreeMaker maker(*request, top.number());
  if (const auto failed = maker.make()) return say({tree + "/" + failed->path, failed->number});
  fmt::print("{}: {} files and links in {} folders\n", tree, request->files, maker.folderCount());
  return 0;
}
