// Cycles of removing and putting back in homes of random objects, by a program that is killed and interrupted at random
// moments. More of them by hand: QUORVANE_SOAK_CYCLES=10000, and with QUORVANE_SOAK_SEED=N those from that seed on.

#include "quorvane/platform/linux/TrashInfo.h"
#include "quorvane/removal/HistoryDocument.h"
#include "tests/cli/StartedProgram.h"
#include "tests/support/HostileTree.h"
#include "tests/support/RandomTree.h"

#include <fmt/format.h>
#include <gmock/gmock.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <map>
#include <optional>
#include <random>
#include <set>
#include <thread>

#include <sys/stat.h>

namespace quorvane {
namespace {

using namespace std::chrono_literals;
using std::chrono::steady_clock;
using testing::AnyOf;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::IsSubsetOf;
using testing::Not;

const std::string trashFolder = "home/.local/share/Trash";
const std::string dataFolder = "home/.local/share/Quorvane";
const std::string errorFile = "errors";
constexpr const char* cacheTag = "Signature: 8a477f597d28d172789f06886806bc55\n";

/// How the runs of all cycles ended, and how long those take that nobody disturbs.
struct Tally {
  std::map<std::string, steady_clock::duration> usual = {};
  std::map<std::string, int> endings = {};
  int moved = 0;
};

/// One home, in which cycles follow each other.
class SoakedHome {
 public:
  explicit SoakedHome(Tally& tally) : tally_(tally) { folder_.makeFolders("home/.local/share"); }

  /// Makes objects, removes some of them and puts some back, by runs that may be killed. Then all are put back, and the
  /// home is as before.
  void cycle(Chance chance) {
    chance_ = chance;
    folder_.write(errorFile, "");
    makeRound();
    const TreeListing before = listing();
    remove();
    for (std::size_t count = chance_.below(4); count > 0; --count) act();
    EXPECT_EQ(run({"history"}, Signals::none), 0);
    expectTrueRecords();
    if (chance_.percent(15)) standInTheWay();
    putAllBack();
    setTimesBack();
    expectSame(before, listing());
    EXPECT_THAT(folder_.read(errorFile), Not(AnyOf(HasSubstr("Sanitizer"), HasSubstr("runtime error"))));
    for (const char* made : {"home/round", "home/.cache"}) std::filesystem::remove_all(folder_.at(made).bytes);
  }

  std::string errors() const { return folder_.read(errorFile); }

 private:
  enum class Signals { none, byChance };

  std::string at(const std::string& object) const { return folder_.at("home/" + object).bytes; }
  bool isThere(const std::string& object) const { return folder_.holds("home/" + object); }
  std::vector<std::string> trashed() const { return folder_.names(trashFolder + "/files"); }
  std::vector<std::string> notes() const { return folder_.names(trashFolder + "/info"); }

  void makeRound() {
    RandomTree tree(folder_, chance_);
    const bool isLarge = chance_.percent(4);
    for (std::size_t count = 1 + chance_.below(2); count > 0; --count)
      tree.fill("home/round/" + std::to_string(count), isLarge ? 100 : 1 + chance_.below(7));
    for (std::size_t count = chance_.below(4); count > 0; --count) {
      const std::string cache = "home/.cache/cache" + std::to_string(count);
      tree.fill(cache, chance_.below(5));
      folder_.write(cache + "/CACHEDIR.TAG", cacheTag);
      tree.dress(cache + "/CACHEDIR.TAG");
      tree.dress(cache);
    }
    objects_.clear();
    folderTimes_.clear();
    for (const auto& [object, told] : listing()) {
      struct stat status {};
      ASSERT_EQ(::lstat(at(object).c_str(), &status), 0);
      if (S_ISDIR(status.st_mode)) folderTimes_.emplace(object, status.st_mtim);
      if (object.contains('/')) objects_.push_back(object);
    }
  }

  /// The home without what the program keeps there for itself.
  TreeListing listing() const {
    TreeListing all = listingOf(folder_.at("home"));
    std::erase_if(all, [](const auto& each) { return each.first.empty() || each.first.starts_with(".local"); });
    return all;
  }

  void remove() {
    if (chance_.percent(30)) {
      run({"clean", "--yes"});
      return;
    }
    std::vector<std::string> chosen;
    if (chance_.percent(5)) chosen = objects_;
    for (std::size_t count = 1 + chance_.below(6); count > 0; --count) chosen.push_back(chance_.of(objects_));
    std::vector<std::string> arguments{"trash", "--yes"};
    for (const std::string& object : chosen) arguments.push_back(at(object));
    if (run(arguments) != 0) return;
    for (const std::string& object : chosen) EXPECT_FALSE(isThere(object)) << object << " was said to be removed";
  }

  void act() {
    switch (chance_.below(6)) {
      case 0: run({"undo"}); break;
      case 1: run({"restore", "--all"}); break;
      case 2: run({"restore", "--last", "--on-conflict", "keep-both"}); break;
      case 3: run({"history"}); break;
      default: remove(); break;
    }
  }

  /// What was made at the place of a removed object is left as it is.
  void standInTheWay() {
    std::vector<std::string> gone;
    std::ranges::copy_if(objects_, std::back_inserter(gone), [&](const std::string& object) {
      return !isThere(object) && isThere(parentOf({object}).bytes);
    });
    if (gone.empty()) return;
    const std::string object = "home/" + chance_.of(gone);
    folder_.write(object, "made meanwhile");
    run({"restore", "--all"});
    EXPECT_EQ(folder_.read(object), "made meanwhile");
    EXPECT_EQ(::unlink(folder_.at(object).bytes.c_str()), 0);
  }

  void putAllBack() {
    const int ended = run({"restore", "--all"}, Signals::none);
    EXPECT_THAT(ended, AnyOf(0, 2));
    expectTrueRecords();
    EXPECT_THAT(trashed(), IsEmpty());
    EXPECT_THAT(notes(), IsEmpty());
    EXPECT_THAT(folder_.names(trashFolder), IsSubsetOf({"files", "info", "directorysizes"}));
    if (folder_.holds(trashFolder + "/directorysizes")) {
      EXPECT_EQ(folder_.read(trashFolder + "/directorysizes"), "");
    }
    // A run that does not take the lock leaves to the next one what a killed one left.
    if (ended == 0) {
      EXPECT_THAT(folder_.names(dataFolder), IsSubsetOf({"history.json", "history.json.lock"}));
    }
  }

  /// Of each object in the Trash the history says whose it is, and of nothing else; and nothing is under way.
  void expectTrueRecords() {
    if (!folder_.holds(dataFolder + "/history.json")) return;
    const auto history = HistoryDocument::decode(folder_.read(dataFolder + "/history.json"));
    ASSERT_TRUE(history.has_value());
    std::vector<std::string> items, notesOfItems;
    for (const CleaningHistoryEntry& entry : history->entries()) {
      ASSERT_EQ(entry.items.size(), 1u);
      const CleaningHistoryItem& item = entry.items.front();
      expectTrue(entry, item);
      if (!isRestorable(item)) continue;
      items.emplace_back(leafOf(*item.trashedPath));
      notesOfItems.push_back(items.back() + std::string(trashInfoSuffix));
    }
    EXPECT_THAT(trashed(), testing::UnorderedElementsAreArray(items));
    EXPECT_THAT(notes(), testing::UnorderedElementsAreArray(notesOfItems));
  }

  void expectTrue(const CleaningHistoryEntry& entry, const CleaningHistoryItem& item) {
    SCOPED_TRACE(jsonText(entry));
    const bool isMoved = item.outcome == CleaningHistoryItemOutcome::movedToTrash;
    EXPECT_FALSE(isPending(item));
    EXPECT_EQ(entry.itemCount, isMoved ? 1 : 0);
    EXPECT_EQ(entry.failures.size(), isMoved ? 0u : 1u);
    EXPECT_EQ(item.trashedPath.has_value(), isMoved);
    EXPECT_EQ(item.failureReason.has_value(), !isMoved);
    EXPECT_EQ(item.restoredPath.value_or(item.originalPath), item.originalPath);
    if (!isRestorable(item)) return;
    struct stat status {};
    EXPECT_EQ(::lstat(item.trashedPath->bytes.c_str(), &status), 0);
    EXPECT_EQ(item.trashIdentity.value_or(FileIdentity{}).inode, status.st_ino);
    const std::string leaf(leafOf(*item.trashedPath));
    const auto note = trashInfoFromText(folder_.read(trashFolder + "/info/" + leaf + std::string(trashInfoSuffix)));
    EXPECT_TRUE(note && note->path == item.originalPath.bytes);
    ++tally_.moved;
  }

  /// Items leave their folders and come back to them, which is the only change of those.
  void setTimesBack() const {
    for (const auto& [object, time] : folderTimes_) {
      const std::array<timespec, 2> times{time, time};
      EXPECT_EQ(::utimensat(AT_FDCWD, at(object).c_str(), times.data(), AT_SYMLINK_NOFOLLOW), 0) << object;
    }
  }

  static void expectSame(const TreeListing& before, const TreeListing& after) {
    for (const auto& [object, told] : before) {
      const auto now = after.find(object);
      EXPECT_EQ(now == after.end() ? "gone" : now->second.substr(0, 300), told.substr(0, 300)) << object;
    }
    EXPECT_EQ(after.size(), before.size());
    EXPECT_TRUE(after == before);
  }

  /// Runs the program, which may be sent a signal or two after any part of its usual time, and looked at meanwhile.
  int run(std::vector<std::string> arguments, Signals signals = Signals::byChance) {
    const std::string command = arguments.front();
    const int signal = signals == Signals::byChance ? chance_.of<int>({0, 0, SIGKILL, SIGKILL, SIGINT, SIGTERM}) : 0;
    const bool isTwice = chance_.percent(20);
    std::optional<StartedProgram> onlooker;
    if (signals == Signals::byChance && chance_.percent(8)) onlooker.emplace(start({"history"}));
    const auto begin = steady_clock::now();
    const StartedProgram program = start(std::move(arguments));
    if (signal != 0) {
      waitForAMoment(command);
      program.send(signal);
      if (isTwice) program.send(signal);
    }
    const int ended = program.wait();
    auto& usual = tally_.usual[command];
    if (signal == 0) usual += (steady_clock::now() - begin - usual) / 4;
    ++tally_.endings[fmt::format("{} signal {}: {}", command, signal, ended)];
    if (onlooker) {
      EXPECT_EQ(onlooker->wait(), 0);
    }
    if (signal == 0) {
      EXPECT_THAT(ended, AnyOf(0, 1, 2, 3)) << command;
    } else {
      EXPECT_THAT(ended, AnyOf(0, 1, 2, 3, 128 + signal, 1000 + signal)) << command;
    }
    return ended;
  }

  /// Any moment of a run; in half of the cases one soon after it wrote to the history.
  void waitForAMoment(const std::string& command) {
    const steady_clock::duration usual = tally_.usual[command];
    const auto part = static_cast<int>(chance_.below(1000));
    if (chance_.percent(50)) {
      std::this_thread::sleep_for(usual * part / 800);
      return;
    }
    const auto before = historyFile();
    const auto latest = steady_clock::now() + usual;
    while (historyFile() == before && steady_clock::now() < latest) std::this_thread::sleep_for(20us);
    std::this_thread::sleep_for(usual * part / 4000);
  }

  /// Another number for each content.
  ino_t historyFile() const {
    struct stat status {};
    return ::stat(folder_.at(dataFolder + "/history.json").bytes.c_str(), &status) == 0 ? status.st_ino : 0;
  }

  StartedProgram start(std::vector<std::string> arguments) const {
    arguments.insert(arguments.end(), {"--home", folder_.at("home").bytes});
    return StartedProgram(std::move(arguments), folder_.at(errorFile).bytes);
  }

  Tally& tally_;
  TempFolder folder_;
  Chance chance_{0};
  std::vector<std::string> objects_;  ///< of this cycle, below the home
  std::map<std::string, timespec> folderTimes_;
};

std::uint64_t numberFrom(const char* variable, std::uint64_t otherwise) {
  const char* const given = std::getenv(variable);  // NOLINT(concurrency-mt-unsafe): nobody changes the environment
  return given == nullptr ? otherwise : std::strtoull(given, nullptr, 10);
}

TEST(SoakTests, everythingComesBackWhateverEndsTheRuns) {
  const std::uint64_t first = numberFrom("QUORVANE_SOAK_SEED", std::random_device()());
  const std::uint64_t end = first + numberFrom("QUORVANE_SOAK_CYCLES", 40);
  constexpr std::uint64_t cyclesOfHome = 100;
  std::cout << "seeds from " << first << " on" << std::endl;
  Tally tally;
  std::optional<SoakedHome> home;
  for (std::uint64_t seed = first; seed < end && !testing::Test::HasFailure(); ++seed) {
    SCOPED_TRACE(fmt::format("QUORVANE_SOAK_SEED={}", seed));
    if (!home || seed % cyclesOfHome == 0) home.emplace(tally);
    if ((seed - first) % 1000 == 999) std::cout << seed - first << " cycles" << std::endl;
    home->cycle(Chance(seed));
    if (testing::Test::HasFailure()) std::cout << "seed " << seed << '\n' << home->errors() << std::endl;
  }
  EXPECT_GE(tally.moved, static_cast<int>(end - first) / 4) << "objects that were seen in the Trash";
  for (const auto& [ending, count] : tally.endings) std::cout << count << " x " << ending << '\n';
}

}  // namespace
}  // namespace quorvane
