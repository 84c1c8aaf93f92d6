#include "tests/cli/DockerHome.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace quorvane {
namespace {

using testing::AllOf;
using testing::HasSubstr;
using testing::Not;

TEST(DockerCommandTests, saysThatThereIsNoClientOrNoEngine) {
  const DockerHome home;
  const CommandLineRun none = home.run({"docker"}, {.dockerPlaces = {{home.at("missing")}}});
  EXPECT_EQ(none.code, 3);
  EXPECT_THAT(none.errors, AllOf(HasSubstr("/usr/local/bin/docker"), HasSubstr("[docker.error.cliNotFound]")));
  const CommandLineRun silent = home.scripted({"docker"}, "echo 'Cannot connect \033[2J' >&2; exit 1");
  EXPECT_EQ(silent.code, 3);
  EXPECT_THAT(silent.errors,
              AllOf(HasSubstr("Cannot connect \\x1b[2J"), HasSubstr("[docker.error.engineUnavailable]")));
}

TEST(DockerCommandTests, makesWhatTheClientPrintsHarmless) {
  const DockerHome home;
  const CommandLineRun listed = home.scripted({"docker"}, DockerHome::engineScript("\\u001b[2J", "a\\nb"));
  EXPECT_EQ(listed.code, 0) << listed.errors;
  EXPECT_THAT(listed.output, AllOf(HasSubstr("\\x1b[2J:1"), HasSubstr("a\\nb"), Not(HasSubstr("\x1b"))));
  EXPECT_THAT(listed.output, HasSubstr("1 line of the client could not be read"));
}

TEST(DockerCommandTests, printsASnapshotWithVerdicts) {
  const DockerHome home;
  const CommandLineRun listed = home.scripted({"docker", "list", "--json"}, DockerHome::engineScript("tiny", "web"));
  ASSERT_EQ(listed.code, 0) << listed.errors;
  const Json json = parsedJson(listed.output).value_or(Json());
  EXPECT_EQ(json["cleanupScope"]["engineID"], "ID-1");
  EXPECT_EQ(json["images"][0]["safety"], "review");
  EXPECT_EQ(json["containers"][0]["safety"], "review");
  EXPECT_EQ(json["usages"][0]["kind"], 0);
  EXPECT_EQ(json["notices"][0]["count"], 1);
  EXPECT_EQ(json["notices"][0]["key"], "docker.notice.undecoded");
}

TEST(DockerCommandTests, saysWhenItIsNotCertainThatSomethingIsGone) {
  const DockerHome home;
  const std::string id(64, 'c');
  const std::string withRemoval = R"x([ "$1" = --host ] && shift 2
case "$*" in
  *"format {{json .Id}} "*) echo '")x" +
                                  id + R"x("'; exit 0 ;;
  *"{{json .State.Status}}"*) echo '"exited"'; exit 0 ;;
  "container ls"*"{{json .ID}}") echo '"not an identifier"'; exit 0 ;;
  "container rm"*) exit 0 ;;
esac
)x" + DockerHome::engineScript("tiny", "c");
  const std::vector<std::string> clean{"docker", "clean", "--select", "container:" + id, "--yes"};
  const CommandLineRun removed = home.scripted(clean, withRemoval);
  EXPECT_EQ(removed.code, 1);
  EXPECT_THAT(removed.output, HasSubstr("Of 1 it is not certain whether it was removed."));
  EXPECT_THAT(removed.errors, HasSubstr("[cleanup.command.unknown]"));
}

}  // namespace
}  // namespace quorvane
