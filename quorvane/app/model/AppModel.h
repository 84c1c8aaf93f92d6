#pragma once

#include "quorvane/base/Dispatcher.h"
#include "quorvane/base/Serialised.h"
#include "quorvane/cleaning/CleanerService.h"
#include "quorvane/core/IgnoreRuleStore.h"
#include "quorvane/core/ScanPhase.h"
#include "quorvane/developer/DockerCleanupError.h"
#include "quorvane/developer/DockerService.h"
#include "quorvane/platform/SystemPlatform.h"
#include "quorvane/removal/HistoryStore.h"
#include "quorvane/removal/Remover.h"
#include "quorvane/scan/DiskScanner.h"
#include "quorvane/scan/ProgressDelivery.h"

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace quorvane {

/// What was found at a path that a person named, to be moved to the Trash.
struct ReviewedPath {
  Uuid id;
  FilePath path;
  Outcome<RemovalRequest, RemovalRefusal> outcome;  ///< the request has the same identifier
};

/// How the Docker client is found and started.
struct DockerSettings {
  std::vector<FilePath> places = {};                    ///< in their order; none: there is no client
  std::map<std::string, std::string> environment = {};  ///< that of the application
};

/// What the faces work with: the services of one home, put together, and the state of its cleaning screen.
///
/// Belongs to the main thread, where its handlers run too; the work itself runs on a thread of its own. One operation
/// at a time: a second one may begin once the handler of the first was told that it has finished. Handlers of
/// operations that are under way when the model is destroyed are not called any more.
class AppModel {
 public:
  template <class Result, class Failure = ScanFault>
  struct Handlers {
    std::function<void(const CleaningScanProgressUpdate&)> progressed;  ///< ten times a second at most
    std::function<void(Outcome<Result, Failure>)> finished;             ///< once, after the last progress
  };

  /// Touches no disk yet and starts no thread. `texts` may be called on any thread.
  AppModel(ScanSettings settings, RecordTexts texts, Dispatcher& mainThread, DockerSettings docker = {});

  /// Cancels what is running and waits for its end.
  ~AppModel();

  const ScanSettings& settings() const { return settings_; }
  const ScanPhase& phase() const { return phase_; }
  FileSystem& fileSystem() { return *fileSystem_; }
  IgnoreRuleStore& ignoreRules() { return ignoreRules_; }
  const Clock& clock() const { return clock_; }

  /// The cleaning scan; the phase becomes scanning, then review, idle (cancelled) or failed.
  void scan(ScanRequest request, Handlers<ScanResult> handlers);

  /// How the volume of the home is used.
  void measureStorage(Handlers<StorageSnapshot> handlers);

  /// Whether a removal is only rehearsed: everything is checked, nothing written or moved.
  enum class RemovalKind { real, rehearsal };

  /// Moves reviewed items of a scan to the Trash; the phase becomes cleaning, then completed or failed; after a
  /// rehearsal it is review. After `cancel` the item in hand is moved to its end, and the report tells that it was
  /// stopped.
  void clean(std::vector<ScanItem> items, RemovalKind kind, Handlers<RemovalReport, RemovalError> handlers);

  /// Looks at paths that a person named, for `trash`. In their order; without those that a `cancel` came before.
  void reviewPaths(std::vector<FilePath> paths, Handlers<std::vector<ReviewedPath>, RemovalError> handlers);

  /// Moves what was reviewed to the Trash, as `clean` does.
  void trash(std::vector<RemovalRequest> requests, RemovalKind kind, Handlers<RemovalReport, RemovalError> handlers);

  /// Puts items back. After `cancel` those that were not begun stay in the Trash.
  void restore(std::vector<RecoveryReference> references, RestoreConflictPolicy onConflict,
               Handlers<RestoreReport, RecoveryStoreError> handlers);

  /// What the Docker engine holds. After `cancel` it fails as soon as the client has stopped.
  void surveyDocker(Handlers<DockerSurvey, DockerServiceError> handlers);

  /// Plans a removal from the engine: of a listing that was kept, or of what it holds now. Changes nothing.
  void reviewDocker(DockerSelection selection, std::optional<DockerSnapshot> kept,
                    Handlers<DockerReview, DockerCleanupError> handlers);

  /// Plans to try again what the last run on an engine could not remove. Changes nothing.
  void planDockerRetry(Handlers<DockerReview, DockerCleanupError> handlers);

  /// Removes what was planned, for good. After `cancel` the target in hand is brought to its end.
  void cleanDocker(DockerCleanupPlan plan, RemovalKind kind,
                   Handlers<DockerCleanupReport, DockerCleanupError> handlers);

  /// The whole history; reads the disk and waits for it. Not while an operation runs.
  Outcome<HistoryView, RecoveryStoreError> history();

  /// For the operation that is running; without one nothing happens. Only scans can pause.
  void pause();
  void resume();
  void cancel();

 private:
  struct Records;
  struct Services;

  /// What an operation is given besides the services.
  struct OperationControl {
    ScanPauseControl& pausing;
    const ScanProgressSink& progress;
  };

  template <class Result, class Failure, class Operation>
  void start(Operation operation, Handlers<Result, Failure> handlers);
  Records& records();
  Serialised<Services>& services();
  void leaveScanning(const Outcome<ScanResult, ScanFault>& outcome);
  void leaveCleaning(const Outcome<RemovalReport, RemovalError>& outcome, RemovalKind kind);

  const ScanSettings settings_;
  const RecordTexts texts_;
  const DockerSettings docker_;
  Dispatcher& mainThread_;
  const std::unique_ptr<FileSystem> fileSystem_;
  SystemRandomSource random_;
  SystemClock clock_;
  IgnoreRuleStore ignoreRules_;
  ScanPhase phase_ = scanPhase::Idle{};

  std::shared_ptr<ScanPauseControl> control_;                          ///< of the operation that is running
  std::function<void(const CleaningScanProgressUpdate&)> progressed_;  ///< likewise
  const std::shared_ptr<CleaningScanProgressDelivery> delivery_;
  std::shared_ptr<const bool> isAlive_ = std::make_shared<const bool>(true);
  std::unique_ptr<Records> records_;                ///< made when first needed
  std::unique_ptr<Serialised<Services>> services_;  ///< made for the first operation
};

/// The message key of why nothing at all was removed.
std::string messageKey(const RemovalError& error);

}  // namespace quorvane
