#include "quorvane/base/Utf8.h"
#include "quorvane/core/ScanResult.h"
#include "quorvane/platform/FileDescriptor.h"
#include "tests/cli/CleanHome.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <csignal>
#include <map>
#include <sstream>

#include <unistd.h>

namespace quorvane {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;
using Names = std::vector<std::string>;

const Names everything{"bitwarden", "mesa_shader_cache", "thumbnails", "unknown"};

TEST(CleanCommandTests, movesWhatIsSelectedAndNothingElse) {
  const CleanHome home;
  const Json done = home.json({"clean", "--yes"});
  EXPECT_EQ(done["movedCount"], 2);
  EXPECT_EQ(done["failedCount"], 0);
  EXPECT_EQ(done["failures"], Json::array());
  EXPECT_GT(done["reclaimedBytes"].get<std::int64_t>(), 0);
  ASSERT_EQ(done["entries"].size(), 2U);
  EXPECT_FALSE(done.contains("dryRun"));
  EXPECT_THAT(home.caches(), ElementsAre("bitwarden", "unknown"));
  EXPECT_TRUE(home.folder().holds(".local/share/Trash/files/thumbnails/file"));
  const Json history = home.json({"history"});
  ASSERT_EQ(history.size(), 2U);
  for (const Json& entry : done["entries"])
    EXPECT_EQ(std::ranges::count(history, entry), 1) << "the result is what the history holds";

  const CommandLineRun again = home.run({"clean", "--yes"});
  EXPECT_EQ(again.code, 0);
  EXPECT_THAT(again.output, HasSubstr("Nothing is selected"));
  EXPECT_EQ(home.json({"clean", "--yes"})["entries"], Json::array());
}

TEST(CleanCommandTests, saysWhatWasMovedAndWhatWillBecomeAvailable) {
  const CleanHome home;
  const CommandLineRun done = home.run({"clean", "--yes"});
  EXPECT_EQ(done.code, 0);
  for (const char* part : {"Moved 2 items to the Trash: ", "will become available once the Trash is emptied",
                           "available", "`quorvane undo`", "/.local/share/Trash/files"})
    EXPECT_THAT(done.output, HasSubstr(part));
  EXPECT_THAT(done.errors, Not(HasSubstr("quorvane: "))) << "notes of the scan at most";
  const auto catalogue = MessageCatalogue::english();
  for (const auto& [key, text] : catalogue.texts()) EXPECT_THAT(asciiLowered(text), Not(HasSubstr("freed"))) << key;
}

TEST(CleanCommandTests, rehearsesWithoutWritingAnything) {
  const CleanHome home;
  const Json planned = home.json({"clean", "--dry-run"});
  EXPECT_EQ(planned["dryRun"], true);
  ASSERT_EQ(planned["wouldMove"].size(), 2U);
  for (const char* member : {"id", "url", "displayName", "category", "safety", "reasonKey", "size", "snapshot"})
    EXPECT_TRUE(planned["wouldMove"][0].contains(member)) << member;
  EXPECT_EQ(planned["movedCount"], 0);
  EXPECT_EQ(planned["entries"], Json::array());
  EXPECT_THAT(home.run({"clean", "--dry-run"}).output, HasSubstr("Would move 2 items to the Trash"));
  EXPECT_EQ(home.caches(), everything);
  EXPECT_FALSE(home.folder().holds(".local")) << "neither a history nor a Trash";
}

TEST(CleanCommandTests, movesNothingUnlessSomebodyCanSayYes) {
  const CleanHome home;
  const std::string reviewed = home.run({"scan", "--json"}).output;
  const KeepingChannel::Kind terminal{.isTerminal = true};
  const PreparedInput::Kind yes{.isTerminal = true, .lines = {"y"}, .content = reviewed};
  const struct {
    Names arguments;
    CommandLineRun::Setting setting;
  } cases[] = {
      {{"clean"}, {}},
      {{"clean"}, {.errors = terminal, .input = {.lines = {"y"}}}},
      {{"clean"}, {.input = yes}},
      {{"clean", "--json"}, {.errors = terminal, .input = yes}},
      {{"clean", "--from", "-"}, {.errors = terminal, .input = yes}},
      {{"trash", home.at(".cache/unknown")}, {}},
  };
  for (const auto& [arguments, setting] : cases) {
    const CommandLineRun refused = home.run(arguments, setting);
    EXPECT_EQ(refused.code, 3) << testing::PrintToString(arguments);
    EXPECT_THAT(refused.errors, HasSubstr("[cli.error.cannotAsk]"));
  }
  for (const Names& answers : {Names{}, Names{""}, Names{"n"}, Names{"2", "?", "no"}}) {
    const CommandLineRun declined = home.answered({"clean"}, answers);
    EXPECT_EQ(declined.code, 0);
    EXPECT_EQ(declined.output, "");
    EXPECT_THAT(declined.errors, HasSubstr("Nothing was moved."));
  }
  EXPECT_EQ(home.caches(), everything);
}

TEST(CleanCommandTests, asksAndLetsTheReviewBeEdited) {
  // By category and size, then path: 1 bitwarden (blocked), 2 mesa_shader_cache, 3 thumbnails, 4 unknown.
  const struct {
    Names answers, left;
  } cases[] = {
      {{"y"}, {"bitwarden", "unknown"}},
      {{"3", "YES"}, {"bitwarden", "thumbnails", "unknown"}},
      {{"e", "2-4", "y"}, {"bitwarden"}},
      {{"e", "review, 2", "yes"}, {"bitwarden", "mesa_shader_cache"}},
      {{"?4", "applicationcache", "1", "y"}, {"bitwarden"}},
      // What was not shown is shown first, and selected only when it is named again.
      {{"4", "y"}, {"bitwarden", "unknown"}},
      {{"4 4, 4-4", "y"}, {"bitwarden", "unknown"}},
      {{"2-4", "y"}, {"bitwarden", "unknown"}},
      {{"review", "y"}, {"bitwarden", "unknown"}},
      {{"applicationCache", "y"}, {"bitwarden", "unknown"}},
      {{"review, 2", "y"}, {"bitwarden", "mesa_shader_cache", "unknown"}},
      {{"1-4", "1-4", "y"}, {"bitwarden"}},
      {{"2-3", "y", "n"}, {"bitwarden", "mesa_shader_cache", "thumbnails", "unknown"}},
      {{"99", "nonsense", "?99", "e", "?4", "y"}, {"bitwarden", "unknown"}},
  };
  for (const auto& [answers, left] : cases) {
    const CleanHome home;
    const CommandLineRun done = home.answered({"clean"}, answers);
    EXPECT_EQ(done.code, 0) << done.errors;
    EXPECT_EQ(home.caches(), left) << testing::PrintToString(answers) << done.errors;
  }
  const CleanHome home;
  const std::string shown = home.answered({"clean"}, {"1", "nonsense", "reveiw", "2-3", "y", "e", "?4"}).errors;
  for (const char* part :
       {"1: blocked", "nonsense: there is no such item", "Did you mean \"review\"?", "2-3: no longer selected",
        "Nothing is selected.", "Not a known cache", "Nobody vouches for it", "Digest", "Identifier"})
    EXPECT_THAT(shown, HasSubstr(part));
  // Once when it is shown first, and once when it is selected.
  const auto timesShown = [&](const Names& answers) {
    const std::string errors = home.answered({"clean"}, answers).errors;
    int times = 0;
    for (std::size_t at = 0; (at = errors.find(" unknown ", at)) != std::string::npos; ++at) ++times;
    return times;
  };
  EXPECT_EQ(timesShown({"n"}), 0);
  EXPECT_EQ(timesShown({"review", "n"}), 1);
  EXPECT_EQ(timesShown({"review", "review", "n"}), 2);
}

TEST(CleanCommandTests, tellsWhatTheScanCouldNotSee) {
  const CleanHome home;
  auto result = scanResultFromJson(home.run({"scan", "--json"}).output);
  ASSERT_TRUE(result.has_value());
  result->unreadablePaths = {{FilePath{home.at(".cache/closed")}}};
  home.folder().write("reviewed.json", jsonText(*result));
  const Names command{"clean", "--from", home.at("reviewed.json")};
  const auto with = [&](const char* option) {
    Names arguments = command;
    arguments.emplace_back(option);
    return arguments;
  };
  const std::string place = home.at(".cache/closed");
  for (const CommandLineRun& run :
       {home.answered(command, {"n"}), home.run(with("--dry-run")), home.run(with("--yes"))})
    EXPECT_THAT(run.errors, testing::AllOf(HasSubstr("1 place could not be read:"), HasSubstr(place)));
}

TEST(CleanCommandTests, saysThatNothingWasFound) {
  const ScanHome empty(HomeLayout::linux);
  const CommandLineRun run({"clean", "--home", empty.folder.path().bytes});
  EXPECT_EQ(run.code, 0);
  EXPECT_EQ(run.output, "Nothing that could be cleaned was found.\n");
}

TEST(CleanCommandTests, selectsExactlyWhatIsNamed) {
  const CleanHome home;
  const std::string unknown = home.at(".cache/unknown");
  const auto planned = [&](Names arguments, int code = 0) {
    arguments.insert(arguments.begin(), {"clean", "--dry-run"});
    Names names;
    const Json document = home.json(arguments, code);
    for (const Json& item : document["wouldMove"]) names.push_back(item["displayName"]);
    return names;
  };
  EXPECT_THAT(planned({"--select", unknown + "/"}), ElementsAre("unknown"));
  EXPECT_THAT(planned({"--select", "review", "--select", "safe", "--unselect", unknown}),
              testing::UnorderedElementsAre("mesa_shader_cache", "thumbnails"));
  EXPECT_EQ(planned({"--select", "applicationCache"}).size(), 3U) << "a category never selects what is blocked";
  EXPECT_EQ(planned({"--select", home.at(".cache/bitwarden")}, 1).size(), 0U) << "named, it fails by name";
  for (const char* selector : {"logs", "nonsense", "/nowhere", "6F9619FF-8B86-4011-B42D-00C04FC964FF", "unknown"}) {
    const CommandLineRun wrong = home.run({"clean", "--select", selector, "--yes"});
    EXPECT_EQ(wrong.code, 2) << selector;
    EXPECT_THAT(wrong.errors, HasSubstr("[cli.error.selectorMatchesNothing]"));
  }
  EXPECT_THAT(home.run({"clean", "--select", "lgos", "--yes"}).errors, HasSubstr("Did you mean \"logs\"?"));
  EXPECT_EQ(home.caches(), everything);
}

TEST(CleanCommandTests, takesAReviewedResult) {
  const CleanHome home;
  auto result = scanResultFromJson(home.run({"scan", "--json"}).output);
  ASSERT_TRUE(result.has_value());
  for (ScanItem& item : result->items) item.isSelected = item.displayName != "mesa_shader_cache";
  home.folder().write("reviewed.json", jsonText(*result));
  home.folder().write(".cache/thumbnails/new", "written after the review");

  const Json done = home.json({"clean", "--from", home.at("reviewed.json"), "--yes"}, 1);
  EXPECT_EQ(done["movedCount"], 1) << "the one that a person selected";
  EXPECT_THAT(home.caches(), ElementsAre("bitwarden", "mesa_shader_cache", "thumbnails"));
  std::map<std::string, std::string> failures;
  for (const Json& failed : done["failures"]) {
    EXPECT_TRUE(failed.contains("id") && failed.contains("reasonKey"));
    failures[failed["path"]] = failed["category"];
  }
  EXPECT_EQ(failures, (std::map<std::string, std::string>{{home.at(".cache/bitwarden"), "protected"},
                                                          {home.at(".cache/thumbnails"), "changedAfterScan"}}));

  const CommandLineRun people = home.run({"clean", "--from", "-", "--yes"}, {.input = {.content = jsonText(*result)}});
  EXPECT_EQ(people.code, 1);
  std::istringstream lines(people.errors);
  int failed = 0;
  for (std::string line; std::getline(lines, line);) failed += line.starts_with("quorvane: ") ? 1 : 0;
  EXPECT_EQ(failed, 3) << "one line for each failed item";
  EXPECT_THAT(people.errors, HasSubstr("quorvane: " + home.at(".cache/thumbnails") + ": "));
  EXPECT_THAT(people.output, HasSubstr("3 items were not moved:"));
  EXPECT_THAT(people.output, HasSubstr("No longer there, 1: unknown"));
}

TEST(CleanCommandTests, refusesAReviewThatItCannotBelieve) {
  const CleanHome home;
  const std::string good = home.run({"scan", "--json"}).output;
  auto old = scanResultFromJson(good);
  ASSERT_TRUE(old.has_value());
  old->finishedAt -= std::chrono::hours(25);
  auto future = old;
  future->finishedAt += std::chrono::hours(50);
  auto broken = parsedJson(good).value();
  broken["items"][1]["safety"] = "certainly";
  const struct {
    std::string content;
    const char* key;
    const char* text;
  } cases[] = {
      {jsonText(*old), "cli.error.staleReview", "not of the last 24 hours"},
      {jsonText(*future), "cli.error.futureReview", "has not come yet"},
      {"", "cli.error.reviewUndecodable", "it is not JSON"},
      {"[]", "cli.error.reviewUndecodable", "something of another form"},
      {good + "x", "cli.error.reviewUndecodable", "it is not JSON"},
      {broken.dump(), "cli.error.reviewUndecodableAt", "at items.1.safety, there is a word that is not known"},
  };
  for (const auto& [content, key, text] : cases) {
    const CommandLineRun refused = home.run({"clean", "--from", "-", "--yes"}, {.input = {.content = content}});
    EXPECT_EQ(refused.code, 3) << key;
    EXPECT_THAT(refused.errors, HasSubstr(std::string("[") + key + "]"));
    EXPECT_THAT(refused.errors, HasSubstr(text));
  }
  const CommandLineRun missing = home.run({"clean", "--from", home.at("missing.json"), "--yes"});
  EXPECT_EQ(missing.code, 3);
  EXPECT_THAT(missing.errors, HasSubstr("[cli.error.reviewUnreadable]"));
  EXPECT_EQ(home.caches(), everything);
}

TEST(CleanCommandTests, showsAHostileReviewHarmlessly) {
  const CleanHome home;
  auto result = scanResultFromJson(home.run({"scan", "--json"}).output);
  ASSERT_TRUE(result.has_value());
  const std::string hostile = "\x1b[2J\n\xE2\x80\xAEname";
  home.folder().write("documents/letter", "content");
  for (ScanItem& item : result->items) {
    item.url.path = {home.at("documents/letter")};
    item.displayName = hostile;
    item.reasonKey = "cli.example.clean";
    item.safety = SafetyLevel::safe;
    item.isSelected = true;
  }
  result->items[0].reasonKey = hostile;
  result->items[0].url.path = {home.at(hostile)};
  home.folder().write("hostile.json", jsonText(*result));
  for (const CommandLineRun& run :
       {home.run({"clean", "--from", home.at("hostile.json"), "--yes"}),
        home.run({"clean", "--from", home.at("hostile.json"), "--dry-run"}),
        home.answered({"clean", "--from", home.at("hostile.json")}, {"e", "?1", "?2", "y"})}) {
    EXPECT_EQ(run.code, 1) << run.errors;
    for (const std::string& text : {run.output, run.errors}) {
      EXPECT_THAT(text, Not(HasSubstr("\x1b[2J")));
      EXPECT_THAT(text, Not(HasSubstr("\xE2\x80\xAE")));
    }
  }
  EXPECT_EQ(home.caches(), everything);
  EXPECT_TRUE(home.folder().holds("documents/letter")) << "a record cannot talk a place into being cleaned";
}

TEST(CleanCommandTests, ctrlCAtTheQuestionMovesNothing) {
  const CleanHome home;
  for (const Names& command : {Names{"clean"}, Names{"trash", home.at(".cache/unknown")}}) {
    const CommandLineRun run = home.answered(command, {PreparedInput::ctrlC, "y"});
    EXPECT_EQ(run.code, 130);
    EXPECT_EQ(run.output, "");
    EXPECT_TRUE(run.errors.ends_with(" \nNothing was moved.\n")) << run.errors;
  }
  EXPECT_EQ(home.caches(), everything);
}

TEST(InputChannelTests, waitForALineUnlessInterrupted) {
  std::array<int, 2> input{}, interrupt{};
  ASSERT_EQ(::pipe(input.data()), 0);
  ASSERT_EQ(::pipe(interrupt.data()), 0);
  const FileDescriptor inputReader(input[0]), interruptReader(interrupt[0]), interruptWriter(interrupt[1]);
  FileDescriptor inputWriter(input[1]);
  DescriptorInput channel(inputReader.number());
  ASSERT_EQ(::write(inputWriter.number(), "one\ntwo\nthr", 11), 11);
  EXPECT_EQ(channel.readLine(interruptReader.number()), "one");
  EXPECT_EQ(channel.readLine(interruptReader.number()), "two");
  ASSERT_EQ(::write(interruptWriter.number(), "", 1), 1);
  EXPECT_EQ(channel.readLine(interruptReader.number()), std::nullopt) << "though the writer is still there";
  char byte = 0;
  ASSERT_EQ(::read(interruptReader.number(), &byte, 1), 1);
  ASSERT_EQ(::write(inputWriter.number(), "ee\nhalf", 7), 7);
  inputWriter.close();
  EXPECT_EQ(channel.readLine(interruptReader.number()), "three");
  EXPECT_EQ(channel.readLine(interruptReader.number()), std::nullopt) << "an answer without its end";
}

TEST(CleanCommandTests, ctrlCStopsAfterTheItemInHand) {
  CleanHome home;
  for (int i = 0; i < 20; ++i) home.addCache("mesa_shader_cache_" + std::to_string(i));
  auto reviewed = scanResultFromJson(home.run({"scan", "--json"}).output);
  ASSERT_TRUE(reviewed.has_value());
  reviewed->coverage.reset();  // so that the progress is the first thing that is shown
  home.folder().write("reviewed.json", jsonText(*reviewed));
  const CommandLineRun::Setting interrupted{.variables = {{"TERM", "xterm"}},
                                            .errors = {.isTerminal = true, .firstWritten = [] { std::raise(SIGINT); }}};
  // Cleaning may be faster than the signal; not every time.
  for (int attempt = 0; attempt < 20; ++attempt) {
    const CommandLineRun run = home.run({"clean", "--from", home.at("reviewed.json"), "--yes", "--json"}, interrupted);
    const auto done = parsedJson(run.output);
    ASSERT_TRUE(done.has_value()) << run.output;
    if (run.code == 130) {
      EXPECT_EQ((*done)["entries"].size(), (*done)["movedCount"].get<std::size_t>());
      EXPECT_THAT(run.errors, testing::AnyOf(HasSubstr("[cli.clean.stopped]"), HasSubstr("[cli.clean.stoppedBefore]")));
      return;
    }
    home.run({"undo"});
  }
  ADD_FAILURE() << "no run was stopped";
}

}  // namespace
}  // namespace quorvane
