#include "quorvane/app/cli/CommandLine.h"

#include "quorvane/app/cli/arguments/Arguments.h"
#include "quorvane/app/cli/arguments/NearestWord.h"
#include "quorvane/base/Json.h"
#include "quorvane/core/ScanResult.h"
#include "tests/cli/CommandLineRun.h"
#include "tests/support/TempFolder.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <csignal>
#include <sstream>

namespace quorvane {
namespace {

using Words = std::vector<std::string>;

// The first thing on the error channel is the bar, before the scan has begun.
CommandLineRun scanWithSignals(const FilePath& home, const std::vector<int>& signals) {
  const auto raiseAll = [signals] {
    for (const int number : signals) std::raise(number);
  };
  const CommandLineRun::Setting setting{.variables = {{"TERM", "xterm"}},
                                        .errors = {.isTerminal = true, .firstWritten = raiseAll}};
  return CommandLineRun({"scan", "--json", "--home", home.bytes}, setting);
}

TEST(CommandLineTests, refusesWrongUsageWithAHint) {
  const struct {
    Words arguments;
    const char* key;
    const char* text;
  } cases[] = {
      {{"scna"}, "cli.error.unknownCommand", "There is no command \"scna\". Did you mean \"scan\"?"},
      {{"help"}, "cli.error.unknownCommand", "See `quorvane --help`."},
      {{"frobnicate"},
       "cli.error.unknownCommand",
       "It can be one of: scan, clean, trash, history, restore, undo, docker, ignore, status."},
      {{"ignore"}, "cli.error.missingCommand", "It can be one of: list, add, remove."},
      {{"ignore", "rm"}, "cli.error.unknownCommand", "\"rm\""},
      {{"ignore", "add"}, "cli.error.missingArgument", "`quorvane ignore add` needs PATH."},
      {{"ignore", "add", ""}, "cli.error.missingArgument", "PATH"},
      {{"ignore", "add", "a", "b"}, "cli.error.unexpectedArgument", "\"b\""},
      {{"scan", "extra"}, "cli.error.unexpectedArgument", "See `quorvane scan --help`."},
      {{"scan", "--category", "logs", "installers"}, "cli.error.unexpectedArgument", "\"installers\""},
      {{"scan", "--category", "browsercahe"}, "cli.error.unknownCategory", "Did you mean \"browserCache\"?"},
      {{"scan", "--category", "applicationLeftover"},
       "cli.error.unknownCategory",
       "It can be one of: applicationCache, browserCache, developerCache, aiWorktree, logs, installers, mailDownload, "
       "deviceBackup."},
      {{"scan", "--category"}, "cli.error.missingValue", "--category needs a value."},
      {{"--home=", "scan"}, "cli.error.missingValue", "--home needs a value."},
      {{"clean", "--from", "--yes"}, "cli.error.missingValue", "--from needs a value."},
      {{"--home", "--layout=macos", "scan"}, "cli.error.missingValue", "--home needs a value."},
      {{"--home", "", "scan"}, "cli.error.missingValue", "--home needs a value."},
      {{"scan", "--category="}, "cli.error.missingValue", "See `quorvane scan --help`."},
      {{"scan", "--category", ""}, "cli.error.missingValue", "--category needs a value."},
      {{"scan", "--", "--json"}, "cli.error.unexpectedArgument", "\"--json\""},
      {{"ignore", "add", "--", "--json", "--quiet"}, "cli.error.unexpectedArgument", "\"--quiet\""},
      {{"--layout", "windows"}, "cli.error.unknownLayout", "auto, linux, macos"},
      {{"scan", "--json=no"}, "cli.error.unexpectedValue", "--json takes no value."},
      {{"scan", "--jsn"}, "cli.error.unknownOption", "Did you mean \"--json\"?"},
      {{"scan", "-x"}, "cli.error.unknownOption", "\"-x\""},
      {{"\x1b[2J"}, "cli.error.unknownCommand", "\\x1b[2J"},
      {{"history", "shwo"}, "cli.error.unknownCommand", "Did you mean \"show\"?"},
      {{"history", "--limit", "0"}, "cli.error.noCount", "--limit needs a whole number from 1 on, not \"0\"."},
      {{"history", "show"}, "cli.error.missingArgument", "`quorvane history show` needs ID."},
      {{"restore"}, "cli.error.nothingToRestore", "--last or --all"},
      {{"restore", "--last", "--all"}, "cli.error.restoreEither", "exclude each other"},
      {{"restore", "6F9619FF", "--last"}, "cli.error.restoreEither", "exclude each other"},
      {{"undo", "--on-conflict", "keepboth"}, "cli.error.unknownConflictPolicy", "Did you mean \"keep-both\"?"},
      {{"undo", "this"}, "cli.error.unexpectedArgument", "\"this\""},
      {{"trash"}, "cli.error.missingArgument", "`quorvane trash` needs PATH."},
      {{"trash", "a", ""}, "cli.error.missingArgument", "`quorvane trash` needs PATH."},
      {{"clean", "logs"}, "cli.error.unexpectedArgument", "\"logs\""},
      {{"clean", "--select="}, "cli.error.missingValue", "--select needs a value."},
      {{"scan", "--yes"}, "cli.error.unknownOption", "\"--yes\""},
  };
  for (const auto& [arguments, key, text] : cases) {
    Words withJson = arguments;
    withJson.insert(withJson.begin(), "--json");
    const CommandLineRun plain(arguments), json(withJson);
    EXPECT_EQ(plain.code, 2) << key;
    EXPECT_EQ(plain.output, "");
    EXPECT_TRUE(plain.errors.starts_with("quorvane: ") && plain.errors.ends_with(std::string(" [") + key + "]\n"))
        << plain.errors;
    EXPECT_NE(plain.errors.find(text), std::string::npos) << plain.errors;
    EXPECT_EQ(std::ranges::count(plain.errors, '\n'), 1) << plain.errors;

    const auto document = parsedJson(json.output);
    ASSERT_TRUE(document.has_value()) << json.output;
    EXPECT_EQ((*document)["error"]["key"], key);
    EXPECT_NE((*document)["error"]["message"].get<std::string>().find(text), std::string::npos);
    EXPECT_EQ(json.errors, plain.errors);
  }
}

TEST(CommandLineTests, understandsItsArguments) {
  const auto understood = [](const Words& arguments) {
    const auto request = parseArguments(arguments).request;
    EXPECT_TRUE(std::holds_alternative<Invocation>(request));
    return std::holds_alternative<Invocation>(request) ? std::get<Invocation>(request) : Invocation{};
  };
  EXPECT_EQ(understood({}), Invocation{});
  EXPECT_EQ(understood({"scan", "--category", "logs", "--json", "--category=installers", "--category", "logs"}),
            (Invocation{.command = CommandName::scan,
                        .options = {.json = true},
                        .categories = {ScanCategory::logs, ScanCategory::installers}}));
  EXPECT_EQ(understood({"--home", "a", "scan", "--home", "b", "--layout", "macos", "--layout", "auto"}),
            (Invocation{.command = CommandName::scan, .options = {.home = "b"}}));
  for (const std::string path : {"list", "scan", "[x]", "a b", "-", "\xFF"})
    EXPECT_EQ(understood({"ignore", "add", path}), (Invocation{.command = CommandName::ignoreAdd, .subjects = {path}}));
  EXPECT_EQ(understood({"clean", "--select", "[a,b]", "--yes", "--select=-", "--unselect", "x", "--from", "-"}),
            (Invocation{.command = CommandName::clean,
                        .removal = {.from = "-", .select = {"[a,b]", "-"}, .unselect = {"x"}, .isConfirmed = true}}));
  EXPECT_EQ(
      understood({"trash", "[x]", "--dry-run", "history", "--", "--yes"}),
      (Invocation{
          .command = CommandName::trash, .removal = {.isRehearsal = true}, .subjects = {"[x]", "history", "--yes"}}));
  EXPECT_EQ(
      understood({"undo", "--on-conflict", "keep-both"}),
      (Invocation{.command = CommandName::undo, .restore = {RestoreChoice::lastRun, RestoreConflictPolicy::keepBoth}}));
  EXPECT_EQ(understood({"history", "--limit", "7"}), (Invocation{.command = CommandName::history, .limit = 7}));
  EXPECT_EQ(understood({"ignore", "add", "--", "--json"}),
            (Invocation{.command = CommandName::ignoreAdd, .subjects = {"--json"}}));
}

TEST(CommandLineTests, explainsEachCommandWithAnExample) {
  for (const CommandDescription& command : commandDescriptions()) {
    Words arguments;
    std::istringstream words{std::string(command.words)};
    for (std::string word; words >> word;) arguments.push_back(word);
    arguments.push_back("--help");
    const CommandLineRun run(arguments);
    EXPECT_EQ(run.code, 0);
    EXPECT_EQ(run.errors, "");
    EXPECT_NE(run.output.find("  " + fullName(command)), std::string::npos) << run.output;
    EXPECT_NE(run.output.find("Examples"), std::string::npos);
    EXPECT_EQ(run.output.find("cli."), std::string::npos) << "a key without a text";
    EXPECT_EQ(run.output.find("{{"), std::string::npos) << "a placeholder without a value";
    for (const std::size_t columns : {20U, 30U, 60U, 80U}) {
      std::istringstream lines(CommandLineRun(arguments, {.output = {.isTerminal = true, .columns = columns}}).output);
      for (std::string line; std::getline(lines, line);) EXPECT_LE(line.size(), columns) << line;
    }
    arguments.push_back("--json");
    EXPECT_EQ(CommandLineRun(arguments).output, run.output) << "help is for people";
  }
  EXPECT_EQ(CommandLineRun({"scan", "--version"}).code, 0);
  EXPECT_TRUE(CommandLineRun({"--version"}).output.starts_with("quorvane "));
}

TEST(CommandLineTests, namesEveryChoiceInTheHelp) {
  const MessageCatalogue catalogue = MessageCatalogue::english();
  std::vector<OptionDescription> options(globalOptionDescriptions().begin(), globalOptionDescriptions().end());
  for (const CommandDescription& command : commandDescriptions())
    options.insert(options.end(), command.options.begin(), command.options.end());
  std::size_t choices = 0;
  for (const OptionDescription& option : options) {
    if (option.kind == ValueKind::selector) continue;  // what it takes has no end
    for (const std::string& choice : choicesOf(option.kind)) {
      ++choices;
      EXPECT_TRUE(catalogue.text(meaningOf(option)).contains(choice)) << option.name << " " << choice;
    }
  }
  EXPECT_GT(choices, 8U);
}

TEST(CommandLineTests, keepsIgnoreRules) {
  const TempFolder folder;
  folder.write("home/.cache/thing/file", "content");
  folder.makeFolders("outside");
  folder.makeLink("home/way-out", folder.at("outside").bytes);
  folder.makeLink("home/way-home", folder.at("home").bytes);
  const std::string home = folder.at("home").bytes;
  const auto ignore = [&](Words arguments) {
    arguments.insert(arguments.begin(), {"--home", home, "ignore"});
    return CommandLineRun(arguments, {.workingFolder = folder.at("home/.cache")});
  };

  EXPECT_EQ(ignore({"list", "--json"}).output, "[]\n");
  EXPECT_EQ(ignore({"add", "thing/../thing"}).output, "Ignored from now on: " + home + "/.cache/thing\n")
      << "another home is not what a shell means by ~";
  const auto rules = parsedJson(ignore({"add", home + "/.cache/thing", "--json"}).output);
  ASSERT_TRUE(rules && rules->size() == 1) << "the same place has one rule";
  EXPECT_EQ((*rules)[0]["path"], home + "/.cache/thing");
  EXPECT_NE(ignore({"list"}).output.find("\t" + home + "/.cache/thing\n"), std::string::npos);

  for (const std::string& path : {folder.at("outside").bytes, std::string("../.."), home + "/way-out/x"}) {
    const CommandLineRun refused = ignore({"add", path});
    EXPECT_EQ(refused.code, 3) << path;
    EXPECT_NE(refused.errors.find("[cli.error.outsideHome]"), std::string::npos);
  }
  EXPECT_FALSE(folder.holds("outside/x"));

  folder.makeFolders("outside/data");
  folder.makeFolders("other/.local");
  folder.makeLink("other/.local/share", "../../outside/data");
  const CommandLineRun linked({"ignore", "add", folder.at("other/x").bytes, "--home", folder.at("other").bytes});
  EXPECT_EQ(linked.code, 3);
  EXPECT_NE(linked.errors.find("[cli.error.dataOutsideHome]"), std::string::npos);
  EXPECT_FALSE(folder.holds("outside/data/Quorvane"));
  EXPECT_EQ(ignore({"add", "mistyped"}).output,
            "Ignored from now on, though nothing stands there yet: " + home + "/.cache/mistyped\n");
  EXPECT_EQ(ignore({"remove", home + "/way-home/.cache/mistyped"}).code, 0) << "by a link that leads there";
  EXPECT_EQ(ignore({"remove", "nothing"}).code, 2);
  EXPECT_NE(ignore({"remove", "nothing"}).errors.find("[ignore.error.notFound]"), std::string::npos);

  const auto result = scanResultFromJson(CommandLineRun({"scan", "--json", "--home", home}).output);
  ASSERT_TRUE(result.has_value());
  EXPECT_TRUE(result->items.empty()) << "it is ignored";

  EXPECT_EQ(ignore({"remove", (*rules)[0]["id"].get<std::string>(), "--json"}).output, "[]\n");
  folder.write("home/.local/share/Quorvane/ignored-paths.json", "damaged");
  const CommandLineRun damaged = ignore({"add", "x"});
  EXPECT_EQ(damaged.code, 3);
  EXPECT_EQ(folder.read("home/.local/share/Quorvane/ignored-paths.json"), "damaged");
}

TEST(CommandLineTests, takesAnIgnoreRuleAwayByTheBeginningOfItsIdentifier) {
  const TempFolder home;
  const auto rule = [&](const std::string& id, const std::string& name) {
    const std::string path = home.at(name).bytes;
    return "{\"id\": \"" + id + "\", \"path\": \"" + path + "\", \"canonicalPath\": \"" + path + "\"}";
  };
  home.write(".local/share/Quorvane/ignored-paths.json",
             "[" + rule("AAAA0000-0000-4000-8000-000000000001", "one") + "," +
                 rule("AAAA0000-0000-4000-8000-000000000002", "two") + "," +
                 rule("CAFE0000-0000-4000-8000-000000000003", "three") + "," +
                 rule("BBBB0000-0000-4000-8000-000000000004", "cafe") + "]");
  const auto remove = [&](const std::string& which) {
    return CommandLineRun({"--home", home.path().bytes, "ignore", "remove", which}, {.workingFolder = home.path()});
  };
  const CommandLineRun several = remove("aaaa");
  EXPECT_EQ(several.code, 2);
  EXPECT_NE(several.errors.find("[cli.error.ambiguousIdentifier]"), std::string::npos);
  EXPECT_EQ(remove("BBB").code, 2) << "too short";
  EXPECT_EQ(remove("cafe").output, "No longer ignored: " + home.at("three").bytes + "\n");
  EXPECT_EQ(remove("./cafe").output, "No longer ignored: " + home.at("cafe").bytes + "\n");
}

TEST(CommandLineTests, scansAndShowsTheDisk) {
  const TempFolder home;
  home.write(".cache/mesa_shader_cache/a", "content");
  const auto run = [&](Words arguments, const CommandLineRun::Setting& setting = {}) {
    arguments.insert(arguments.end(), {"--home", home.path().bytes});
    return CommandLineRun(arguments, setting);
  };
  const auto result = scanResultFromJson(run({"scan", "--json"}).output);
  ASSERT_TRUE(result && result->items.size() == 1);
  const CommandLineRun people = run({"scan"});
  EXPECT_EQ(people.code, 0);
  EXPECT_EQ(people.errors, "") << "no bar without a terminal";
  EXPECT_NE(people.output.find("mesa_shader_cache"), std::string::npos);
  EXPECT_EQ(people.output.find('\x1b'), std::string::npos);

  const auto storage = parsedJson(run({"--json"}).output);
  ASSERT_TRUE(storage.has_value());
  EXPECT_GT((*storage)["storage"]["total"].get<std::int64_t>(), 0);
  EXPECT_NE(run({}).output.find("quorvane scan"), std::string::npos);

  const CommandLineRun missing({"scan", "--json", "--home", home.at("missing").bytes});
  EXPECT_EQ(missing.code, 3);
  EXPECT_NE(missing.output.find("scan.error.homeUnreadable"), std::string::npos);
}

TEST(CommandLineTests, ctrlCCancelsAndLeavesACleanLine) {
  const TempFolder home;
  home.write(".cache/folder/file", "content");
  const struct {
    std::vector<int> signals;
    int code;
  } cases[] = {{{SIGINT}, 130}, {{SIGTERM}, 143}, {{SIGHUP}, 129}, {{SIGTERM, SIGINT}, 143}, {{SIGINT}, 130}};
  for (const auto& [signals, code] : cases) {
    const CommandLineRun run = scanWithSignals(home.path(), signals);
    EXPECT_EQ(run.code, code);
    EXPECT_NE(run.output.find("\"scan.error.cancelled\""), std::string::npos);
    const std::size_t cleared = run.errors.rfind("\r\x1b[K");
    ASSERT_NE(cleared, std::string::npos);
    EXPECT_NE(run.errors.find("[scan.error.cancelled]", cleared), std::string::npos) << "told on a line of its own";
  }
}

TEST(CommandLineTests, overlooksSignalsThatItWasStartedToOverlook) {
  const TempFolder home;
  const auto before = std::signal(SIGHUP, SIG_IGN);
  const CommandLineRun run = scanWithSignals(home.path(), {SIGHUP});
  EXPECT_EQ(std::signal(SIGHUP, before), SIG_IGN);
  EXPECT_EQ(run.code, 0);
}

TEST(CommandLineTests, toldOfLostOutput) {
  const struct {
    const char* what;
    bool isTerminal;
    int failure;
    int code;
  } cases[] = {{"a full disk", false, ENOSPC, 4},
               {"a reader who has seen enough", false, EPIPE, 0},
               {"a disk that fails", false, EIO, 4},
               {"a terminal that is gone", true, EIO, 129}};
  for (const auto& [what, isTerminal, failure, code] : cases) {
    const CommandLineRun run({"--help"}, {.output = {.isTerminal = isTerminal, .failsWith = failure}});
    EXPECT_EQ(run.code, code) << what;
    EXPECT_EQ(run.errors.contains("[cli.error.outputFailed]"), code == 4) << what;
  }
}

TEST(TextStyleTests, followsTheTerminalAndTheEnvironment) {
  const struct {
    bool isLaidOut;
    EnvironmentVariables variables;
    bool hasColours, canRedraw;
    CharacterSet characters;
  } cases[] = {
      {false, {{"TERM", "xterm"}, {"LANG", "de_DE.UTF-8"}}, false, false, CharacterSet::unicode},
      {true, {{"TERM", "xterm"}, {"LANG", "C"}}, true, true, CharacterSet::ascii},
      {false, {{"TERM", "dumb"}, {"LC_CTYPE", "C.utf8"}, {"LANG", "C"}}, false, false, CharacterSet::unicode},
      {true, {{"LC_ALL", "C"}, {"LANG", "C.UTF-8"}}, false, false, CharacterSet::ascii},
      {true, {{"TERM", "xterm"}, {"NO_COLOR", "1"}}, false, true, CharacterSet::ascii},
      {true, {{"TERM", "xterm"}, {"NO_COLOR", ""}}, true, true, CharacterSet::ascii},
  };
  for (const auto& [isLaidOut, variables, hasColours, canRedraw, characters] : cases) {
    const bool isDumb = variables.contains("TERM") && variables.at("TERM") == "dumb";
    const KeepingChannel channel({.isTerminal = isLaidOut || isDumb, .columns = 93});
    EXPECT_EQ(textStyle(channel, variables), (TextStyle{isLaidOut, hasColours, canRedraw, characters, 93}));
  }
}

TEST(NearestWordTests, isOneThatWasProbablyMeant) {
  const Words words{"scan", "ignore", "applicationCache"};
  EXPECT_EQ(nearestWord("sacn", words), "scan");
  EXPECT_EQ(nearestWord("SCAN", words), "scan");
  EXPECT_EQ(nearestWord("ignor", words), "ignore");
  EXPECT_EQ(nearestWord("APP", words), "applicationCache");
  EXPECT_EQ(nearestWord("applicationcahce", words), "applicationCache");
  EXPECT_EQ(nearestWord("x", words), std::nullopt);
  EXPECT_EQ(nearestWord("status", words), std::nullopt);
}

}  // namespace
}  // namespace quorvane
