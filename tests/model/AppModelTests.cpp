#include "quorvane/app/model/AppModel.h"

#include "quorvane/app/model/HomeSettings.h"
#include "quorvane/app/model/MainLoop.h"
#include "tests/support/TempFolder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <thread>

namespace quorvane {
namespace {

ScanSettings settingsFor(const FilePath& home) {
  const auto folders = applicationFolders({home, std::nullopt, {}, "Quorvane"});
  EXPECT_TRUE(folders.has_value());
  return scanSettings({*folders, HomeLayout::linux, true});
}

RecordTexts recordTexts() {
  return [](std::string_view key) { return std::string(key); };
}

/// Runs one scan on a loop of its own, and holds what came of it.
struct ScanRun {
  MainLoop loop;
  AppModel model;
  std::vector<CleaningScanProgressUpdate> updates;
  std::optional<Outcome<ScanResult, ScanFault>> outcome;

  explicit ScanRun(const FilePath& home) : model(settingsFor(home), recordTexts(), loop) {}

  void start() {
    outcome.reset();
    model.scan({}, {.progressed =
                        [this](const CleaningScanProgressUpdate& update) {
                          EXPECT_FALSE(outcome.has_value()) << "progress after the end";
                          updates.push_back(update);
                        },
                    .finished =
                        [this](Outcome<ScanResult, ScanFault> ended) {
                          outcome = std::move(ended);
                          // Later than any progress that is still on its way.
                          loop.postAfter(std::chrono::milliseconds(150), [this] { loop.stop(); });
                        }});
  }
};

TEST(AppModelTests, scansAHomeAndReportsOnTheMainThread) {
  const TempFolder home;
  home.write(".cache/mesa_shader_cache/a", "content");
  ScanRun run(home.path());
  EXPECT_EQ(run.model.phase(), ScanPhase(scanPhase::Idle{}));
  for (int round = 0; round < 2; ++round) {
    run.updates.clear();
    run.start();
    EXPECT_EQ(run.model.phase(), ScanPhase(scanPhase::Scanning{}));
    run.loop.run();
    ASSERT_TRUE(run.outcome && *run.outcome);
    EXPECT_EQ((**run.outcome).items.size(), 1U);
    EXPECT_EQ(run.model.phase(), ScanPhase(scanPhase::Review{}));
    EXPECT_TRUE(std::ranges::is_sorted(run.updates, {}, &CleaningScanProgressUpdate::progress));
  }
}

TEST(AppModelTests, tellsAHomeThatCannotBeOpened) {
  const TempFolder folder;
  ScanRun run(folder.at("missing"));
  run.start();
  run.loop.run();
  ASSERT_TRUE(run.outcome && !*run.outcome);
  EXPECT_EQ(run.outcome->error(), ScanFault::homeUnreadable);
  EXPECT_EQ(run.model.phase(), ScanPhase(scanPhase::Failed{"scan.error.homeUnreadable"}));
}

TEST(AppModelTests, cancelsAndStartsAgain) {
  const TempFolder home;
  for (int i = 0; i < 50; ++i) home.write(".cache/folder" + std::to_string(i) + "/file", "content");
  ScanRun run(home.path());
  // A scan may be faster than the thread that cancels it; not every time.
  bool wasCancelled = false;
  for (int attempt = 0; attempt < 50 && !wasCancelled; ++attempt) {
    run.start();
    run.model.cancel();
    run.loop.run();
    ASSERT_TRUE(run.outcome.has_value());
    wasCancelled = !*run.outcome && run.outcome->error() == ScanFault::cancelled;
    EXPECT_EQ(run.model.phase(), wasCancelled ? ScanPhase(scanPhase::Idle{}) : ScanPhase(scanPhase::Review{}));
  }
  EXPECT_TRUE(wasCancelled);
  run.start();
  run.loop.run();
  EXPECT_TRUE(run.outcome && *run.outcome);
}

TEST(AppModelTests, mayEndWhileItWorks) {
  const TempFolder home;
  for (int i = 0; i < 200; ++i) home.write(".cache/folder" + std::to_string(i) + "/file", "content");
  MainLoop loop;
  {
    AppModel model(settingsFor(home.path()), recordTexts(), loop);
    model.scan({}, {.progressed = [](const auto&) { ADD_FAILURE() << "nobody listens any more"; },
                    .finished = [](const auto&) { ADD_FAILURE() << "nobody listens any more"; }});
  }
  loop.postAfter(std::chrono::milliseconds(150), [&] { loop.stop(); });
  loop.run();
}

/// Runs one operation of a model to its end.
template <class Result, class Failure, class Start>
Outcome<Result, Failure> ended(MainLoop& loop, Start start) {
  std::optional<Outcome<Result, Failure>> outcome;
  start(AppModel::Handlers<Result, Failure>{.progressed = {}, .finished = [&](Outcome<Result, Failure> done) {
                                              outcome = std::move(done);
                                              loop.stop();
                                            }});
  loop.run();
  return *std::move(outcome);
}

TEST(AppModelTests, cleansAndPutsBack) {
  const TempFolder home;
  home.write(".cache/unknown/a", "content");
  MainLoop loop;
  AppModel model(settingsFor(home.path()), recordTexts(), loop);
  const auto scanned = ended<ScanResult, ScanFault>(loop, [&](auto handlers) { model.scan({}, std::move(handlers)); });
  ASSERT_TRUE(scanned && scanned->items.size() == 1);
  const auto clean = [&](AppModel::RemovalKind kind) {
    auto report = ended<RemovalReport, RemovalError>(loop, [&](auto handlers) {
      model.clean(scanned->items, kind, std::move(handlers));
      EXPECT_EQ(model.phase(), ScanPhase(scanPhase::Cleaning{}));
    });
    EXPECT_TRUE(report.has_value());
    return *std::move(report);
  };
  EXPECT_EQ(clean(AppModel::RemovalKind::rehearsal).wouldMove.size(), 1U);
  EXPECT_EQ(model.phase(), ScanPhase(scanPhase::Review{}));
  EXPECT_EQ(clean(AppModel::RemovalKind::real).movedCount, 1);
  EXPECT_EQ(model.phase(), ScanPhase(scanPhase::Completed{}));
  EXPECT_FALSE(home.holds(".cache/unknown/a"));

  const auto history = model.history();
  ASSERT_TRUE(history && history->entries.size() == 1);
  const CleaningHistoryEntry& entry = history->entries.front();
  const auto restored = ended<RestoreReport, RecoveryStoreError>(loop, [&](auto handlers) {
    model.restore({{entry.id, entry.items.front().id}}, RestoreConflictPolicy::skip, std::move(handlers));
  });
  ASSERT_TRUE(restored.has_value());
  EXPECT_EQ(restored->result.restoredCount, 1);
  EXPECT_TRUE(home.holds(".cache/unknown/a"));
}

TEST(AppModelTests, tellsWhyNothingCouldBeCleaned) {
  const TempFolder home;
  home.write(".cache/unknown/a", "content");
  home.write(".local/share/Quorvane/history.json", "damaged");
  MainLoop loop;
  AppModel model(settingsFor(home.path()), recordTexts(), loop);
  const auto scanned = ended<ScanResult, ScanFault>(loop, [&](auto handlers) { model.scan({}, std::move(handlers)); });
  ASSERT_TRUE(scanned.has_value());
  const auto report = ended<RemovalReport, RemovalError>(
      loop, [&](auto handlers) { model.clean(scanned->items, AppModel::RemovalKind::real, std::move(handlers)); });
  ASSERT_FALSE(report.has_value());
  EXPECT_EQ(messageKey(report.error()), "history.error.undecodable");
  EXPECT_EQ(model.phase(), ScanPhase(scanPhase::Failed{"history.error.undecodable"}));
  EXPECT_TRUE(home.holds(".cache/unknown/a"));
  EXPECT_FALSE(model.history().has_value());
}

TEST(HomeSettingsTests, keepApplicationsInsideAGivenHome) {
  const auto folders = applicationFolders({FilePath{"/home/ada"}, std::nullopt, {}});
  ASSERT_TRUE(folders.has_value());
  for (const HomeLayout layout : allCases<HomeLayout>()) {
    const auto inside = scanSettings({*folders, layout, true}).applicationRoots;
    EXPECT_FALSE(inside.empty());
    for (const FilePath& root : inside) EXPECT_TRUE(isBelow(root, folders->home)) << root.bytes;
    EXPECT_GT(scanSettings({*folders, layout, false}).applicationRoots.size(), inside.size());
  }
}

}  // namespace
}  // namespace quorvane
