#include "quorvane/developer/DockerCleanupRetryService.h"
#include "tests/developer/CleanedDockerEngine.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <csignal>

#include <sys/wait.h>
#include <unistd.h>

namespace quorvane {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;
using Kind = DockerResourceKind;
using DockerCleanupGuardTests = CleanedDockerEngine;

TEST_F(DockerCleanupGuardTests, removesExactlyWhatWasReviewed) {
  const std::string image = engine_->makeImage("gone:1", std::string(1'000'000, 'x')),
                    stays = engine_->makeImage("stays:1", "stays");
  const std::string ended = container("ended"), rests = container("rests");
  for (const char* name : {"gone", "stays"}) engine_->ask({"volume", "create", name});
  const DockerCleanupPlan plan = planOf({{Kind::containers, ended}, {Kind::volumes, "gone"}, {Kind::images, image}});
  useEnvironment({{"DOCKER_HOST", "unix:///nonexistent.sock"}, {"DOCKER_CONTEXT", "nonexistent"}});
  const DockerCleanupReport report = remove(plan);
  EXPECT_THAT(report.failures, IsEmpty());
  EXPECT_FALSE(hasContainer(ended) || hasVolume("gone") || hasImage(image));
  EXPECT_TRUE(hasContainer(rests) && hasVolume("stays") && hasImage(stays));
  std::vector<Words> removals;
  for (const ProcessRequest& request : runner_.requests())
    if (std::ranges::count(request.arguments, "rm") > 0) removals.push_back(request.arguments);
  EXPECT_THAT(removals, ElementsAre(ElementsAre("--host", engine_->address(), "container", "rm", ended),
                                    ElementsAre("--host", engine_->address(), "volume", "rm", "gone"),
                                    ElementsAre("--host", engine_->address(), "image", "rm", "--no-prune", image)));
  ASSERT_THAT(report.outcomes, SizeIs(3));
  EXPECT_EQ(report.outcomes[0].resource, Kind::images);
  EXPECT_TRUE(report.outcomes[0].isMeasured);
  EXPECT_GE(report.outcomes[0].reclaimedBytes, 1'000'000) << "the engine's own figure";
  EXPECT_TRUE(report.outcomes[0].historyWasRecorded);
  const auto entries = recorded();
  ASSERT_THAT(entries, SizeIs(3));
  EXPECT_EQ(entries[0].source, CleaningHistorySource::docker);
  EXPECT_EQ(entries[0].items[0].originalPath.bytes, "docker://images/" + image);
  EXPECT_EQ(entries[1].items[0].originalPath.bytes, "docker://volumes/gone");
  for (const CleaningHistoryEntry& entry : entries) {
    EXPECT_EQ(entry.items[0].outcome, CleaningHistoryItemOutcome::removed);
    EXPECT_FALSE(isPending(entry.items[0]));
    EXPECT_EQ(entry.itemCount, 1);
  }
}

TEST_F(DockerCleanupGuardTests, prunesTheBuildCacheAsOneOperation) {
  fillBuildCache();
  const DockerCleanupReport report = remove(planOf({}, true));
  EXPECT_THAT(report.failures, IsEmpty());
  ASSERT_THAT(report.result.historyItems, SizeIs(1));
  EXPECT_EQ(report.result.historyItems[0].originalPath.bytes, "docker://builder/prune");
  EXPECT_EQ(report.outcomes.at(0).resource, Kind::buildCache);
  EXPECT_EQ(runner_.countOf({"builder", "prune", "--force"}), 1U);
  EXPECT_GT(report.prunedCount, 0);
  EXPECT_GT(report.result.historyItems[0].size, 0);
  EXPECT_TRUE(planOf({}, true).isEmpty()) << "nothing is left to prune";

  fillBuildCache();
  const DockerCleanupPlan plan = planOf({}, true);
  ASSERT_TRUE(plan.prune);
  onceBefore({"builder", "prune"}, [] { engine_->ask({"builder", "prune", "--force"}); });
  const DockerCleanupReport late = remove(plan);
  EXPECT_THAT(late.failures, IsEmpty());
  EXPECT_EQ(late.prunedCount, 0) << "somebody else removed it";
  EXPECT_EQ(late.result.historyItems.at(0).size, 0);
}

TEST_F(DockerCleanupGuardTests, removesSafeImagesBeforeThoseThatTheyWereBuiltOn) {
  container("grounds");  // so that there is an image to build on
  engine_->buildInSteps("base:1", "whole:1");
  const DockerReview none = reviewOfSafe();
  EXPECT_TRUE(none.plan.isEmpty());
  EXPECT_EQ(none.builtUponCount, 2) << "a named image was built on them";
  engine_->makeImage("whole:1", "another");  // takes the name
  const DockerReview review = reviewOfSafe();
  EXPECT_THAT(review.plan.targets, SizeIs(3));
  EXPECT_EQ(review.builtUponCount, 0);
  EXPECT_THAT(remove(review.plan).failures, IsEmpty());
}

TEST_F(DockerCleanupGuardTests, removesADeadContainer) {
  makeBase();
  const std::string dead = engine_->makeDeadContainer("base:1", "dead");
  const auto survey = DockerService(*client_, home_.clock()).survey({});
  ASSERT_TRUE(survey);
  const auto listed = std::ranges::find(survey->snapshot.containers, dead, &DockerContainerRecord::id);
  ASSERT_NE(listed, survey->snapshot.containers.end());
  EXPECT_EQ(listed->state, "dead");
  EXPECT_THAT(remove(planOf({{Kind::containers, dead}})).failures, IsEmpty());
  EXPECT_FALSE(hasContainer(dead));
}

TEST_F(DockerCleanupGuardTests, removesNothingThatCannotBeAnnounced) {
  const std::string first = container("first"), second = container("second");
  const DockerCleanupPlan plan = planOf({{Kind::containers, first}, {Kind::containers, second}});
  home_.files().countOnly({FileCall::renameReplacing});
  home_.files().failAt(home_.files().calls() + 1);
  const auto refused = DockerCleanupGuard(services()).remove(plan, {});
  ASSERT_FALSE(refused.has_value());
  EXPECT_EQ(refused.error().fault, RecoveryStoreFault::notWritten);
  EXPECT_TRUE(hasContainer(first));

  home_.files().failAt(home_.files().calls() + 2);
  const DockerCleanupReport once = remove(plan);
  EXPECT_THAT(reasonsOf(once), ElementsAre("docker.failure.historyUnavailable"));
  EXPECT_TRUE(once.outcomes.at(0).historyWasRecorded) << "the receipt was written at last";
  EXPECT_FALSE(isPending(home_.recorded().at(0)));

  const std::string third = container("third");
  const DockerCleanupPlan later = planOf({{Kind::containers, third}, {Kind::containers, second}});
  home_.files().failAt(home_.files().calls() + 2, FaultSpan::fromThereOn);
  const DockerCleanupReport report = remove(later);
  EXPECT_THAT(reasonsOf(report), ElementsAre("docker.failure.historyUnavailable"));
  EXPECT_FALSE(report.outcomes.at(0).historyWasRecorded);
  EXPECT_FALSE(hasContainer(first) || hasContainer(third)) << "announced, so removed";
  EXPECT_TRUE(hasContainer(second));

  home_.files().failAt(0);
  const auto entries = recorded();
  ASSERT_THAT(entries, SizeIs(2));
  EXPECT_EQ(entries[0].items[0].outcome, CleaningHistoryItemOutcome::removed) << "the next start finds out";
}

TEST_F(DockerCleanupGuardTests, countsOnlyWhatIsSeenToBeGone) {
  const struct {
    SafeProcessResult listing;
    const char* reason;
    bool staysOpen;
  } cases[] = {
      {printed("\"" + std::string(63, 'a') + "\"\n"), "cleanup.command.unknown", true},
      {printed("garbage\n"), "cleanup.command.unknown", true},
      {failed("refused"), "cleanup.command.unknown", true},
      {printed(""), "", false},
  };
  for (const auto& each : cases) {
    const std::string id = container("seen");
    const DockerCleanupPlan plan = planOf({{Kind::containers, id}});
    runner_.answers = [&](const Words& arguments) -> std::optional<SafeProcessResult> {
      const bool isVerification = arguments.size() == 6 && arguments[5] == "{{json .ID}}" && arguments[1] == "ls";
      return isVerification ? std::optional(each.listing) : std::nullopt;
    };
    const DockerCleanupReport report = remove(plan);
    EXPECT_EQ(report.failures.empty() ? "" : report.failures[0].refusal.reasonKey, each.reason);
    EXPECT_EQ(isPending(report.result.historyItems.at(0)), each.staysOpen);
    runner_.answers = nullptr;
    EXPECT_EQ(recorded().at(0).items[0].outcome, CleaningHistoryItemOutcome::removed) << "the engine was asked again";
  }
  const std::string id = container("present");
  const DockerCleanupPlan plan = planOf({{Kind::containers, id}});
  runner_.answers = [](const Words& arguments) {
    return arguments[1] == "rm" ? std::optional(printed("done")) : std::nullopt;
  };
  EXPECT_THAT(reasonsOf(remove(plan)), ElementsAre("cleanup.command.present"));

  const std::string gone = container("gone");
  const DockerCleanupPlan planOfGone = planOf({{Kind::containers, gone}});
  runner_.answers = [&](const Words& arguments) -> std::optional<SafeProcessResult> {
    if (arguments[1] != "rm") return std::nullopt;
    engine_->ask({"rm", gone});
    return failed("connection lost");
  };
  EXPECT_THAT(reasonsOf(remove(planOfGone)), IsEmpty()) << "the client may fail with the object gone";
}

TEST_F(DockerCleanupGuardTests, removesNoMoreOfAKindThatItCannotLookFor) {
  for (const char* name : {"blindA", "blindB"}) engine_->ask({"volume", "create", name});
  const std::string id = container("sighted");
  const DockerCleanupPlan plan = planOf({{Kind::volumes, "blindA"}, {Kind::volumes, "blindB"}, {Kind::containers, id}});
  runner_.answers = [&](const Words& arguments) {
    const bool isVerification =
        runner_.countOf({"volume", "rm"}) > 0 && arguments[0] == "volume" && arguments[1] == "ls";
    return isVerification ? std::optional(printed("garbage\n")) : std::nullopt;
  };
  EXPECT_THAT(reasonsOf(remove(plan)), ElementsAre("cleanup.command.unknown", "docker.failure.unverifiable"));
  runner_.answers = nullptr;
  EXPECT_TRUE(hasVolume("blindB") && !hasContainer(id));
}

TEST_F(DockerCleanupGuardTests, aVolumeThatWasMadeAnewIsNotTheOneThatWasRemoved) {
  engine_->ask({"volume", "create", "successor"});
  const DockerCleanupPlan plan = planOf({{Kind::volumes, "successor"}});
  const struct {
    const char* createdAt;
    std::vector<std::string> reasons;
  } cases[] = {{"2000-01-01T00:00:00Z", {}}, {"", {"cleanup.command.unknown"}}};
  for (const auto& each : cases) {
    CleaningHistoryItem open;
    open.dockerTarget = plan.targets.at(0);
    runner_.answers = [&](const Words& arguments) -> std::optional<SafeProcessResult> {
      if (arguments[0] != "volume" || arguments[1] == "ls") return std::nullopt;
      if (arguments[1] == "rm") return printed("successor");
      const bool isBefore = runner_.countOf({"volume", "rm"}) == 0;
      return printed(R"({"name":"successor","createdAt":")" +
                     (isBefore ? *plan.targets[0].createdAt : std::string(each.createdAt)) + "\"}");
    };
    check_->begin();
    EXPECT_EQ(check_->look(open), IrreversibleFinding::stillThere) << "not begun";
    EXPECT_EQ(reasonsOf(remove(plan)), each.reasons);
    check_->begin();
    EXPECT_EQ(check_->look(open), each.reasons.empty() ? IrreversibleFinding::gone : IrreversibleFinding::unknown);
    runner_.forget();
  }
}

TEST_F(DockerCleanupGuardTests, anInterruptedPruneIsSettledOnlyWhenItTookAllOrNothing) {
  const std::string header =
      "Build cache usage: 1B\n\nCACHE ID   CACHE TYPE   SIZE   CREATED   LAST USED   USAGE   SHARED\n";
  const DockerCleanupScope scope = pinnedEngine(*client_, {}).value_or(DockerCleanupScope());
  const auto row = [](const char* id) { return std::string(id) + "   regular   1B   now   now   1   false\n"; };
  const auto find = [&](const std::string& tables, std::vector<DockerCleanupTarget> reviewed) {
    CleaningHistoryItem open;
    open.dockerOperation = {DockerBulkKind::buildCache, scope, std::move(reviewed)};
    runner_.answers = [&](const Words& arguments) {
      return arguments.back() == "--verbose" ? std::optional(printed(tables)) : std::nullopt;
    };
    check_->begin();
    return check_->look(open);
  };
  const std::vector<DockerCleanupTarget> both{{"a", "regular", {}, 1}, {"b", "regular", {}, 1}};
  EXPECT_EQ(find(header, both), IrreversibleFinding::gone);
  EXPECT_EQ(find(header + row("b"), both), IrreversibleFinding::unknown);
  EXPECT_EQ(find(header + row("a") + row("b*"), both), IrreversibleFinding::stillThere);
  EXPECT_EQ(find(header, {}), IrreversibleFinding::stillThere);
  EXPECT_EQ(find("garbage", both), IrreversibleFinding::unknown);
}

TEST_F(DockerCleanupGuardTests, doesNotMeasureWhereMoreIsUsedThanBefore) {
  const DockerCleanupPlan plan = planOf({{Kind::containers, container("grown")}});
  runner_.answers = [&](const Words& arguments) {
    const std::string size = runner_.countOf({"container", "rm"}) == 0 ? "1kB" : "2kB";
    const std::string line = R"({"Type":"Containers","TotalCount":"1","Active":"0","Size":")" + size + "\"}";
    return arguments[1] == "df" ? std::optional(printed(line)) : std::nullopt;
  };
  const DockerCleanupOutcome outcome = remove(plan).outcomes.at(0);
  EXPECT_TRUE(outcome.usageGrew);
  EXPECT_FALSE(outcome.isMeasured || outcome.measurementUnavailable);
}

TEST_F(DockerCleanupGuardTests, asksNothingTwiceInOneSettling) {
  CleaningHistoryItem open;
  open.dockerTarget = planOf({{Kind::containers, container("asked")}}).targets.at(0);
  CleaningHistoryItem other = open;
  other.dockerTarget->target.commandTarget = std::string(64, 'a');
  runner_.forget();
  for (const bool isSilent : {false, true}) {
    runner_.answers = [&](const Words&) {
      SafeProcessResult late = failed("");
      late.didTimeOut = true;
      return isSilent ? std::optional(late) : std::nullopt;
    };
    check_->begin();
    EXPECT_EQ(check_->look(open), isSilent ? IrreversibleFinding::unknown : IrreversibleFinding::stillThere);
    EXPECT_EQ(check_->look(other), isSilent ? IrreversibleFinding::unknown : IrreversibleFinding::gone);
    EXPECT_EQ(runner_.requests().size(), isSilent ? 1U : 2U);
    runner_.forget();
  }
}

TEST_F(DockerCleanupGuardTests, goesOnAfterARefusalAndSaysWhatTheEngineSaid) {
  const std::string image = engine_->makeImage("several:1", "several");
  engine_->ask({"tag", "several:1", "other:1"});
  const std::string id = container("after");
  const DockerCleanupReport report = remove(planOf({{Kind::images, image}, {Kind::containers, id}}));
  EXPECT_THAT(reasonsOf(report), ElementsAre("docker.failure.refused"));
  EXPECT_THAT(report.failures[0].refusal.detail, testing::HasSubstr("must be forced"));
  EXPECT_EQ(report.result.historyItems.at(0).failureReason, home_.services().texts("docker.failure.refusedPlainly"));
  EXPECT_TRUE(hasImage(image));
  EXPECT_FALSE(hasContainer(id));
}

TEST_F(DockerCleanupGuardTests, leavesOpenWhatAClientWasCutOffFrom) {
  fillBuildCache();
  const std::string id = container("slow");
  const DockerCleanupPlan plan = planOf({{Kind::containers, id}}, true);
  for (const bool didTimeOut : {true, false}) {
    runner_.answers = [didTimeOut](const Words& arguments) -> std::optional<SafeProcessResult> {
      if (arguments[1] != "rm" && arguments[1] != "prune") return std::nullopt;
      SafeProcessResult result = failed("", didTimeOut ? 0 : 137);
      result.didTimeOut = didTimeOut;
      return result;
    };
    const DockerCleanupReport report = remove(plan);
    EXPECT_THAT(reasonsOf(report), ElementsAre("cleanup.command.unknown", "cleanup.command.unknown"));
    for (const CleaningHistoryItem& item : report.result.historyItems) EXPECT_TRUE(isPending(item));
    runner_.answers = nullptr;
  }
  engine_->ask({"rm", id});  // what the engine was asked for happens at last
  for (const CleaningHistoryEntry& entry : recorded())
    if (entry.items[0].dockerTarget) {
      EXPECT_EQ(entry.items[0].outcome, CleaningHistoryItemOutcome::removed);
    }
}

TEST_F(DockerCleanupGuardTests, aRehearsalChecksAndChangesNothing) {
  const std::string id = container("rehearsed");
  const DockerCleanupReport report = remove(planOf({{Kind::containers, id}}), {.isRehearsal = true});
  EXPECT_THAT(report.wouldRemove.targets, SizeIs(1));
  EXPECT_TRUE(hasContainer(id));
  EXPECT_FALSE(home_.folder().holds("data/Quorvane/history.json"));
}

TEST_F(DockerCleanupGuardTests, aStopEndsTheRunAfterTheTargetInHand) {
  const std::string first = container("stopA"), second = container("stopB");
  StopSource stop;
  onceBefore({"container", "rm"}, [&] { stop.requestStop(); });
  const DockerCleanupReport report =
      remove(planOf({{Kind::containers, first}, {Kind::containers, second}}), {.stop = stop.token()});
  EXPECT_TRUE(report.wasStopped);
  EXPECT_FALSE(hasContainer(first));
  EXPECT_TRUE(hasContainer(second));
}

TEST_F(DockerCleanupGuardTests, settlesAKilledRemovalByAskingTheEngineAndNeverRepeatsIt) {
  const Words removal{"container", "rm"},
      verification{"container", "ls", "--all", "--no-trunc", "--format", "{{json .ID}}"};
  for (const bool isGone : {false, true}) {
    const std::string id = container(isGone ? "killedAfter" : "killedBefore");
    const DockerCleanupPlan plan = planOf({{Kind::containers, id}});
    const pid_t child = ::fork();
    if (child == 0) {
      onceBefore(isGone ? verification : removal, [] { ::raise(SIGKILL); });
      static_cast<void>(DockerCleanupGuard(services()).remove(plan, {}));
      ::_exit(0);
    }
    int status = 0;
    ASSERT_EQ(::waitpid(child, &status, 0), child);
    ASSERT_TRUE(WIFSIGNALED(status));

    runner_.answers = [](const Words& arguments) {
      return arguments[0] == "info" ? std::optional(printed("\"another\"")) : std::nullopt;
    };
    EXPECT_TRUE(isPending(recorded().at(0).items[0])) << "another engine tells nothing";
    runner_.answers = nullptr;
    if (!isGone) {
      EXPECT_TRUE(isPending(recorded().at(0).items[0])) << "its client may be at it yet";
      home_.clock().set(home_.clock().now() + DockerRemovalCheck::longestRemoval);
    }
    const CleaningHistoryItem settled = recorded().at(0).items[0];
    EXPECT_FALSE(isPending(settled));
    EXPECT_EQ(settled.outcome, isGone ? CleaningHistoryItemOutcome::removed : CleaningHistoryItemOutcome::failed);
    EXPECT_EQ(hasContainer(id), !isGone);
    EXPECT_EQ(runner_.countOf(removal), 0U);
  }
}

TEST(DockerRetryTests, triesTheFirstRunOfTheHistoryWhateverItsDate) {
  const auto entry = [](std::int64_t second, const char* volume) {
    CleaningHistoryItem item;
    item.outcome = CleaningHistoryItemOutcome::failed;
    item.dockerTarget =
        DockerRetryTarget{Kind::volumes, {"default", "unix:///run/a.sock", "ID"}, {volume, volume, {}, 1}, {}};
    CleaningHistoryEntry made;
    made.source = CleaningHistorySource::docker;
    made.date = Date{std::chrono::seconds(second)};
    made.items = {item};
    return made;
  };
  const std::vector<CleaningHistoryEntry> entries{entry(1000, "newest"), entry(9000, "whenTheClockWasAhead")};
  const DockerCleanupPlan plan = failedTargets(entries);
  ASSERT_THAT(plan.targets, SizeIs(1));
  EXPECT_EQ(plan.targets[0].target.commandTarget, "newest");
}

TEST_F(DockerCleanupGuardTests, triesTheFailedTargetsOfTheLastRunAgain) {
  const std::string busy = engine_->makeImage("busy:1", "busy"), holder = engine_->makeContainer("busy:1", "holder");
  const std::string other = container("fine");
  DockerCleanupPlan plan = planOf({{Kind::containers, other}});
  DockerRetryTarget blocked = plan.targets[0];
  blocked.resource = Kind::images;
  blocked.target = {busy, "busy:1", {}, 1};
  blocked.reviewedTags = {"busy:1"};
  plan.targets.push_back(blocked);
  EXPECT_THAT(reasonsOf(remove(plan)), ElementsAre("docker.failure.imageInUse"));

  const DockerCleanupPlan again = failedTargets(recorded());
  ASSERT_THAT(again.targets, SizeIs(1));
  EXPECT_EQ(again.targets[0].target.commandTarget, busy);
  engine_->ask({"rm", "holder"});
  auto elsewhere = recorded();
  const Date now = home_.clock().now();
  const DockerCleanupRetryService service(*client_);
  EXPECT_EQ(service.plan(elsewhere, now).value_or(DockerReview()).plan, again);
  for (const auto distance : {std::chrono::hours(25), -std::chrono::hours(1)})
    EXPECT_EQ(service.plan(elsewhere, now + distance).error(), DockerRetryFault::stale);
  for (CleaningHistoryEntry& entry : elsewhere) entry.items[0].dockerTarget->scope.endpoint = "tcp://127.0.0.1:1";
  EXPECT_EQ(service.plan(elsewhere, now).error(), DockerRetryFault::scope)
      << "an address that somebody may have written there";
  EXPECT_THAT(remove(again).failures, IsEmpty());
  EXPECT_FALSE(hasImage(busy));
  EXPECT_EQ(service.plan(recorded(), now).error(), DockerRetryFault::nothing) << "the last run is this one";
}

}  // namespace
}  // namespace quorvane
