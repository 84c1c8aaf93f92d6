#include "tests/cli/CleanHome.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>

namespace quorvane {
namespace {

using testing::HasSubstr;
using testing::Not;
using Names = std::vector<std::string>;

constexpr const char* historyFile = ".local/share/Quorvane/history.json";

TEST(HistoryCommandTests, saysThatThereIsNoneAndMakesNothing) {
  const CleanHome home;
  EXPECT_EQ(home.run({"history"}).output, "Nothing was moved so far.\n");
  EXPECT_EQ(home.json({"history"}), Json::array());
  EXPECT_EQ(home.run({"undo"}).code, 2);
  EXPECT_EQ(home.run({"restore", "--all"}).code, 2);
  for (const char* id : {"6F9619FF-8B86-4011-B42D-00C04FC964FF", "nonsense"}) {
    EXPECT_THAT(home.run({"restore", id}).errors, HasSubstr("[cli.error.noSuchEntry]"));
    EXPECT_EQ(home.run({"history", "show", id}).code, 2);
  }
  EXPECT_FALSE(home.folder().holds(".local"));
}

TEST(HistoryCommandTests, listsRunsAndUndoesTheLastOne) {
  const CleanHome home;
  ASSERT_EQ(home.run({"clean", "--yes"}).code, 0);
  ASSERT_EQ(home.run({"clean", "--select", "review", "--yes"}).code, 0);
  const Json entries = home.json({"history"});
  ASSERT_EQ(entries.size(), 3U);
  EXPECT_THAT(entries[0]["items"][0]["originalPath"].get<std::string>(), HasSubstr("unknown")) << "newest first";
  EXPECT_EQ(entries[1]["date"], entries[2]["date"]) << "one run has one date";
  EXPECT_NE(entries[0]["date"], entries[1]["date"]);
  EXPECT_EQ(home.json({"history", "--limit", "2"}).size(), 2U);
  EXPECT_EQ(home.json({"history", "show", entries[1]["id"].get<std::string>()}), entries[1]);
  EXPECT_EQ(home.json({"history", "show", entries[1]["items"][0]["id"].get<std::string>()}), entries[1]);
  const std::string people = home.run({"history", "--limit", "1"}).output;
  EXPECT_THAT(people, HasSubstr("moved 1 item"));
  EXPECT_THAT(people, HasSubstr("and 1 older run"));
  EXPECT_THAT(people, HasSubstr("in the Trash"));
  EXPECT_THAT(home.run({"history", "show", entries[0]["id"].get<std::string>()}).output, HasSubstr("In the Trash"));

  const Json undone = home.json({"undo"});
  EXPECT_EQ(undone["restoredCount"], 1);
  EXPECT_EQ(undone["failedCount"], 0);
  EXPECT_EQ(undone["remainingCount"], 0);
  ASSERT_EQ(undone["entries"].size(), 1U);
  EXPECT_TRUE(home.hasCache("unknown"));
  const CommandLineRun second = home.run({"restore", "--last"});
  EXPECT_EQ(second.code, 0);
  EXPECT_THAT(second.output,
              testing::AllOf(HasSubstr(home.at(".cache/thumbnails") + "\n"), HasSubstr("\nPut back 2 items\n")));
  EXPECT_EQ(home.caches().size(), 4U);
  EXPECT_EQ(home.run({"undo"}).code, 2);
  EXPECT_THAT(home.run({"history"}).output, HasSubstr("2 put back"));
}

TEST(HistoryCommandTests, takesTheBeginningOfAnIdentifierThatIsOnlyOnes) {
  const CleanHome home;
  ASSERT_EQ(home.run({"clean", "--yes"}).code, 0);
  Json entries = home.json({"history"});
  const std::string ids[] = {"ABCD0000-0000-4000-8000-00000000000A", "ABCD0000-0000-4000-8000-00000000000B"};
  for (std::size_t i = 0; i < 2; ++i) entries[i]["id"] = entries[i]["items"][0]["id"] = ids[i];
  std::filesystem::remove(home.at(historyFile));
  home.folder().write(historyFile, entries.dump());
  std::filesystem::permissions(home.at(historyFile), std::filesystem::perms(0600));
  for (const Names& asked : {Names{"history", "show"}, Names{"restore"}}) {
    const auto with = [&](const std::string& id) {
      Names arguments = asked;
      arguments.push_back(id);
      return home.run(arguments);
    };
    const CommandLineRun several = with("abcd0");
    EXPECT_EQ(several.code, 2);
    EXPECT_THAT(several.errors,
                testing::AllOf(HasSubstr(ids[0] + ", " + ids[1]), HasSubstr("[cli.error.ambiguousIdentifier]")));
    for (const std::string& none : {std::string("abc"), std::string("abce"), ids[0] + "0"})
      EXPECT_THAT(with(none).errors, HasSubstr("[cli.error.noSuchEntry]")) << none;
    EXPECT_EQ(with("abcd0000-0000-4000-8000-00000000000b").code, 0);
  }
  EXPECT_EQ(home.caches().size(), 3U) << "only the one that was named is back";
  const CommandLineRun wide = home.run({"history"}, {.output = {.isTerminal = true, .columns = 200}});
  EXPECT_THAT(wide.output, HasSubstr(ids[0])) << "shown as long as tells them apart";
}

TEST(HistoryCommandTests, looksWhetherTheTrashStillHoldsIt) {
  const CleanHome home;
  ASSERT_EQ(home.run({"clean", "--yes"}).code, 0);
  const Json before = home.json({"history"});
  std::filesystem::remove_all(before[0]["items"][0]["trashedPath"].get<std::string>());
  const std::string shown = home.run({"history"}).output;
  EXPECT_THAT(shown, testing::AllOf(HasSubstr("\tno longer in the Trash\t"), HasSubstr("\tin the Trash\t")));
  EXPECT_THAT(home.run({"history", "show", before[0]["id"].get<std::string>()}).output,
              HasSubstr("State: no longer in the Trash"));
  EXPECT_THAT(home.run({}).output, HasSubstr("Of that still in the Trash: "));
  std::filesystem::remove_all(home.at(".local/share/Trash"));
  EXPECT_THAT(home.run({}).output, testing::AllOf(Not(HasSubstr("still in the Trash")), Not(HasSubstr("undo"))));
  EXPECT_EQ(home.json({"history"}), before) << "a look changes no record";
}

TEST(HistoryCommandTests, tellsWhatCannotBePutBackAndWhatToDo) {
  const CleanHome home;
  ASSERT_EQ(home.run({"clean", "--yes"}).code, 0);
  home.folder().write(".cache/thumbnails/file", "made again meanwhile");
  const CommandLineRun conflict = home.run({"undo"});
  EXPECT_EQ(conflict.code, 1);
  EXPECT_THAT(conflict.errors,
              HasSubstr("quorvane: " + home.at(".cache/thumbnails") + ": Something stands at its old place."));
  EXPECT_THAT(conflict.errors, HasSubstr("[recovery.failure.conflict]"));
  EXPECT_THAT(conflict.output, HasSubstr("--on-conflict keep-both"));
  EXPECT_THAT(conflict.output, HasSubstr("Put back 1 item\n"));
  EXPECT_EQ(home.folder().read(".cache/thumbnails/file"), "made again meanwhile");

  const CommandLineRun both = home.run({"undo", "--on-conflict", "keep-both"});
  EXPECT_EQ(both.code, 0) << both.errors;
  EXPECT_THAT(both.output, HasSubstr("thumbnails (restored "));

  ASSERT_EQ(home.run({"clean", "--select", home.at(".cache/unknown"), "--yes"}).code, 0);
  const std::string id = home.json({"history"})[0]["id"];
  std::filesystem::rename(home.at(".cache"), home.at("elsewhere"));
  const CommandLineRun orphan = home.run({"restore", id});
  EXPECT_EQ(orphan.code, 1);
  EXPECT_THAT(orphan.output,
              HasSubstr("The folder " + home.at(".cache") + " is gone, or a link or a file stands there"));
  std::filesystem::rename(home.at("elsewhere"), home.at(".cache"));
  EXPECT_EQ(home.run({"restore", id, id}).code, 0);
  const CommandLineRun again = home.run({"restore", id});
  EXPECT_EQ(again.code, 1);
  EXPECT_THAT(again.errors, HasSubstr("[recovery.failure.unsupported]"));
}

TEST(HistoryCommandTests, refusesAHistoryThatIsDamagedOrLocked) {
  const CleanHome home;
  ASSERT_EQ(home.run({"clean", "--yes"}).code, 0);
  const std::string history = home.folder().read(historyFile);
  const Names commands[] = {{"clean", "--select", "review", "--yes"}, {"undo"}};
  {
    const auto fileSystem = makeSystemFileSystem();
    const auto folder = openFolderBelow(*fileSystem, home.folder().descriptor(), ".local/share/Quorvane");
    ASSERT_TRUE(folder.has_value());
    const auto lock = fileSystem->lockFile(folder->number(), "history.json.lock");
    ASSERT_TRUE(lock.has_value());
    for (const Names& command : commands) {
      const CommandLineRun refused = home.run(command);
      EXPECT_EQ(refused.code, 3);
      EXPECT_THAT(refused.errors, HasSubstr("[history.error.busy]"));
    }
    EXPECT_EQ(home.run({"history"}).code, 0) << "looking needs no lock";
  }
  std::filesystem::remove(home.at(historyFile));
  home.folder().write(historyFile, "damaged");
  for (const Names& command : {commands[0], commands[1], Names{"history"}}) {
    const CommandLineRun refused = home.run(command);
    EXPECT_EQ(refused.code, 3);
    EXPECT_EQ(std::ranges::count(refused.errors, '\n'), 1) << refused.errors;
  }
  const CommandLineRun overview = home.run({});
  EXPECT_EQ(overview.code, 1) << "the disk is shown all the same";
  EXPECT_THAT(overview.output, HasSubstr("Free"));
  const Json document = home.json({}, 1);
  EXPECT_TRUE(document.contains("storage"));
  EXPECT_EQ(document["error"]["key"], "history.error.undecodable");
  EXPECT_THAT(document["error"]["message"].get<std::string>(), HasSubstr("does not hold a history"));
  EXPECT_EQ(home.folder().read(historyFile), "damaged");
  EXPECT_TRUE(home.hasCache("unknown"));
}

TEST(HistoryCommandTests, areInTheOverview) {
  const CleanHome home;
  const Json before = home.json({});
  EXPECT_EQ(before["history"], (Json{{"entryCount", 0}, {"reclaimedBytes", 0}}));
  EXPECT_EQ(before["pendingCount"], 0);
  EXPECT_THAT(home.run({}).output, HasSubstr("quorvane clean"));
  const Json done = home.json({"clean", "--yes"});
  const Json after = home.json({});
  EXPECT_EQ(after["history"]["entryCount"], 2);
  EXPECT_EQ(after["history"]["reclaimedBytes"], done["reclaimedBytes"]);
  EXPECT_EQ(after["history"]["lastRunAt"], done["entries"][0]["date"]);
  const std::string moved = home.run({}).output;
  EXPECT_THAT(moved, HasSubstr("Moved to the Trash so far: "));
  EXPECT_THAT(moved, testing::AllOf(HasSubstr("quorvane undo"), Not(HasSubstr("put back;"))));
  ASSERT_EQ(home.run({"undo"}).code, 0);
  const std::string back = home.run({}).output;
  EXPECT_THAT(back, testing::AllOf(HasSubstr("was put back;"), Not(HasSubstr("quorvane undo"))));
}

TEST(HistoryCommandTests, sayInTheOverviewThatTheLastRunWasInterrupted) {
  const CleanHome home;
  ASSERT_EQ(home.run({"clean", "--yes"}).code, 0);
  EXPECT_THAT(home.run({}).output, Not(HasSubstr("interrupted")));
  Json entries = home.json({"history"});
  Json& item = entries[0]["items"][0];
  item["outcome"] = "failed";
  item["failureReason"] = MessageCatalogue::english().text("cleanup.journal.interrupted");
  for (const char* member : {"trashedPath", "trashIdentity", "trashLocation"}) item.erase(member);
  std::filesystem::remove(home.at(historyFile));
  home.folder().write(historyFile, entries.dump());
  std::filesystem::permissions(home.at(historyFile), std::filesystem::perms(0600));
  const CommandLineRun run = home.run({});
  EXPECT_EQ(run.code, 0) << run.errors;
  EXPECT_THAT(run.output, HasSubstr("The last run was interrupted: 1 item"));
}

TEST(TrashCommandTests, movesWhatIsNamedAfterAReview) {
  const CleanHome home;
  home.folder().write("documents/letter", "content");
  home.folder().write("documents/draft", "content");
  home.folder().makeLink("documents/link", "/");
  const std::string letter = home.at("documents/letter");

  const Json planned = home.json({"trash", letter, "--dry-run"});
  ASSERT_EQ(planned["wouldMove"].size(), 1U);
  for (const char* member : {"id", "url", "displayName", "size", "snapshot"})
    EXPECT_TRUE(planned["wouldMove"][0].contains(member)) << member;
  EXPECT_EQ(home.answered({"trash", letter}, {"n"}).code, 0);
  EXPECT_THAT(home.answered({"trash", letter}, {"?", "", "y"}).errors, HasSubstr("y moves what is listed above"));
  EXPECT_TRUE(home.folder().holds("documents/letter"));
  const CommandLineRun asked = home.answered({"trash", letter, letter, home.at("documents/missing")}, {" Y "});
  EXPECT_EQ(asked.code, 1);
  EXPECT_THAT(asked.errors, HasSubstr("Move this 1 item ("));
  EXPECT_THAT(asked.errors, HasSubstr("documents/missing: "));
  EXPECT_FALSE(home.folder().holds("documents/letter"));

  const Json done = home.json({"trash", home.at("documents/draft"), home.at("documents/link"), "--yes"});
  EXPECT_EQ(done["movedCount"], 2) << "a link goes itself, wherever it leads";
  EXPECT_EQ(home.json({"undo"})["restoredCount"], 2);
  EXPECT_TRUE(home.folder().holds("documents/draft"));
}

TEST(TrashCommandTests, countsWhatWentWithItsFolderAsDone) {
  const CleanHome home;
  home.folder().write("d/e/x", "content");
  const Names command{"trash", home.at("d"), home.at("d/e/x"), home.at("d/e")};
  const auto with = [&](const char* option) {
    Names arguments = command;
    arguments.emplace_back(option);
    return arguments;
  };
  const std::string alone = home.run({"trash", home.at("d"), "--dry-run"}).output;
  const std::string size = alone.substr(0, alone.find('\t'));
  EXPECT_THAT(home.run(with("--dry-run")).output, HasSubstr(": " + size + ".")) << "nothing counts twice";
  const CommandLineRun done = home.run(with("--yes"));
  EXPECT_EQ(done.code, 0) << done.errors;
  EXPECT_THAT(done.output, testing::AllOf(HasSubstr("Moved 1 item"), HasSubstr(home.at("d/e/x") + " lay in one of")));
  EXPECT_EQ(done.errors, "");
  ASSERT_EQ(home.run({"undo"}).code, 0);
  EXPECT_TRUE(home.folder().holds("d/e/x"));
  const Json document = home.json(with("--yes"));
  EXPECT_EQ(document["failures"], Json::array());
  EXPECT_EQ(document["movedCount"], 1);
}

TEST(TrashCommandTests, neverMovesWhatItMustNot) {
  const CleanHome home;
  const struct {
    std::string path;
    int code;
    const char* key;
  } cases[] = {
      {"/etc/hostname", 3, "cli.error.outsideHome"},
      {home.at("../somewhere"), 3, "cli.error.outsideHome"},
      {home.at(".cache/nothing"), 1, "cleanup.failure.missing"},
      {home.at("."), 3, "cli.error.outsideHome"},
      {home.at(".local/share"), 1, "cleanup.failure"},
  };
  home.folder().makeFolders(".local/share/Quorvane");
  for (const auto& [path, code, key] : cases) {
    const CommandLineRun refused = home.run({"trash", path, "--yes"});
    EXPECT_EQ(refused.code, code) << path << refused.errors;
    EXPECT_THAT(refused.errors, HasSubstr(std::string("[") + key));
  }
  EXPECT_TRUE(home.folder().holds(".local/share/Quorvane"));
}

}  // namespace
}  // namespace quorvane
