#pragma once

#include "quorvane/base/Dispatcher.h"
#include "quorvane/base/Serialised.h"
#include "quorvane/core/IgnoreRuleStore.h"
#include "quorvane/core/ScanPhase.h"
#include "quorvane/platform/SystemPlatform.h"
#include "quorvane/scan/CleaningScanProgressDelivery.h"
#include "quorvane/scan/DiskScanner.h"

#include <functional>
#include <memory>
#include <string>

namespace quorvane {

/// What the faces work with: the services of one home, put together, and the state of its cleaning screen.
///
/// Belongs to the main thread, where its handlers run too; the work itself runs on a thread of its own. One operation
/// at a time: a second one may begin once the handler of the first was told that it has finished. Handlers of
/// operations that are under way when the model is destroyed are not called any more.
class AppModel {
 public:
  template <class Result>
  struct Handlers {
    std::function<void(const CleaningScanProgressUpdate&)> progressed;  ///< ten times a second at most
    std::function<void(Outcome<Result, ScanFault>)> finished;           ///< once, after the last progress
  };

  /// Touches no disk yet and starts no thread.
  AppModel(ScanSettings settings, Dispatcher& mainThread);

  /// Cancels what is running and waits for its end.
  ~AppModel();

  const ScanSettings& settings() const { return settings_; }
  const ScanPhase& phase() const { return phase_; }
  FileSystem& fileSystem() { return *fileSystem_; }
  IgnoreRuleStore& ignoreRules() { return ignoreRules_; }

  /// The cleaning scan; the phase becomes scanning, then review, idle (cancelled) or failed.
  void scan(ScanRequest request, Handlers<ScanResult> handlers);

  /// How the volume of the home is used.
  void measureStorage(Handlers<StorageSnapshot> handlers);

  /// For the operation that is running; without one nothing happens.
  void pause();
  void resume();
  void cancel();

 private:
  struct Engine;

  template <class Result, class Operation>
  void start(Operation operation, Handlers<Result> handlers);
  Engine& engine();
  void leaveScanning(const Outcome<ScanResult, ScanFault>& outcome);

  const ScanSettings settings_;
  Dispatcher& mainThread_;
  const std::unique_ptr<FileSystem> fileSystem_;
  SystemRandomSource random_;
  IgnoreRuleStore ignoreRules_;
  ScanPhase phase_ = scanPhase::Idle{};

  std::shared_ptr<ScanPauseControl> control_;                          ///< of the operation that is running
  std::function<void(const CleaningScanProgressUpdate&)> progressed_;  ///< likewise
  const std::shared_ptr<CleaningScanProgressDelivery> delivery_;
  std::shared_ptr<const bool> isAlive_ = std::make_shared<const bool>(true);
  std::unique_ptr<Engine> engine_;  ///< made for the first operation
};

}  // namespace quorvane
