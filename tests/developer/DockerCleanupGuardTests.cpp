#include "quorvane/developer/DockerCleanupGuard.h"

#include "quorvane/developer/DockerCleanupRetryService.h"
#include "quorvane/developer/DockerNames.h"
#include "quorvane/developer/DockerRemovalCheck.h"
#include "quorvane/developer/DockerReviewer.h"
#include "tests/support/DockerRunners.h"
#include "tests/support/RemovalHome.h"
#include "tests/support/TestDockerEngine.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <csignal>
#include <memory>

#include <sys/wait.h>
#include <unistd.h>

namespace quorvane {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;
using Kind = DockerResourceKind;

constexpr const char* realClient = "/usr/bin/docker";

/// A real engine that is cleaned, with a look at, and a hand in, each run of the client.
class DockerCleanupGuardTests : public testing::Test {
 protected:
  static void SetUpTestSuite() {
    if (!TestDockerEngine::missing()) engine_ = std::make_unique<TestDockerEngine>();
  }
  static void TearDownTestSuite() {
    engine_.reset();
    other_.reset();
  }

  void SetUp() override {
    if (const auto reason = TestDockerEngine::missing()) GTEST_SKIP() << *reason;
    client_.emplace(runner_, DockerClientSettings{.program = {realClient}, .environment = engine_->environment()});
    check_.emplace([this] { return client_; }, home_.clock());
    renewHistory();
  }

  void renewHistory() {
    history_ =
        std::make_unique<HistoryStore>(home_.services(), home_.random(), home_.folders().applicationSupport, &*check_);
  }

  DockerCleanupServices services() {
    return {*client_, *history_, home_.clock(), home_.random(), home_.services().texts};
  }

  /// The plan to remove these, reviewed now.
  DockerCleanupPlan planOf(const std::vector<DockerSelector>& named, bool prunes = false) {
    home_.clock().set(SystemClock().now());  // the engine has the real time
    const auto review =
        DockerReviewer(*client_, home_.clock()).review({.named = named, .prunesBuildCache = prunes}, std::nullopt, {});
    EXPECT_TRUE(review.has_value() && review->refused.empty());
    return review ? review->plan : DockerCleanupPlan{};
  }

  DockerCleanupReport remove(const DockerCleanupPlan& plan, const DockerCleanupOptions& options = {}) {
    const auto report = DockerCleanupGuard(services()).remove(plan, options);
    EXPECT_TRUE(report.has_value());
    return report.value_or(DockerCleanupReport{});
  }

  static std::vector<std::string> reasonsOf(const DockerCleanupReport& report) {
    std::vector<std::string> keys;
    for (const DockerCleanupFailure& each : report.failures) keys.push_back(each.refusal.reasonKey);
    return keys;
  }

  /// Does this before the first run of the client that begins with these words.
  void onceBefore(const Words& beginning, std::function<void()> action) {
    runner_.before = [this, beginning, action = std::move(action)](const Words& arguments) {
      const bool isIt =
          arguments.size() >= beginning.size() && std::equal(beginning.begin(), beginning.end(), arguments.begin());
      if (isIt && !std::exchange(hasActed_, true)) action();
    };
  }

  std::vector<CleaningHistoryEntry> recorded() {
    renewHistory();
    const auto view = history_->load();
    EXPECT_TRUE(view.has_value());
    return view ? view->entries : std::vector<CleaningHistoryEntry>();
  }

  static std::string container(const std::string& name, std::vector<std::string> options = {}) {
    if (!engine_->accepts({"image", "inspect", "base:1"})) engine_->makeImage("base:1", "base");
    return engine_->makeContainer("base:1", name, std::move(options));
  }

  static bool hasImage(const std::string& id) { return engine_->accepts({"image", "inspect", id}); }
  static bool hasContainer(const std::string& id) { return engine_->accepts({"container", "inspect", id}); }
  static bool hasVolume(const std::string& name) { return engine_->accepts({"volume", "inspect", name}); }

  static inline std::unique_ptr<TestDockerEngine> engine_, other_;
  RemovalHome home_;
  WatchedRunner runner_;
  std::optional<DockerClient> client_;
  std::optional<DockerRemovalCheck> check_;
  std::unique_ptr<HistoryStore> history_;
  bool hasActed_ = false;
};

TEST_F(DockerCleanupGuardTests, removesExactlyWhatWasReviewed) {
  const std::string image = engine_->makeImage("gone:1", std::string(1'000'000, 'x')),
                    stays = engine_->makeImage("stays:1", "stays");
  const std::string ended = container("ended"), rests = container("rests");
  for (const char* name : {"gone", "stays"}) engine_->ask({"volume", "create", name});
  const DockerCleanupReport report =
      remove(planOf({{Kind::containers, ended}, {Kind::volumes, "gone"}, {Kind::images, image}}));
  EXPECT_THAT(report.failures, IsEmpty());
  EXPECT_FALSE(hasContainer(ended) || hasVolume("gone") || hasImage(image));
  EXPECT_TRUE(hasContainer(rests) && hasVolume("stays") && hasImage(stays));
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

TEST_F(DockerCleanupGuardTests, forcesNothingAndShortensNothing) {
  const std::string image = engine_->makeImage("plain:1", "plain"), id = container("plain");
  remove(planOf({{Kind::images, image}, {Kind::containers, id}}));
  std::vector<Words> removals;
  for (const ProcessRequest& request : runner_.requests())
    if (std::ranges::count(request.arguments, "rm") > 0) removals.push_back(request.arguments);
  EXPECT_THAT(removals, ElementsAre(ElementsAre("--host", engine_->address(), "image", "rm", "--no-prune", image),
                                    ElementsAre("--host", engine_->address(), "container", "rm", id)));
}

TEST_F(DockerCleanupGuardTests, everyRecheckStopsARemovalWhoseReasonAppearsAfterTheReview) {
  const auto retagged = engine_->makeImage("retagged:1", "retagged"), taken = engine_->makeImage("taken:1", "taken"),
             lost = engine_->makeImage("lost:1", "lost");
  const auto gone = container("vanished"), renamed = container("renamed");
  const auto started = engine_->ask({"create", "--network", "none", "--name", "started", "base:1", "/program", "wait"});
  for (const char* volume : {"mounted", "relabelled"}) engine_->ask({"volume", "create", volume});
  const struct {
    DockerSelector target;
    std::function<void()> change;
    const char* reason;
  } cases[] = {
      {{Kind::images, retagged},
       [] {
         engine_->ask({"tag", "retagged:1", "retagged:2"});
       },
       "docker.failure.tagsChanged"},
      {{Kind::images, taken}, [] { engine_->makeContainer("taken:1", "taker"); }, "docker.failure.imageInUse"},
      {{Kind::images, lost},
       [] {
         engine_->ask({"image", "rm", "lost:1"});
       },
       "docker.failure.unknownObject"},
      {{Kind::containers, started},
       [] {
         engine_->ask({"start", "started"});
       },
       "docker.failure.containerState"},
      {{Kind::containers, renamed},
       [] {
         engine_->ask({"rename", "renamed", "precious"});
       },
       "docker.failure.renamed"},
      {{Kind::containers, gone},
       [] {
         engine_->ask({"rm", "vanished"});
       },
       "docker.failure.unknownObject"},
      {{Kind::volumes, "mounted"},
       [] {
         container("mounter", {"-v", "mounted:/v"});
       },
       "docker.failure.volumeProtected"},
      {{Kind::volumes, "relabelled"},
       [] {
         engine_->ask({"volume", "rm", "relabelled"});
         engine_->ask({"volume", "create", "--label", "quorvane.keep", "relabelled"});
       },
       "docker.failure.volumeProtected"},
  };
  for (const auto& each : cases) {
    const DockerCleanupPlan plan = planOf({each.target});
    hasActed_ = false;
    onceBefore({"info"}, each.change);  // in the last moment: the removal is announced already
    const DockerCleanupReport report = remove(plan);
    EXPECT_TRUE(hasActed_) << each.reason;
    EXPECT_THAT(reasonsOf(report), ElementsAre(each.reason)) << each.target.id;
    EXPECT_THAT(report.result.successfulTargets, IsEmpty());
    EXPECT_EQ(
        runner_.countOf({"image", "rm"}) + runner_.countOf({"container", "rm"}) + runner_.countOf({"volume", "rm"}),
        0U);
    runner_.before = nullptr;
  }
  EXPECT_TRUE(hasImage(retagged) && hasImage(taken) && hasContainer(started) && hasContainer(renamed) &&
              hasVolume("mounted") && hasVolume("relabelled"));
}

TEST_F(DockerCleanupGuardTests, removesNothingFromAnotherEngine) {
  other_ = std::make_unique<TestDockerEngine>();
  const std::string id = container("here");
  DockerCleanupPlan plan = planOf({{Kind::containers, id}}, true);
  plan.targets[0].scope.endpoint = plan.prune->scope.endpoint = other_->address();
  const DockerCleanupReport report = remove(plan);
  EXPECT_THAT(reasonsOf(report), ElementsAre("docker.failure.engineChanged", "docker.failure.engineChanged"));
  EXPECT_TRUE(hasContainer(id));
  EXPECT_EQ(runner_.countOf({"container", "rm"}) + runner_.countOf({"builder", "prune"}), 0U);
  other_.reset();
  EXPECT_THAT(reasonsOf(remove(plan)), ElementsAre("docker.failure.engineSilent", "docker.failure.engineSilent"));
}

TEST_F(DockerCleanupGuardTests, reachesThePinnedEngineWhateverTheEnvironmentSays) {
  const std::string id = container("pinned");
  const DockerCleanupPlan plan = planOf({{Kind::containers, id}});
  auto environment = engine_->environment();
  environment["DOCKER_HOST"] = "unix:///nonexistent.sock";
  environment["DOCKER_CONTEXT"] = "nonexistent";
  client_.emplace(runner_, DockerClientSettings{.program = {realClient}, .environment = environment});
  EXPECT_THAT(remove(plan).failures, IsEmpty());
  EXPECT_FALSE(hasContainer(id));
}

TEST_F(DockerCleanupGuardTests, announcesEachRemovalBeforeItsCommandRuns) {
  const std::string id = container("announced");
  std::vector<CleaningHistoryItem> before;
  onceBefore({"container", "rm"}, [&] { before = home_.recorded(); });
  remove(planOf({{Kind::containers, id}}));
  ASSERT_THAT(before, SizeIs(1));
  ASSERT_TRUE(before[0].pendingIrreversible.has_value());
  EXPECT_THAT(before[0].pendingIrreversible->command, ElementsAre("docker", "container", "rm", id));
  EXPECT_EQ(before[0].outcome, CleaningHistoryItemOutcome::failed);
  EXPECT_EQ(before[0].dockerTarget->target.commandTarget, id);
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

  home_.files().failAt(home_.files().calls() + 2, FaultSpan::fromThereOn);
  const DockerCleanupReport report = remove(plan);
  EXPECT_THAT(reasonsOf(report), ElementsAre("docker.failure.historyUnavailable"));
  EXPECT_FALSE(report.outcomes.at(0).historyWasRecorded);
  EXPECT_FALSE(hasContainer(first)) << "announced, so removed";
  EXPECT_TRUE(hasContainer(second));

  home_.files().failAt(0);
  const auto entries = recorded();
  ASSERT_THAT(entries, SizeIs(1));
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

TEST_F(DockerCleanupGuardTests, aNameThatCanBeNoneIsRefusedWithoutRunningAnything) {
  DockerCleanupPlan plan = planOf({{Kind::containers, container("model")}});
  plan.targets[0].resource = Kind::volumes;
  for (const char* name : {".data", "--force", "a b", ""}) {
    plan.targets[0].target.commandTarget = name;
    EXPECT_THAT(reasonsOf(remove(plan)), ElementsAre("docker.failure.invalidName"));
  }
  EXPECT_EQ(runner_.countOf({"volume", "rm"}), 0U);
  EXPECT_THAT(home_.recorded(), IsEmpty());
}

TEST_F(DockerCleanupGuardTests, prunesTheBuildCacheAsOneOperation) {
  engine_->build("base:1");
  engine_->ask({"image", "rm", "built:1"});
  const DockerCleanupReport report = remove(planOf({}, true));
  EXPECT_THAT(report.failures, IsEmpty());
  ASSERT_THAT(report.result.historyItems, SizeIs(1));
  EXPECT_EQ(report.result.historyItems[0].originalPath.bytes, "docker://builder/prune");
  EXPECT_EQ(report.outcomes.at(0).resource, Kind::buildCache);
  EXPECT_EQ(runner_.countOf({"builder", "prune", "--force"}), 1U);
}

TEST_F(DockerCleanupGuardTests, prunesNoBuildCacheThatWasNotReviewed) {
  container("cached");  // so that there is an image to build on
  engine_->build("base:1");
  engine_->ask({"image", "rm", "built:1"});
  DockerCleanupPlan plan = planOf({}, true);
  ASSERT_TRUE(plan.prune && !plan.prune->reviewedTargets.empty());
  DockerCleanupPlan fewer = plan;
  fewer.prune->reviewedTargets.pop_back();
  EXPECT_THAT(reasonsOf(remove(fewer)), ElementsAre("docker.failure.cacheChanged"));
  EXPECT_EQ(failedTargets(recorded()), fewer) << "a retry has what was reviewed, and is refused alike";
  runner_.answers = [](const Words& arguments) {
    return arguments.back() == "--verbose" ? std::optional(printed("garbage")) : std::nullopt;
  };
  EXPECT_THAT(reasonsOf(remove(plan)), ElementsAre("docker.failure.cacheChanged")) << "not listed whole";
  runner_.answers = nullptr;
  plan.prune->kind = DockerBulkKind::volume;
  EXPECT_THAT(reasonsOf(remove(plan)), ElementsAre("docker.failure.invalidName"));
  EXPECT_TRUE(failedTargets(recorded()).isEmpty()) << "of another kind there is no retry";
  EXPECT_EQ(runner_.countOf({"builder", "prune"}), 0U);
}

TEST_F(DockerCleanupGuardTests, leavesOpenWhatAClientWasCutOffFrom) {
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

TEST_F(DockerCleanupGuardTests, removesNoVolumeThatWasMadeAfterTheReview) {
  engine_->ask({"volume", "create", "again"});
  DockerCleanupPlan plan = planOf({{Kind::volumes, "again"}});
  EXPECT_EQ(plan.targets.at(0).reviewedTags, std::vector{isoText(wholeSeconds(home_.clock().now()))});
  ::sleep(2);  // what is told of a volume has whole seconds
  engine_->ask({"volume", "rm", "again"});
  engine_->ask({"volume", "create", "again"});
  EXPECT_THAT(reasonsOf(remove(plan)), ElementsAre("docker.failure.changed"));
  EXPECT_THAT(reasonsOf(remove(failedTargets(recorded()))), ElementsAre("docker.failure.changed")) << "nor by a retry";
  for (const char* answer : {"\"\"", "\"2020-01-01T00:00:00+1:00\"", "null"}) {
    runner_.answers = [answer](const Words& arguments) {
      return arguments[0] == "volume" && arguments[1] == "inspect" ? std::optional(printed(answer)) : std::nullopt;
    };
    EXPECT_THAT(reasonsOf(remove(plan)), ElementsAre("docker.failure.changed")) << answer;
  }
  runner_.answers = nullptr;
  plan.targets[0].reviewedTags.clear();
  EXPECT_THAT(reasonsOf(remove(plan)), ElementsAre("docker.failure.changed")) << "nobody knows when it was reviewed";
  EXPECT_TRUE(hasVolume("again"));
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
  DockerCleanupGuard guard(services());
  DockerCleanupRetryService retries(guard, *client_);
  EXPECT_EQ(retries.faultOf(again), std::nullopt);
  const auto report = retries.retry(again, {});
  ASSERT_TRUE(report.has_value());
  EXPECT_THAT(report->failures, IsEmpty());
  EXPECT_FALSE(hasImage(busy));
  EXPECT_EQ(retries.faultOf(failedTargets(recorded())), DockerRetryFault::nothing) << "the last run is this one";
  DockerCleanupPlan elsewhere = again;
  elsewhere.targets[0].scope.endpoint = "tcp://127.0.0.1:1";
  EXPECT_EQ(retries.faultOf(elsewhere), DockerRetryFault::scope) << "an address that somebody may have written there";
}

}  // namespace
}  // namespace quorvane
