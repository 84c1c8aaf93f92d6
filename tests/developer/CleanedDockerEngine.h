#pragma once

#include "quorvane/developer/DockerCleanupGuard.h"
#include "quorvane/developer/DockerRemovalCheck.h"
#include "quorvane/developer/DockerReviewer.h"
#include "tests/support/DockerRunners.h"
#include "tests/support/RemovalHome.h"
#include "tests/support/TestDockerEngine.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <utility>

namespace quorvane {

/// A real engine that is cleaned, with a look at, and a hand in, each run of the client.
class CleanedDockerEngine : public testing::Test {
 protected:
  static void SetUpTestSuite() {
    if (!TestDockerEngine::missing()) engine_ = std::make_unique<TestDockerEngine>();
  }
  static void TearDownTestSuite() { engine_.reset(); }

  void SetUp() override {
    if (const auto reason = TestDockerEngine::missing()) GTEST_SKIP() << *reason;
    useEnvironment({});
    check_.emplace([this] { return client_; }, home_.clock());
    renewHistory();
  }

  /// With these variables besides, or instead of, those that lead to the engine.
  void useEnvironment(std::map<std::string, std::string> variables) {
    variables.merge(engine_->environment());
    client_.emplace(runner_, DockerClientSettings{.program = {"/usr/bin/docker"}, .environment = variables});
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
    return reviewOf({.named = named, .prunesBuildCache = prunes}).plan;
  }

  DockerReview reviewOfSafe() { return reviewOf({.takesSafe = true}); }

  DockerReview reviewOf(const DockerSelection& selection) {
    const auto review = DockerReviewer(*client_, home_.clock()).review(selection, std::nullopt, {});
    EXPECT_TRUE(review.has_value() && review->plan.refused.empty());
    return review.value_or(DockerReview{});
  }

  DockerCleanupReport remove(const DockerCleanupPlan& plan, const DockerCleanupOptions& options = {}) {
    const auto report = DockerCleanupGuard(services()).remove(plan, options);
    EXPECT_TRUE(report.has_value());
    return report.value_or(DockerCleanupReport{});
  }

  std::size_t removalCount() const {
    return runner_.countOf({"image", "rm"}) + runner_.countOf({"container", "rm"}) + runner_.countOf({"volume", "rm"}) +
           runner_.countOf({"builder", "prune"});
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
    makeBase();
    return engine_->makeContainer("base:1", name, std::move(options));
  }

  /// So that there is something to prune.
  static void fillBuildCache() {
    makeBase();
    engine_->build("base:1");
    engine_->ask({"image", "rm", "built:1"});
  }

  static void makeBase() {
    if (!engine_->accepts({"image", "inspect", "base:1"})) engine_->makeImage("base:1", "base");
  }

  static bool hasImage(const std::string& id) { return engine_->accepts({"image", "inspect", id}); }
  static bool hasContainer(const std::string& id) { return engine_->accepts({"container", "inspect", id}); }
  static bool hasVolume(const std::string& name) { return engine_->accepts({"volume", "inspect", name}); }

  static inline std::unique_ptr<TestDockerEngine> engine_;
  RemovalHome home_;
  WatchedRunner runner_;
  std::optional<DockerClient> client_;
  std::optional<DockerRemovalCheck> check_;
  std::unique_ptr<HistoryStore> history_;
  bool hasActed_ = false;
};

}  // namespace quorvane
