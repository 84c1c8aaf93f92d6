#include "quorvane/removal/HistoryJson.h"
#include "quorvane/removal/OpenHistory.h"
#include "tests/support/Chance.h"
#include "tests/support/RemovalHome.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <functional>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

namespace quorvane {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

CleaningHistoryEntry entryNamed(RandomSource& random, std::string name) {
  CleaningHistoryEntry entry;
  entry.id = random.uuid();
  entry.date = dateFromTimestamp(1'795'250'000, 0);
  CleaningHistoryItem item;
  item.id = entry.id;
  item.name = std::move(name);
  item.originalPath = FilePath{"/home/ada/\xff\"]},["};
  entry.items = {item};
  return entry;
}

std::vector<std::string> namesIn(const HistoryDocument& document) {
  std::vector<std::string> names;
  for (const CleaningHistoryEntry& entry : document.entries()) names.push_back(entry.items.front().name);
  return names;
}

std::string textOf(const HistoryDocument& document) {
  std::string text;
  for (const std::string_view piece : document.pieces()) text += piece;
  return text;
}

class HistoryFileTests : public testing::Test {
 protected:
  Outcome<std::shared_ptr<OpenHistory>, RecoveryStoreError> open() {
    return OpenHistory::open(home_.files(), home_.random(), home_.historyFile(), cache_);
  }

  void writeEntries(const std::vector<std::string>& names) {
    const auto history = open().value();
    for (const std::string& name : names) ASSERT_TRUE(history->write({.inserted = {entryNamed(home_.random(), name)}}));
  }

  RemovalHome home_;
  HistoryCache cache_;
};

TEST_F(HistoryFileTests, keepsEveryMemberOfARecord) {
  const FileIdentity identity{-3, 1ULL << 63, 040000, -1, 999'999'999};
  const CleanupDirectoryAnchor anchor{{"/t"}, identity, -5, 6, "6F9619FF-8B86-4011-B42D-00C04FC964FF", 4'294'967'295};
  CleaningHistoryEntry entry = entryNamed(home_.random(), "every member");
  entry.observedAvailableBytesDelta = -7;
  entry.uninstallContext = UninstallHistoryContext{"Editor", identity};
  CleaningHistoryItem& item = entry.items.front();
  item.trashedPath = {"/t/x\xfe"};
  item.trashIdentity = identity;
  item.trashLocation = anchor;
  item.restoredPath = item.pendingRestorePath = {"/home/ada/y"};
  item.restoredAt = item.restoreAttemptedAt = entry.date;
  item.cleanupJournalUnavailable = true;
  item.failureReason = "why";
  item.failureCategory = CleanupFailureCategory::protected_;
  item.restoreFailure = RecoveryFailure::parentMissing;
  for (const AdministratorMoveTerminalState& state : std::initializer_list<AdministratorMoveTerminalState>{
           administratorMove::Finished{255}, administratorMove::Cancelled{}, administratorMove::NotStarted{}}) {
    item.pendingCleanup = CleanupMoveIntent{identity, {"/t"}, anchor, true, state};
    EXPECT_EQ(cleaningHistoryEntryFromJson(jsonText(entry)).value(), entry);
    EXPECT_EQ(jsonText(entry), printedJson(toJson(entry)));
  }
  EXPECT_THAT(jsonText(entry), HasSubstr("\"failureCategory\": \"protected\""));
  EXPECT_THAT(jsonText(entry), HasSubstr("\"notStarted\": {}"));
  item.pendingCleanup->externalMoveTerminalState = administratorMove::Finished{75};
  EXPECT_THAT(jsonText(entry), HasSubstr("\"_0\": 75"));
}

TEST_F(HistoryFileTests, keepsWhatIsNoFileAndRefusesItInTheTrash) {
  CleaningHistoryEntry entry = entryNamed(home_.random(), "a volume");
  CleaningHistoryItem& item = entry.items.front();
  item.originalPath = FilePath{"docker://volumes/data"};
  item.outcome = CleaningHistoryItemOutcome::removed;
  item.pendingIrreversible = IrreversibleRemovalIntent{entry.date, {"docker", "volume", "rm", "data"}};
  const DockerCleanupScope scope{"default", "unix:///run/engine.sock", "ID"};
  const DockerCleanupTarget target{"data", "data", "docker://volumes/data", 5};
  item.dockerTarget = DockerRetryTarget{DockerResourceKind::volumes, scope, target, {"a:1"}, "made then"};
  item.dockerOperation = DockerCleanupOperation{DockerBulkKind::buildCache, scope, {target}};
  const std::string text = jsonText(entry);
  EXPECT_EQ(cleaningHistoryEntryFromJson(text).value(), entry);
  EXPECT_EQ(text, printedJson(toJson(entry)));
  const auto isTaken = [&text](std::string_view from, std::string_view to) {
    std::string changed = text;
    changed.replace(changed.find(from), from.size(), to);
    return cleaningHistoryEntryFromJson(changed).has_value();
  };
  EXPECT_FALSE(isTaken("\"outcome\": \"removed\"", "\"outcome\": \"movedToTrash\""));
  EXPECT_FALSE(isTaken("\"outcome\": \"removed\"", "\"outcome\": \"failed\", \"trashedPath\": \"/x\""));
  EXPECT_FALSE(isTaken("\"originalPath\": \"docker://volumes/data\"", "\"originalPath\": \"docker://a\\u001bb\""));
  EXPECT_FALSE(isTaken("\"originalPath\": \"docker://volumes/data\"", "\"originalPath\": \"relative\""));
  EXPECT_FALSE(isTaken("\"resource\": 2", "\"resource\": 4"));
  EXPECT_FALSE(isTaken("\"createdAt\": \"made then\",", "\"createdAt\": 5,"));
  EXPECT_TRUE(isTaken("\"createdAt\": \"made then\",", "")) << "as it was written in former days";
}

TEST_F(HistoryFileTests, refusesTerminalStatesOfAnotherForm) {
  CleaningHistoryEntry entry = entryNamed(home_.random(), "x");
  entry.items.front().pendingCleanup = CleanupMoveIntent{{}, {"/t"}, {}, {}, administratorMove::NotStarted{}};
  const std::string text = jsonText(entry);
  const std::string state = "\"notStarted\": {}";
  for (const char* wrong : {"\"finished\": {}", "\"finished\": {\"_0\": 256}", "\"finished\": {\"_0\": -1}",
                            "\"done\": {}", "\"cancelled\": 1", "\"cancelled\": {}, \"notStarted\": {}"}) {
    std::string changed = text;
    changed.replace(changed.find(state), state.size(), wrong);
    EXPECT_FALSE(cleaningHistoryEntryFromJson(changed)) << wrong;
  }
}

TEST_F(HistoryFileTests, whatIsWrittenIsReadBackByANewProcess) {
  writeEntries({"first", "second \"quoted\" \\ ]"});
  cache_ = {};
  const auto history = open().value();
  EXPECT_THAT(namesIn(history->document()), ElementsAre("second \"quoted\" \\ ]", "first"));
  EXPECT_EQ(home_.folder().read("data/Quorvane/history.json"), textOf(history->document()));
  EXPECT_EQ(HistoryDocument::decode(textOf(history->document()))->entries(), history->document().entries());
}

TEST_F(HistoryFileTests, isTheSameTextAsThatOfAllEntriesAtOnce) {
  writeEntries({"one", "two", "three"});
  const auto history = open().value();
  const auto& entries = history->document().entries();
  EXPECT_EQ(textOf(history->document()), jsonText(std::vector(entries.begin(), entries.end())));
  EXPECT_EQ(textOf(HistoryDocument()), jsonText(std::vector<CleaningHistoryEntry>()));
}

TEST(HistoryDocumentTests, findsEachEntryWhateverCameAndWent) {
  SystemRandomSource random;
  Chance chance(7);
  HistoryDocument document;
  std::vector<CleaningHistoryEntry> expected, gone;  // the newest first
  for (int step = 0; step < 300; ++step) {
    const std::string name = "of step " + std::to_string(step);
    if (expected.empty() || chance.percent(50)) {
      std::vector<CleaningHistoryEntry> made = {entryNamed(random, name), entryNamed(random, name + " too")};
      made.back().items.front().id = random.uuid();  // an item with an identifier of its own
      expected.insert(expected.begin(), made.begin(), made.end());
      document.insertFront(std::move(made));
      continue;
    }
    const auto one = expected.begin() + static_cast<std::ptrdiff_t>(chance.below(expected.size()));
    if (chance.percent(60)) {
      document.erase(one->id);
      gone.push_back(*one);
      expected.erase(one);
    } else {
      one->items.front().name = name;
      document.replace(*one);
    }
    for (const CleaningHistoryEntry& entry : expected) {
      const CleaningHistoryEntry* const found = document.find(entry.items.front().id);
      ASSERT_TRUE(found != nullptr && *found == entry && document.find(entry.id) == found) << name;
      ASSERT_EQ(document.holdsEntry(entry.items.front().id), entry.items.front().id == entry.id);
    }
    for (const CleaningHistoryEntry& entry : gone)
      ASSERT_FALSE(document.knows(entry.id) || document.knows(entry.items.front().id)) << name;
  }
  EXPECT_GT(gone.size(), 50U);
  EXPECT_EQ(textOf(document), jsonText(expected));
}

TEST_F(HistoryFileTests, changesNoEntryByTheIdentifierOfAnItemInIt) {
  CleaningHistoryEntry entry = entryNamed(home_.random(), "of two"), receipt = entryNamed(home_.random(), "a receipt");
  entry.items.push_back(receipt.items.front());
  const auto history = open().value();
  ASSERT_TRUE(history->write({.inserted = {entry}}));
  for (OpenHistory::Change change : {OpenHistory::Change{.replaced = {receipt}}, {.erased = {receipt.id}}}) {
    const auto written = history->write(std::move(change));
    ASSERT_FALSE(written);
    EXPECT_EQ(written.error().fault, RecoveryStoreFault::untrusted);
  }
  EXPECT_THAT(namesIn(history->document()), ElementsAre("of two"));
}

TEST_F(HistoryFileTests, readsAnyLayoutOfTheSameArray) {
  const std::string one = jsonText(entryNamed(home_.random(), "1")), two = jsonText(entryNamed(home_.random(), "2"));
  for (const std::string& text : {"[" + one + "," + two + "]", " \n[ " + one + " ,\t" + two + "\r]\n\n"})
    EXPECT_THAT(namesIn(HistoryDocument::decode(text).value()), ElementsAre("1", "2"));
  for (const char* text : {"[]", " [ ] "}) EXPECT_THAT(HistoryDocument::decode(text)->entries(), IsEmpty());
}

TEST_F(HistoryFileTests, refusesWhatIsNoArrayOfEntries) {
  const std::string entry = jsonText(entryNamed(home_.random(), "x"));
  for (const std::string& text :
       {std::string(),       std::string("{}"),         std::string("["),          std::string("]"),
        std::string("[,]"),  std::string("[1]"),        std::string("[null]"),     std::string("[{}]"),
        "[" + entry,         "[" + entry + ",]",        "[," + entry + "]",        "[" + entry + "]]",
        "[" + entry + "] x", "[" + entry + entry + "]", "[[" + entry + "]]",       "[" + entry + "}",
        "[\"" + entry + "]", std::string("[\"\\"),      std::string(100'000, '['), std::string("\xEF\xBB\xBF[]")})
    EXPECT_FALSE(HistoryDocument::decode(text)) << text.substr(0, 40);
  for (std::size_t length = 1; length < entry.size() - 1; ++length)
    EXPECT_FALSE(HistoryDocument::decode("[" + entry.substr(0, length) + "]")) << length;
}

TEST_F(HistoryFileTests, isHeldByOneAtATime) {
  const auto first = open().value();
  HistoryCache other;
  const auto second = OpenHistory::open(home_.files(), home_.random(), home_.historyFile(), other);
  ASSERT_FALSE(second);
  EXPECT_EQ(second.error().fault, RecoveryStoreFault::busy);
}

/// Everything that makes the folder, the lock or the file one that somebody else could have made.
TEST_F(HistoryFileTests, doesNotTouchWhatCannotBeTrusted) {
  const auto path = [&](std::string_view name) { return home_.at("data/Quorvane/" + std::string(name)).bytes; };
  const std::string history = path("history.json"), lock = path("history.json.lock"), folder = path("");
  struct Case {
    const char* name;
    RecoveryStoreFault fault;
    std::function<void()> spoil;
  };
  const Case cases[] = {
      {"folder writable by others", RecoveryStoreFault::untrustedFolder, [&] { ::chmod(folder.c_str(), 0777); }},
      {"lock not empty", RecoveryStoreFault::untrustedLock, [&] { std::ofstream(lock) << "x"; }},
      {"lock writable by group", RecoveryStoreFault::untrustedLock, [&] { ::chmod(lock.c_str(), 0620); }},
      {"lock with two names", RecoveryStoreFault::untrustedLock,
       [&] { std::filesystem::create_hard_link(lock, path("l")); }},
      {"lock a link", RecoveryStoreFault::untrustedLock,
       [&] {
         ::unlink(lock.c_str());
         std::filesystem::create_symlink("other", lock);
       }},
      {"lock a pipe", RecoveryStoreFault::untrustedLock,
       [&] {
         ::unlink(lock.c_str());
         ::mkfifo(lock.c_str(), 0600);
       }},
      {"history writable by others", RecoveryStoreFault::untrusted, [&] { ::chmod(history.c_str(), 0602); }},
      {"history a link", RecoveryStoreFault::untrusted,
       [&] {
         ::rename(history.c_str(), path("h").c_str());
         std::filesystem::create_symlink("h", history);
       }},
      {"history damaged", RecoveryStoreFault::undecodable, [&] { std::filesystem::resize_file(history, 40); }},
      {"history empty", RecoveryStoreFault::undecodable, [&] { std::filesystem::resize_file(history, 0); }},
      {"history one byte too large", RecoveryStoreFault::tooLarge,
       [&] { std::filesystem::resize_file(history, (256 << 20) + 1); }},
  };
  for (const Case& each : cases) {
    SCOPED_TRACE(each.name);
    std::filesystem::remove_all(folder);
    writeEntries({"kept"});
    each.spoil();
    cache_ = {};
    const auto opened = open();
    ASSERT_FALSE(opened);
    EXPECT_EQ(opened.error().fault, each.fault);
    const auto store = home_.newStore();
    EXPECT_FALSE(store->open());
    // A look needs no lock.
    EXPECT_EQ(store->load().has_value(), each.fault == RecoveryStoreFault::untrustedLock);
    ::chmod(folder.c_str(), 0700);
  }
}

TEST_F(HistoryFileTests, belongsToTheUserAlone) {
  if (::geteuid() != 0) GTEST_SKIP() << "giving a file away needs the administrator";
  for (const char* name : {"", "history.json.lock", "history.json"}) {
    std::filesystem::remove_all(home_.at("data/Quorvane").bytes);
    writeEntries({"kept"});
    ASSERT_EQ(::chown(home_.at("data/Quorvane/" + std::string(name)).bytes.c_str(), 12345, static_cast<gid_t>(-1)), 0);
    cache_ = {};
    EXPECT_FALSE(open()) << name;
  }
}

TEST_F(HistoryFileTests, readsAFileOfExactlyTheLargestSize) {
  writeEntries({"x"});
  const std::string path = home_.historyFile().bytes;
  const auto size = std::filesystem::file_size(path);
  {
    std::ofstream padding(path, std::ios::app);
    const std::string blanks(1 << 20, ' ');
    for (std::size_t left = HistoryJournalFile::largestFile - size; left > 0;) {
      const std::size_t count = std::min(left, blanks.size());
      padding.write(blanks.data(), static_cast<std::streamsize>(count));
      left -= count;
    }
  }
  ASSERT_EQ(std::filesystem::file_size(path), HistoryJournalFile::largestFile);
  cache_ = {};
  EXPECT_TRUE(open());
}

TEST_F(HistoryFileTests, aFullHistoryTakesNoEntriesButCanBeCompleted) {
  CleaningHistoryEntry large = entryNamed(home_.random(), "large");
  large.failures = {std::string(HistoryJournalFile::fullFile, 'x')};
  const auto history = open().value();
  ASSERT_TRUE(history->write({.inserted = {large}}));
  const auto refused = history->write({.inserted = {entryNamed(home_.random(), "one more")}});
  ASSERT_FALSE(refused);
  EXPECT_EQ(refused.error().fault, RecoveryStoreFault::full);
  large.items.front().restoredPath = large.items.front().originalPath;
  EXPECT_TRUE(history->write({.replaced = {large}}));
  EXPECT_THAT(namesIn(history->document()), ElementsAre("large"));
}

TEST_F(HistoryFileTests, whatCannotBeBroughtToTheDiskIsToldToWhoeverWrites) {
  CleaningHistoryEntry moved = entryNamed(home_.random(), "moved");
  moved.failures = {std::string(HistoryJournalFile::fullFile, 'x')};
  const auto history = open().value();
  ASSERT_TRUE(history->write({.inserted = {moved}}));
  const auto folder = home_.files().openStartingFolder(home_.folder().path()).value();
  home_.files().countOnly({FileCall::synchronise});
  home_.files().failAt(home_.files().calls() + 1, FaultSpan::once, EIO);  // a system tells it once, and never again
  const auto refused = history->write(
      {.inserted = {entryNamed(home_.random(), "one more")}, .replaced = {moved}, .changedFolders = {folder.number()}});
  ASSERT_FALSE(refused);
  EXPECT_EQ(refused.error().fault, RecoveryStoreFault::full);
  EXPECT_FALSE(history->write({.replaced = {moved}, .changedFolders = {folder.number()}}));
}

TEST_F(HistoryFileTests, isReadAgainWhenSomebodyElseReplacedIt) {
  writeEntries({"mine"});
  HistoryCache others;
  {
    const auto other = OpenHistory::open(home_.files(), home_.random(), home_.historyFile(), others).value();
    ASSERT_TRUE(other->write({.inserted = {entryNamed(home_.random(), "theirs")}}));
  }
  EXPECT_THAT(namesIn(open().value()->document()), ElementsAre("theirs", "mine"));
  const std::size_t before = home_.files().calls();
  home_.files().countOnly({FileCall::read});
  const std::size_t reads = home_.files().calls();
  EXPECT_THAT(namesIn(open().value()->document()), ElementsAre("theirs", "mine"));
  EXPECT_EQ(home_.files().calls(), reads) << "the same file is not read twice; " << before;
}

TEST_F(HistoryFileTests, holdsTheOldContentOrTheNewOneWhateverFails) {
  writeEntries({"old"});
  for (const FaultSpan span : {FaultSpan::once, FaultSpan::fromThereOn}) {
    for (const int code : {EIO, ENOSPC}) {
      for (std::size_t call = 1;; ++call) {
        cache_ = {};
        const auto history = open().value();
        const std::size_t before = home_.files().calls();
        home_.files().failAt(before + call, span, code);
        const bool written = history->write({.inserted = {entryNamed(home_.random(), "new")}}).has_value();
        const std::size_t count = home_.files().calls() - before;
        home_.files().failAt(static_cast<std::size_t>(-1));
        HistoryCache fresh;
        fresh.document = HistoryDocument::decode(home_.folder().read("data/Quorvane/history.json")).value();
        const std::vector<std::string> names = namesIn(fresh.document);
        EXPECT_TRUE(!written || names.front() == "new");
        EXPECT_EQ(names.back(), "old");
        // The object that saw the failure goes on from what the file holds now.
        ASSERT_TRUE(history->write({.inserted = {entryNamed(home_.random(), "later")}})) << call;
        EXPECT_EQ(namesIn(history->document()).size(), names.size() + 1);
        if (call > count) break;
      }
    }
  }
}

TEST_F(HistoryFileTests, takesAbandonedTemporariesAwayAndNothingElse) {
  writeEntries({"x"});
  const std::string folder = "data/Quorvane/";
  home_.folder().write(folder + "history.json.writing-6F9619FF-8B86-4011-B42D-00C04FC964FF", "half");
  for (const char* others : {"history.json.writing-mine", "history.json.writing-", "notes.txt"})
    home_.folder().write(folder + others, "kept");
  home_.folder().makeFolders(folder + "history.json.writing-6F9619FF-8B86-4011-B42D-00C04FC964F0");
  ASSERT_TRUE(open());
  EXPECT_FALSE(home_.folder().holds(folder + "history.json.writing-6F9619FF-8B86-4011-B42D-00C04FC964FF"));
  for (const char* others : {"history.json.writing-mine", "history.json.writing-", "notes.txt",
                             "history.json.writing-6F9619FF-8B86-4011-B42D-00C04FC964F0"})
    EXPECT_TRUE(home_.folder().holds(folder + others)) << others;
}

}  // namespace
}  // namespace quorvane
