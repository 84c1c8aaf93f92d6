#include "tests/cli/DockerHome.h"
#include "tests/support/TestDockerEngine.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>

namespace quorvane {
namespace {

using testing::AllOf;
using testing::HasSubstr;
using testing::Not;
using Words = std::vector<std::string>;

/// The program, Debian's client, and a real engine.
class DockerCleanCommandTests : public testing::Test {
 protected:
  static void SetUpTestSuite() {
    if (TestDockerEngine::missing()) return;
    engine_ = std::make_unique<TestDockerEngine>();
    engine_->makeImage("base:1", "base");
  }
  static void TearDownTestSuite() { engine_.reset(); }

  void SetUp() override {
    if (const auto reason = TestDockerEngine::missing()) GTEST_SKIP() << *reason;
  }

  CommandLineRun run(Words arguments, Words answers = {}) const {
    const bool isTerminal = !answers.empty();
    CommandLineRun::Setting setting{.errors = {.isTerminal = isTerminal},
                                    .input = {.isTerminal = isTerminal, .lines = std::move(answers)}};
    setting.variables = engine_->environment();
    setting.dockerPlaces = {{"/usr/bin/docker"}};
    return home_.run(std::move(arguments), setting);
  }

  Json json(Words arguments, int code) const {
    arguments.emplace_back("--json");
    const CommandLineRun done = run(std::move(arguments));
    EXPECT_EQ(done.code, code) << done.errors;
    return parsedJson(done.output).value_or(Json());
  }

  std::string kept(const std::string& name) const {
    const std::string text = run({"docker", "--json"}).output;
    return home_.keep(name, text);
  }

  static bool hasVolume(const std::string& name) { return engine_->accepts({"volume", "inspect", name}); }

  static inline std::unique_ptr<TestDockerEngine> engine_;
  const DockerHome home_;
};

TEST_F(DockerCleanCommandTests, removesNothingWithoutANameOrAnAnswer) {
  engine_->ask({"volume", "create", "asked"});
  const Words clean{"docker", "clean", "--select", "volume:asked"};
  EXPECT_THAT(run({"docker", "clean"}).errors, HasSubstr("[cli.error.dockerNothingNamed]"));
  EXPECT_EQ(run({"docker", "clean", "--yes"}).code, 2);
  EXPECT_EQ(run({"docker", "clean", "--select", "image:base:1"}).code, 2);
  EXPECT_EQ(run(clean).code, 3);
  const CommandLineRun declined = run(clean, {"?", "n"});
  EXPECT_EQ(declined.code, 0);
  EXPECT_THAT(declined.errors,
              AllOf(HasSubstr("for good"), HasSubstr("Docker cannot put it back"), HasSubstr("Nothing was removed")));
  const CommandLineRun rehearsed = run({"docker", "clean", "--select", "volume:asked", "--dry-run"});
  EXPECT_EQ(rehearsed.code, 0);
  for (const std::string& text : {declined.errors, rehearsed.output}) EXPECT_THAT(text, HasSubstr(engine_->address()));
  EXPECT_TRUE(hasVolume("asked"));
  const CommandLineRun done = run(clean, {"y"});
  EXPECT_EQ(done.code, 0) << done.errors;
  EXPECT_THAT(done.output, HasSubstr("Removed 1 object, for good"));
  EXPECT_FALSE(hasVolume("asked"));
}

TEST_F(DockerCleanCommandTests, runsNoPruneThatHasNothingToPrune) {
  const CommandLineRun done = run({"docker", "clean", "--prune-build-cache", "--yes"});
  EXPECT_EQ(done.code, 0) << done.errors;
  EXPECT_THAT(done.output, AllOf(HasSubstr("Nothing to prune"), Not(HasSubstr("was pruned"))));
  EXPECT_THAT(run({"history"}).output, Not(HasSubstr("Docker")));
}

TEST_F(DockerCleanCommandTests, printsOutcomesItemsAndFailures) {
  const std::string unknown(64, 'd');
  engine_->ask({"volume", "create", "shown"});
  const Json done = json({"docker", "clean", "--select", "volume:shown", "--select", "container:" + unknown, "--select",
                          "volume:.data", "--yes"},
                         1);
  EXPECT_EQ(done["outcomes"][0]["resource"], 1);
  EXPECT_EQ(done["outcomes"][0]["failedCount"], 1) << "refused before anything was tried";
  EXPECT_EQ(done["outcomes"][1]["resource"], 2);
  EXPECT_EQ(done["outcomes"][1]["successfulCount"], 1);
  EXPECT_EQ(done["historyItems"][1]["originalPath"], "docker://volumes/shown");
  EXPECT_EQ(done["failures"],
            Json::parse(R"([{"target":")" + unknown + R"(","resource":1,"reasonKey":"docker.failure.unknownObject"},
      {"target":".data","resource":2,"reasonKey":"docker.failure.invalidName"}])"));
  const Json rehearsed = json({"docker", "clean", "--safe", "--prune-build-cache", "--dry-run"}, 0);
  EXPECT_EQ(rehearsed["dryRun"], true);
  EXPECT_EQ(rehearsed["wouldPruneBuildCache"], false) << "there is no build cache";
}

TEST_F(DockerCleanCommandTests, removesWhatAKeptListingHolds) {
  engine_->ask({"volume", "create", "listed"});
  const std::string file = kept("engine.json");
  engine_->ask({"volume", "create", "later"});
  const CommandLineRun later = run({"docker", "clean", "--from", file, "--select", "volume:later", "--yes"});
  EXPECT_EQ(later.code, 2);
  EXPECT_THAT(later.errors, HasSubstr("[cli.error.notReviewed]"));
  const CommandLineRun done = run({"docker", "clean", "--from", file, "--select", "volume:listed", "--yes"});
  EXPECT_EQ(done.code, 0) << done.errors;
  EXPECT_TRUE(hasVolume("later") && !hasVolume("listed"));
  const Json again = json({"docker", "clean", "--from", file, "--select", "volume:listed", "--yes"}, 1);
  EXPECT_EQ(again["failures"][0]["reasonKey"], "docker.failure.unknownObject");
}

TEST_F(DockerCleanCommandTests, doesNotBelieveAKeptListing) {
  engine_->ask({"volume", "create", "precious"});
  const Json listing = parsedJson(run({"docker", "--json"}).output).value_or(Json());
  const auto changed = [&](const std::function<void(Json&)>& change) {
    Json json = listing;
    change(json);
    return home_.keep("changed.json", json.dump());
  };
  const struct {
    std::function<void(Json&)> change;
    int code;
    const char* key;
  } cases[] = {
      {[](Json& json) { json["checkedAt"] = "2020-01-01T00:00:00Z"; }, 3, "cli.error.dockerReviewStale"},
      {[](Json& json) { json["checkedAt"] = "2100-01-01T00:00:00Z"; }, 3, "cli.error.futureReview"},
      {[](Json& json) { json.erase("volumes"); }, 3, "cli.error.dockerReviewUndecodableAt"},
      {[](Json& json) { json.erase("cleanupScope"); }, 3, "docker.review.error.notPinned"},
      {[](Json& json) { json["cleanupScope"]["endpoint"] = "ssh://-oProxyCommand=x"; }, 3,
       "docker.review.error.foreignScope"},
      {[](Json& json) { json["cleanupScope"]["endpoint"] = "tcp://127.0.0.1:1"; }, 3,
       "docker.review.error.foreignScope"},
      {[](Json& json) { json["cleanupScope"]["engineID"] = "another"; }, 1, "docker.failure.engineChanged"},
  };
  for (const auto& each : cases) {
    const CommandLineRun refused =
        run({"docker", "clean", "--from", changed(each.change), "--select", "volume:precious", "--yes"});
    EXPECT_EQ(refused.code, each.code) << each.key;
    EXPECT_THAT(refused.errors, HasSubstr(std::string("[") + each.key + "]"));
  }
  EXPECT_TRUE(hasVolume("precious"));
}

TEST_F(DockerCleanCommandTests, isInTheHistoryAndCannotBeUndone) {
  engine_->ask({"volume", "create", "past"});
  ASSERT_EQ(run({"docker", "clean", "--select", "volume:past", "--yes"}).code, 0);
  EXPECT_THAT(run({"history"}).output, AllOf(HasSubstr("removed 1 Docker object"), HasSubstr("docker://volumes/past")));
  const CommandLineRun undone = run({"undo"});
  EXPECT_EQ(undone.code, 3);
  EXPECT_THAT(undone.errors, HasSubstr("[cli.error.lastRunIrreversible]"));
  const Json history = json({"history"}, 0);
  const CommandLineRun restored = run({"restore", history[0]["id"].get<std::string>()});
  EXPECT_EQ(restored.code, 1);
  EXPECT_THAT(restored.errors, HasSubstr("[recovery.failure.unsupported]"));
  EXPECT_THAT(run({"history", "show", history[0]["id"].get<std::string>()}).output, HasSubstr("docker://volumes/past"));
}

TEST_F(DockerCleanCommandTests, triesAgainWhatFailed) {
  EXPECT_THAT(run({"docker", "retry"}).errors, HasSubstr("[docker.retry.error.nothing]"));
  const std::string image = engine_->makeImage("twice:1", "twice");
  engine_->ask({"tag", "twice:1", "second:1"});
  EXPECT_EQ(run({"docker", "clean", "--select", "image:" + image, "--yes"}).code, 1);
  EXPECT_EQ(run({"docker", "retry"}).code, 3) << "nobody can be asked";
  EXPECT_THAT(run({"docker", "retry"}, {"n"}).errors,
              AllOf(HasSubstr("What the run of 2"), HasSubstr(engine_->address())));
  const Json still = json({"docker", "retry", "--yes"}, 1);
  EXPECT_EQ(still["failures"][0]["reasonKey"], "docker.failure.refused");
  engine_->ask({"rmi", "second:1"});
  const Json changed = json({"docker", "retry", "--yes"}, 1);
  EXPECT_EQ(changed["failures"][0]["reasonKey"], "docker.failure.tagsChanged") << "it was reviewed with two names";
}

}  // namespace
}  // namespace quorvane
