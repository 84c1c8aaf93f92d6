#include "quorvane/developer/DockerCleanupRetryService.h"
#include "tests/developer/CleanedDockerEngine.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>

namespace quorvane {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;
using Kind = DockerResourceKind;
using DockerRecheckTests = CleanedDockerEngine;

TEST_F(DockerRecheckTests, everyRecheckStopsARemovalWhoseReasonAppearsAfterTheReview) {
  const auto retagged = engine_->makeImage("retagged:1", "retagged"), taken = engine_->makeImage("taken:1", "taken"),
             lost = engine_->makeImage("lost:1", "lost");
  const auto gone = container("vanished"), renamed = container("renamed"), again = container("again");
  const auto started = engine_->ask({"create", "--network", "none", "--name", "started", "base:1", "/program", "wait"});
  // What is made first is made anew last: the engine tells of a volume in whole seconds.
  for (const char* volume : {"remade", "mounted", "relabelled"}) engine_->ask({"volume", "create", volume});
  const struct {
    DockerSelector target;
    std::vector<Words> changes;
    const char* reason;
  } cases[] = {
      {{Kind::images, retagged}, {{"tag", "retagged:1", "retagged:2"}}, "docker.failure.tagsChanged"},
      {{Kind::images, taken}, {{"create", "--network", "none", "taken:1", "/program"}}, "docker.failure.imageInUse"},
      {{Kind::images, lost}, {{"image", "rm", "lost:1"}}, "docker.failure.unknownObject"},
      {{Kind::containers, started}, {{"start", "started"}}, "docker.failure.containerState"},
      {{Kind::containers, renamed}, {{"rename", "renamed", "precious"}}, "docker.failure.renamed"},
      {{Kind::containers, again}, {{"start", "--attach", "again"}}, "docker.failure.ranAgain"},
      {{Kind::containers, gone}, {{"rm", "vanished"}}, "docker.failure.unknownObject"},
      {{Kind::volumes, "mounted"},
       {{"create", "--network", "none", "-v", "mounted:/v", "base:1", "/program"}},
       "docker.failure.volumeProtected"},
      {{Kind::volumes, "relabelled"},
       {{"volume", "rm", "relabelled"}, {"volume", "create", "--label", "quorvane.keep", "relabelled"}},
       "docker.failure.volumeProtected"},
      {{Kind::volumes, "remade"},
       {{"volume", "rm", "remade"}, {"volume", "create", "remade"}},
       "docker.failure.changed"},
  };
  for (const auto& each : cases) {
    const DockerCleanupPlan plan = planOf({each.target});
    hasActed_ = false;
    onceBefore({"info"}, [&] {  // in the last moment: the removal is announced already
      for (const Words& change : each.changes) engine_->ask(change);
    });
    const DockerCleanupReport report = remove(plan);
    EXPECT_TRUE(hasActed_) << each.reason;
    EXPECT_THAT(reasonsOf(report), ElementsAre(each.reason)) << each.target.id;
    runner_.before = nullptr;
    EXPECT_THAT(reasonsOf(remove(failedTargets(recorded()))), ElementsAre(each.reason)) << "nor by a retry";
  }
  EXPECT_EQ(removalCount(), 0U);
}

TEST_F(DockerRecheckTests, removesNothingFromAnotherEngine) {
  auto other = std::make_unique<TestDockerEngine>();
  fillBuildCache();
  const std::string id = container("here");
  DockerCleanupPlan plan = planOf({{Kind::containers, id}}, true);
  plan.targets[0].scope.endpoint = plan.prune->scope.endpoint = other->address();
  const DockerCleanupReport report = remove(plan);
  EXPECT_THAT(reasonsOf(report), ElementsAre("docker.failure.engineChanged", "docker.failure.engineChanged"));
  EXPECT_EQ(removalCount(), 0U);
  other.reset();
  EXPECT_THAT(reasonsOf(remove(plan)), ElementsAre("docker.failure.engineSilent", "docker.failure.engineSilent"));
}

TEST_F(DockerRecheckTests, aNameThatCanBeNoneIsRefusedWithoutRunningAnything) {
  DockerCleanupPlan plan = planOf({{Kind::containers, container("model")}});
  plan.targets[0].resource = Kind::volumes;
  for (const char* name : {".data", "--force", "a b", ""}) {
    plan.targets[0].target.commandTarget = name;
    EXPECT_THAT(reasonsOf(remove(plan)), ElementsAre("docker.failure.invalidName"));
  }
  EXPECT_EQ(removalCount(), 0U);
  EXPECT_TRUE(home_.recorded().empty());
}

TEST_F(DockerRecheckTests, prunesNoBuildCacheThatWasNotReviewed) {
  fillBuildCache();
  DockerCleanupPlan plan = planOf({}, true);
  ASSERT_TRUE(plan.prune && !plan.prune->reviewedTargets.empty());
  DockerCleanupPlan fewer = plan;
  fewer.prune->reviewedTargets.pop_back();
  EXPECT_THAT(reasonsOf(remove(fewer)), ElementsAre("docker.failure.cacheChanged"));
  EXPECT_EQ(failedTargets(recorded()), fewer) << "a retry has what was reviewed, and is refused alike";
  const std::string header = "CACHE ID   CACHE TYPE   SIZE   CREATED   LAST USED   USAGE   SHARED\n";
  for (const auto& [tables, reason] :
       {std::pair(std::string("garbage"), "docker.failure.cacheChanged"),
        std::pair("Build cache usage: 1B\n\n" + header + "other*   regular   1B   now   now   1   false\n",
                  "docker.failure.cacheInUse")}) {
    runner_.answers = [&](const Words& arguments) {
      return arguments.back() == "--verbose" ? std::optional(printed(tables)) : std::nullopt;
    };
    EXPECT_THAT(reasonsOf(remove(plan)), ElementsAre(reason));
  }
  fewer.prune->reviewedTargets.clear();
  EXPECT_THAT(reasonsOf(remove(fewer)), ElementsAre("docker.failure.nothingToPrune"));
  runner_.answers = nullptr;
  plan.prune->kind = DockerBulkKind::volume;
  EXPECT_THAT(reasonsOf(remove(plan)), ElementsAre("docker.failure.invalidName"));
  EXPECT_TRUE(failedTargets(recorded()).isEmpty()) << "of another kind there is no retry";
  EXPECT_EQ(removalCount(), 0U);
}

TEST_F(DockerRecheckTests, removesNoVolumeThatWasWrittenToOrStandsThereTwice) {
  engine_->ask({"volume", "create", "written"});
  const DockerCleanupPlan plan = planOf({{Kind::volumes, "written"}});
  runner_.answers = [](const Words& arguments) {
    const std::string row = R"({"Name":"written","Driver":"local","Labels":""})";
    return arguments[1] == "ls" ? std::optional(printed(row + "\n" + row + "\n")) : std::nullopt;
  };
  EXPECT_THAT(reasonsOf(remove(plan)), ElementsAre("docker.failure.changed"));
  runner_.answers = nullptr;
  const std::string folder = engine_->ask({"volume", "inspect", "--format", "{{.Mountpoint}}", "written"});
  std::ofstream(folder + "/late") << std::string(10'000, 'x');
  EXPECT_THAT(reasonsOf(remove(plan)), ElementsAre("docker.failure.changed"));
  EXPECT_EQ(removalCount(), 0U);
}

/// As in a history of former days, in a kept listing without it, and where the engine does not tell.
TEST_F(DockerRecheckTests, removesNothingThatMayBeAnotherThanWasReviewed) {
  engine_->ask({"volume", "create", "old"});
  const DockerCleanupPlan plan = planOf({{Kind::volumes, "old"}, {Kind::containers, container("old")}});
  ASSERT_TRUE(plan.targets.at(0).createdAt && plan.targets.at(1).startedAt);
  DockerCleanupPlan former = plan;
  former.targets[0].createdAt.reset();
  former.targets[0].reviewedTags = {"2026-11-21T05:04:03Z"};
  former.targets[1].startedAt.reset();
  EXPECT_THAT(reasonsOf(remove(former)), testing::Each("docker.failure.changed"));
  for (const char* answer : {R"({"name":"old","createdAt":""})", R"({"name":"other","createdAt":"x"})", "null", ""}) {
    runner_.answers = [answer](const Words& arguments) {
      return arguments[1] == "inspect" && arguments[3].starts_with('{') && arguments[3] != "{{json .Id}}" &&
                     arguments[3] != "{{json .State.Status}}"
                 ? std::optional(printed(answer))
                 : std::nullopt;
    };
    EXPECT_THAT(reasonsOf(remove(plan)), testing::Each("docker.failure.changed")) << answer;
  }
  EXPECT_EQ(removalCount(), 0U);
}

TEST_F(DockerRecheckTests, removesNoContainerThatRanOnAfterTheReview) {
  makeBase();
  const std::string busy =
      engine_->ask({"run", "--detach", "--network", "none", "--name", "ran-on", "base:1", "/program", "wait"});
  const auto before = DockerService(*client_, home_.clock()).survey({});
  ASSERT_TRUE(before);
  engine_->ask({"stop", "--time", "0", "ran-on"});
  const auto review =
      DockerReviewer(*client_, home_.clock()).review({.named = {{Kind::containers, busy}}}, before->snapshot, {});
  ASSERT_TRUE(review);
  EXPECT_TRUE(review->plan.removesNothing());
  EXPECT_THAT(reasonsOf(remove(review->plan)), ElementsAre("docker.failure.changed"));
  EXPECT_TRUE(hasContainer(busy));
}

TEST_F(DockerRecheckTests, recordsWhatWasRefusedBeforeAndTriesNoneOfItAgain) {
  makeBase();
  const std::string busy =
      engine_->ask({"run", "--detach", "--network", "none", "--name", "busy", "base:1", "/program", "wait"});
  const auto review = DockerReviewer(*client_, home_.clock())
                          .review({.named = {{Kind::containers, busy}, {Kind::volumes, "nowhere"}}}, std::nullopt, {});
  ASSERT_TRUE(review && review->plan.removesNothing());
  EXPECT_TRUE(remove(review->plan, {.isRehearsal = true}).result.historyItems.empty());
  EXPECT_THAT(recorded(), IsEmpty());

  const DockerCleanupReport report = remove(review->plan);
  EXPECT_THAT(reasonsOf(report), ElementsAre("docker.failure.protected", "docker.failure.unknownObject"));
  EXPECT_EQ(report.outcomes.at(0).failedCount, 1);
  const auto entries = recorded();
  ASSERT_THAT(entries, SizeIs(2));
  EXPECT_EQ(entries[0].items.at(0).failureCategory, CleanupFailureCategory::protected_);
  EXPECT_EQ(entries[1].items.at(0).originalPath.bytes, "docker://volumes/nowhere");
  EXPECT_TRUE(failedTargets(entries).isEmpty()) << "what it does until it ends was not reviewed";

  const std::string ended = container("ended");
  DockerCleanupPlan mixed = planOf({{Kind::containers, ended}});
  mixed.refused = review->plan.refused;
  EXPECT_EQ(remove(mixed).result.successfulTargets.size(), 1U);
  EXPECT_THAT(recorded(), SizeIs(5));
  const std::string other = container("other");
  mixed = planOf({{Kind::containers, other}});
  mixed.refused = review->plan.refused;
  home_.files().countOnly({FileCall::renameReplacing});
  home_.files().failAt(home_.files().calls() + 1);
  EXPECT_FALSE(DockerCleanupGuard(services()).remove(mixed, {}));
  EXPECT_TRUE(hasContainer(other)) << "what cannot be recorded ends the run";
  EXPECT_THAT(recorded(), SizeIs(5));
  engine_->ask({"rm", "--force", busy});
}

}  // namespace
}  // namespace quorvane
