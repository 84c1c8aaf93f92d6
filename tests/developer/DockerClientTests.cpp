#include "quorvane/developer/DockerClient.h"

#include "quorvane/developer/DockerEngine.h"
#include "quorvane/developer/DockerPrograms.h"
#include "quorvane/platform/SystemPlatform.h"
#include "tests/support/DockerRunners.h"
#include "tests/support/TempFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>

#include <unistd.h>

namespace quorvane {
namespace {

using testing::ElementsAre;
namespace fs = std::filesystem;

/// A client that is a script.
class DockerClientTests : public testing::Test {
 protected:
  FilePath script(const std::string& name, const std::string& text, fs::perms mode = fs::perms(0755)) const {
    folder_.write(name, "#!/bin/sh\n" + text);
    fs::permissions(folder_.at(name).bytes, mode);
    return folder_.at(name);
  }

  CommandResult resultOf(const std::string& text) {
    const DockerClient client(runner_, {.program = script("docker", text),
                                        .environment = {{"PATH", "/usr/bin:/bin"}},
                                        .timeLimit = std::chrono::milliseconds(300),
                                        .outputLimit = 1000});
    return client.run({}, {});
  }

  const TempFolder folder_;
  WatchedRunner runner_;
};

TEST_F(DockerClientTests, saysHowARunEnded) {
  EXPECT_EQ(resultOf("echo out; echo err >&2; exit 3"), (CommandResult{"out\n", "err\n", 3}));
  EXPECT_EQ(resultOf("echo before; sleep 60"), (CommandResult{"before\n", "Command timed out.", -1}));
  EXPECT_EQ(resultOf("sleep 60 & echo before"), (CommandResult{"before\n", "", 0})) << "what it left behind is ended";
  const CommandResult flood = resultOf("while :; do echo 0123456789012345678901234567890123456789; done");
  EXPECT_EQ(flood.exitCode, -1);
  EXPECT_LE(flood.output.size(), 1000U);
  const CommandResult much = resultOf("i=0; while [ $i -lt 99 ]; do echo 01234567890123456789; i=$((i+1)); done");
  EXPECT_EQ(much.error, "Too much output.");
  EXPECT_EQ(resultOf("kill -9 $$").exitCode, 137);
  const DockerClient none(runner_, {.program = folder_.at("missing")});
  EXPECT_EQ(none.run({}, {}), (CommandResult{"", "Unable to launch command.", -1}));
}

TEST_F(DockerClientTests, letsNothingLeadAPinnedRunElsewhere) {
  const std::map<std::string, std::string> environment{{"DOCKER_CONTEXT", "c"},    {"DOCKER_HOST", "tcp://elsewhere"},
                                                       {"DOCKER_TLS", "1"},        {"DOCKER_TLS_VERIFY", "1"},
                                                       {"DOCKER_CERT_PATH", "/x"}, {"DOCKER_CONFIG", "/own"},
                                                       {"LC_ALL", "de_DE"},        {"BUILDX_BUILDER", "far"},
                                                       {"BUILDX_CONFIG", "/x"},    {"PATH", "/bin"},
                                                       {"GOMAXPROCS", "2"}};
  const DockerClient client(runner_, {.program = {"/bin/true"}, .environment = environment});
  client.run({"info"}, {});
  client.runAt("unix:///run/a.sock", {"info"}, {});
  const auto requests = runner_.requests();
  auto own = environment;
  own.emplace("GOGC", "400");
  EXPECT_EQ(requests.at(0).environment, own);
  EXPECT_THAT(requests.at(0).arguments, ElementsAre("info"));
  EXPECT_THAT(requests.at(1).arguments, ElementsAre("--host", "unix:///run/a.sock", "info"));
  EXPECT_EQ(requests.at(1).environment, (std::map<std::string, std::string>{{"DOCKER_BUILDKIT", "0"},
                                                                            {"DOCKER_CONFIG", "/nonexistent/docker"},
                                                                            {"GOGC", "400"},
                                                                            {"GOMAXPROCS", "2"},
                                                                            {"LC_ALL", "C"},
                                                                            {"PATH", "/bin"}}));
}

TEST_F(DockerClientTests, takesTheFirstPlaceWithAProgramThatCanBeTrusted) {
  const auto fileSystem = makeSystemFileSystem();
  const FilePath good = script("good", "");
  const auto found = [&](std::vector<FilePath> places, std::uint32_t user) {
    return dockerProgram(*fileSystem, places, user);
  };
  const std::vector<FilePath> untrusted{folder_.at("missing"), folder_.path(), script("plain", "", fs::perms(0644)),
                                        script("group", "", fs::perms(0775)), script("others", "", fs::perms(0757))};
  for (const FilePath& place : untrusted) EXPECT_EQ(found({place, good}, ::geteuid()), good) << place.bytes;
  EXPECT_EQ(found(untrusted, ::geteuid()), std::nullopt);
  const FilePath second = script("second", "");
  EXPECT_EQ(found({good, second}, ::geteuid()), good);
  folder_.makeLink("link", good.bytes);
  EXPECT_EQ(found({folder_.at("link"), second}, ::geteuid()), folder_.at("link"));
  folder_.makeLink("badLink", folder_.at("others").bytes);
  EXPECT_EQ(found({folder_.at("badLink")}, ::geteuid()), std::nullopt) << "what a link leads to counts";
  if (::geteuid() == 0) {
    ASSERT_EQ(::chown(second.bytes.c_str(), 12345, 12345), 0);
    EXPECT_EQ(found({second}, 12345), second) << "the user's own";
    EXPECT_EQ(found({second}, 23456), std::nullopt) << "another user's";
  }
}

/// A client that pins: what it says of its context, the address, and the engine.
TEST_F(DockerClientTests, pinsAnEngineOnlyWithAllThreeAnswers) {
  std::map<std::string, SafeProcessResult> answers;
  runner_.answers = [&](const Words& arguments) { return answers.at(arguments[0] == "info" ? "info" : arguments[1]); };
  const DockerClient client(runner_, {.program = {"/bin/true"}});
  const std::map<std::string, SafeProcessResult> good{{"show", printed("desk\n")},
                                                      {"inspect", printed("\"unix:///run/a.sock\"\n")},
                                                      {"info", printed("\"ID-1\"\n")},
                                                      {"ls", printed("{\"Current\":true,\"Name\":\"old\"}\n")}};
  const DockerCleanupScope scope{"desk", "unix:///run/a.sock", "ID-1"};
  answers = good;
  EXPECT_EQ(pinnedEngine(client, {}), scope);
  answers["show"] = failed("Usage: docker context COMMAND");
  EXPECT_EQ(pinnedEngine(client, {}), (DockerCleanupScope{"old", scope.endpoint, scope.engineID})) << "an old client";
  answers["ls"] = printed("NAME DESCRIPTION\n");
  EXPECT_EQ(pinnedEngine(client, {}), std::nullopt);
  for (const auto& [command, bad] :
       {std::pair("show", printed("--help")), std::pair("inspect", printed("\"not an address\"")),
        std::pair("inspect", failed("no such context")), std::pair("info", printed("\"\"")),
        std::pair("info", failed("cannot connect")), std::pair("info", printed("garbage"))}) {
    answers = good;
    answers[command] = bad;
    EXPECT_EQ(pinnedEngine(client, {}), std::nullopt) << command << bad.standardOutput;
  }
}

}  // namespace
}  // namespace quorvane
