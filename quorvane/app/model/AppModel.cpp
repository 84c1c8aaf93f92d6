#include "quorvane/app/model/AppModel.h"

#include "quorvane/base/Assert.h"
#include "quorvane/core/EarlyProcessTable.h"
#include "quorvane/developer/DockerCleanupGuard.h"
#include "quorvane/developer/DockerPrograms.h"
#include "quorvane/developer/DockerRemovalCheck.h"
#include "quorvane/developer/DockerReviewer.h"
#include "quorvane/platform/BlockedSignals.h"

#include <type_traits>

namespace quorvane {

namespace {

constexpr std::chrono::milliseconds progressInterval{100};
/// At the start of any command: what an engine that hangs may keep it waiting.
constexpr std::chrono::seconds patienceAtStart{5};

// Tells how many of so many things are done, and which one is in hand.
void report(const ScanProgressSink& progress, std::string statusKey, std::size_t done, std::size_t count,
            const std::string& location = {}) {
  if (!progress || count == 0) return;
  const double fraction = static_cast<double>(done) / static_cast<double>(count);
  progress({fraction, std::move(statusKey), ScanActivitySnapshot{location, 0}});
}

RemovalOptions removalOptions(AppModel::RemovalKind kind, ScanPauseControl& control, const ScanProgressSink& progress) {
  RemovalOptions options;
  options.isRehearsal = kind == AppModel::RemovalKind::rehearsal;
  options.stop = control.stopToken();
  options.progressed = [&progress, isRehearsal = options.isRehearsal](std::size_t done, std::size_t count,
                                                                      const FilePath& path) {
    report(progress, isRehearsal ? "cleanup.status.checking" : "cleanup.status.moving", done, count, path.bytes);
  };
  return options;
}

}  // namespace

/// What the history needs.
struct AppModel::Records {
  explicit Records(AppModel& model)
      : volumes(makeSystemVolumes()),
        trash(makeSystemTrash(*model.fileSystem_, model.random_, model.settings_.folders)),
        moves{*model.fileSystem_, *volumes, *trash, model.clock_, model.texts_},
        dockerCheck([this, &settings = model.docker_] { return dockerClient(settings, patienceAtStart); },
                    model.clock_),
        history(moves, model.random_, model.settings_.folders.applicationSupport, &dockerCheck) {}

  /// Looked for each time: it may have been installed meanwhile.
  std::optional<DockerClient> dockerClient(const DockerSettings& settings, std::chrono::seconds timeLimit) {
    const auto program = dockerProgram(moves.fileSystem, settings.places, systemUser());
    if (!program) return std::nullopt;
    return DockerClient(processRunner,
                        {.program = *program, .environment = settings.environment, .timeLimit = timeLimit});
  }

  std::unique_ptr<Volumes> volumes;
  std::unique_ptr<Trash> trash;
  MoveServices moves;
  SafeProcessRunner processRunner;
  DockerRemovalCheck dockerCheck;
  HistoryStore history;
};

/// Everything that only an operation needs.
struct AppModel::Services {
  explicit Services(AppModel& model)
      : records(model.records()),
        systemProcessTable(makeSystemProcessTable()),
        processTable(*systemProcessTable, model.clock_),
        walker(*model.fileSystem_),
        scanServices{*model.fileSystem_, *records.volumes, processTable, processRunner,
                     model.clock_,       model.random_,    walker,       model.ignoreRules_},
        scanner(scanServices, model.settings_),
        remover({records.moves, processTable, walker, model.ignoreRules_, records.history, model.random_},
                model.settings_.folders.home, model.settings_.folders.applicationSupport),
        cleaner(scanServices, model.settings_, remover) {}

  std::optional<DockerClient> dockerClient(const DockerSettings& settings) {
    return records.dockerClient(settings, std::chrono::seconds(30));
  }

  Records& records;
  std::unique_ptr<ProcessTable> systemProcessTable;
  EarlyProcessTable processTable;
  SafeProcessRunner processRunner;
  TreeWalker walker;
  ScanServices scanServices;
  DiskScanner scanner;
  Remover remover;
  CleanerService cleaner;
};

AppModel::AppModel(ScanSettings settings, RecordTexts texts, Dispatcher& mainThread, DockerSettings docker)
    : settings_(std::move(settings)),
      texts_(std::move(texts)),
      docker_(std::move(docker)),
      mainThread_(mainThread),
      fileSystem_(makeSystemFileSystem()),
      ignoreRules_(*fileSystem_, random_, settings_.folders.applicationSupport),
      delivery_(CleaningScanProgressDelivery::make(mainThread, progressInterval,
                                                   [this](const CleaningScanProgressUpdate& update) {
                                                     if (progressed_) progressed_(update);
                                                   })) {}

AppModel::~AppModel() { cancel(); }

void AppModel::scan(ScanRequest request, Handlers<ScanResult> handlers) {
  phase_ = scanPhase::Scanning{};
  handlers.finished = [this, finished = std::move(handlers.finished)](Outcome<ScanResult, ScanFault> outcome) {
    leaveScanning(outcome);
    finished(std::move(outcome));
  };
  auto operation = [request = std::move(request)](Services& services, OperationControl control) {
    services.processTable.begin();  // for the last look, and for a cleaning that follows at once
    return services.scanner.scan(request, control.pausing, control.progress);
  };
  start(std::move(operation), std::move(handlers));
}

void AppModel::measureStorage(Handlers<StorageSnapshot> handlers) {
  auto operation = [](Services& services, OperationControl control) {
    return services.scanner.storageSummary(control.pausing, control.progress);
  };
  start(std::move(operation), std::move(handlers));
}

void AppModel::clean(std::vector<ScanItem> items, RemovalKind kind, Handlers<RemovalReport, RemovalError> handlers) {
  phase_ = scanPhase::Cleaning{};
  handlers.finished = [this, kind,
                       finished = std::move(handlers.finished)](Outcome<RemovalReport, RemovalError> outcome) {
    leaveCleaning(outcome, kind);
    finished(std::move(outcome));
  };
  auto operation = [items = std::move(items), kind](Services& services, OperationControl control) {
    services.processTable.begin();
    return services.cleaner.clean(items, removalOptions(kind, control.pausing, control.progress));
  };
  start(std::move(operation), std::move(handlers));
}

void AppModel::reviewPaths(std::vector<FilePath> paths, Handlers<std::vector<ReviewedPath>, RemovalError> handlers) {
  auto operation = [paths = std::move(paths), &random = random_](
                       Services& services,
                       OperationControl control) -> Outcome<std::vector<ReviewedPath>, RemovalError> {
    services.processTable.begin();  // for a removal that follows at once
    const auto progressed = [&](std::size_t done, std::size_t count, const FilePath& path) {
      report(control.progress, "cleanup.status.reviewing", done, count, path.bytes);
    };
    auto outcomes = services.remover.review(paths, {.stop = control.pausing.stopToken(), .progressed = progressed});
    std::vector<ReviewedPath> reviewed;
    for (std::size_t i = 0; i < outcomes.size(); ++i) {
      const Uuid id = outcomes[i] ? outcomes[i]->id : random.uuid();
      reviewed.push_back({id, paths[i], std::move(outcomes[i])});
    }
    return reviewed;
  };
  start(std::move(operation), std::move(handlers));
}

void AppModel::trash(std::vector<RemovalRequest> requests, RemovalKind kind,
                     Handlers<RemovalReport, RemovalError> handlers) {
  auto operation = [requests = std::move(requests), kind](Services& services, OperationControl control) {
    return services.remover.remove(requests, {}, removalOptions(kind, control.pausing, control.progress));
  };
  start(std::move(operation), std::move(handlers));
}

void AppModel::restore(std::vector<RecoveryReference> references, RestoreConflictPolicy onConflict,
                       Handlers<RestoreReport, RecoveryStoreError> handlers) {
  std::optional<FilePath> confinedTo;
  if (settings_.folders.isConfined)
    confinedTo = fileSystem_->resolved(settings_.folders.home).value_or(settings_.folders.home);
  auto operation = [references = std::move(references), onConflict, confinedTo = std::move(confinedTo)](
                       Services& services, OperationControl control) {
    const auto progressed = [&](std::size_t done, std::size_t count) {
      report(control.progress, "restore.status.restoring", done, count);
    };
    return services.records.history.restore(references, {.onConflict = onConflict,
                                                         .confinedTo = confinedTo,
                                                         .stop = control.pausing.stopToken(),
                                                         .progressed = progressed});
  };
  start(std::move(operation), std::move(handlers));
}

void AppModel::surveyDocker(Handlers<DockerSurvey, DockerServiceError> handlers) {
  const auto operation = [this](Services& services,
                                OperationControl control) -> Outcome<DockerSurvey, DockerServiceError> {
    const auto client = services.dockerClient(docker_);
    if (!client) return failure(DockerServiceError{DockerServiceFault::cliNotFound});
    return DockerService(*client, clock_).survey(control.pausing.stopToken());
  };
  start(operation, std::move(handlers));
}

void AppModel::reviewDocker(DockerSelection selection, std::optional<DockerSnapshot> kept,
                            Handlers<DockerReview, DockerCleanupError> handlers) {
  const auto operation = [this, selection = std::move(selection), kept = std::move(kept)](
                             Services& services,
                             OperationControl control) -> Outcome<DockerReview, DockerCleanupError> {
    const auto client = services.dockerClient(docker_);
    if (!client) return failure(DockerCleanupError(DockerServiceError{DockerServiceFault::cliNotFound}));
    return DockerReviewer(*client, clock_).review(selection, kept, control.pausing.stopToken());
  };
  start(operation, std::move(handlers));
}

void AppModel::planDockerRetry(Handlers<DockerReview, DockerCleanupError> handlers) {
  const auto operation = [this](Services& services, OperationControl) -> Outcome<DockerReview, DockerCleanupError> {
    const auto client = services.dockerClient(docker_);
    if (!client) return failure(DockerCleanupError(DockerServiceError{DockerServiceFault::cliNotFound}));
    const auto history = services.records.history.load();
    if (!history) return failure(DockerCleanupError(history.error()));
    auto review = DockerCleanupRetryService(*client).plan(history->entries, clock_.now());
    if (!review) return failure(DockerCleanupError(review.error()));
    return *std::move(review);
  };
  start(operation, std::move(handlers));
}

void AppModel::cleanDocker(DockerCleanupPlan plan, RemovalKind kind,
                           Handlers<DockerCleanupReport, DockerCleanupError> handlers) {
  const auto operation = [this, plan = std::move(plan), kind](
                             Services& services,
                             OperationControl control) -> Outcome<DockerCleanupReport, DockerCleanupError> {
    const auto client = services.dockerClient(docker_);
    if (!client) return failure(DockerCleanupError(DockerServiceError{DockerServiceFault::cliNotFound}));
    const auto progressed = [&](std::size_t done, std::size_t count, const std::string& name) {
      report(control.progress, kind == RemovalKind::rehearsal ? "docker.status.checking" : "docker.status.removing",
             done, count, name);
    };
    auto outcome = DockerCleanupGuard({*client, services.records.history, clock_, services.scanServices.random, texts_})
                       .remove(plan, {.isRehearsal = kind == RemovalKind::rehearsal,
                                      .stop = control.pausing.stopToken(),
                                      .progressed = progressed});
    if (!outcome) return failure(DockerCleanupError(outcome.error()));
    return *std::move(outcome);
  };
  start(operation, std::move(handlers));
}

Outcome<HistoryView, RecoveryStoreError> AppModel::history() {
  require(!control_, "the history is read while an operation runs");
  return records().history.load();
}

void AppModel::pause() {
  if (control_) control_->pause();
}

void AppModel::resume() {
  if (control_) control_->resume();
}

void AppModel::cancel() {
  if (control_) control_->cancel();
}

template <class Result, class Failure, class Operation>
void AppModel::start(Operation operation, Handlers<Result, Failure> handlers) {
  static_assert(
      std::is_same_v<std::invoke_result_t<const Operation&, Services&, OperationControl>, Outcome<Result, Failure>>);
  require(!control_, "one operation at a time");
  control_ = std::make_shared<ScanPauseControl>();
  progressed_ = std::move(handlers.progressed);
  const Uuid operationID = random_.uuid();
  delivery_->begin(operationID);

  const auto finish = [this, alive = std::weak_ptr(isAlive_), finished = std::move(handlers.finished)](auto outcome) {
    if (alive.expired()) return;
    progressed_ = nullptr;  // what is still on its way comes too late
    control_.reset();
    finished(std::move(outcome));
  };
  auto work = [operation = std::move(operation), control = control_, delivery = delivery_, operationID, finish,
               &mainThread = mainThread_](Services& services) {
    const ScanProgressSink sink = [&](CleaningScanProgressUpdate update) {
      delivery->submit(operationID, std::move(update));
    };
    auto outcome = std::make_shared<Outcome<Result, Failure>>(operation(services, OperationControl{*control, sink}));
    mainThread.post([finish, outcome] { finish(std::move(*outcome)); });
  };
  services().perform(std::move(work));
}

AppModel::Records& AppModel::records() {
  if (!records_) records_ = std::make_unique<Records>(*this);
  return *records_;
}

Serialised<AppModel::Services>& AppModel::services() {
  if (!services_) {
    raiseDescriptorLimit();
    const BlockedSignals blocked;
    services_ = std::make_unique<Serialised<Services>>(*this);
  }
  return *services_;
}

void AppModel::leaveScanning(const Outcome<ScanResult, ScanFault>& outcome) {
  if (outcome) {
    phase_ = scanPhase::Review{};
  } else if (outcome.error() == ScanFault::cancelled) {
    phase_ = scanPhase::Idle{};
  } else {
    phase_ = scanPhase::Failed{messageKey(outcome.error())};
  }
}

void AppModel::leaveCleaning(const Outcome<RemovalReport, RemovalError>& outcome, RemovalKind kind) {
  if (!outcome) {
    phase_ = scanPhase::Failed{messageKey(outcome.error())};
  } else if (kind == RemovalKind::rehearsal) {
    phase_ = scanPhase::Review{};
  } else {
    phase_ = scanPhase::Completed{};
  }
}

namespace {

std::string keyOf(const RecoveryStoreError& error) { return messageKey(error.fault); }
std::string keyOf(const IgnoreRuleError& error) { return messageKey(error.fault); }
std::string keyOf(const PosixError&) { return "error.cleaningUnavailable"; }

}  // namespace

std::string messageKey(const RemovalError& error) {
  return std::visit([](const auto& each) { return keyOf(each); }, error);
}

}  // namespace quorvane
