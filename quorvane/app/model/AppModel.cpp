#include "quorvane/app/model/AppModel.h"

#include "quorvane/base/Assert.h"

namespace quorvane {

namespace {

constexpr std::chrono::milliseconds progressInterval{100};

}  // namespace

/// Everything that only a measurement needs.
struct AppModel::Engine {
  explicit Engine(AppModel& model)
      : volumes(makeSystemVolumes()),
        processTable(makeSystemProcessTable()),
        walker(*model.fileSystem_),
        scanner(ScanServices{*model.fileSystem_, *volumes, *processTable, processRunner, clock, model.random_, walker,
                             model.ignoreRules_},
                model.settings_) {}

  std::unique_ptr<Volumes> volumes;
  std::unique_ptr<ProcessTable> processTable;
  SafeProcessRunner processRunner;
  SystemClock clock;
  TreeWalker walker;
  Serialised<DiskScanner> scanner;
};

AppModel::AppModel(ScanSettings settings, Dispatcher& mainThread)
    : settings_(std::move(settings)),
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
  start<ScanResult>([request = std::move(request)](
                        DiskScanner& scanner, ScanPauseControl& control,
                        const ScanProgressSink& progress) { return scanner.scan(request, control, progress); },
                    std::move(handlers));
}

void AppModel::measureStorage(Handlers<StorageSnapshot> handlers) {
  start<StorageSnapshot>([](DiskScanner& scanner, ScanPauseControl& control,
                            const ScanProgressSink& progress) { return scanner.storageSummary(control, progress); },
                         std::move(handlers));
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

template <class Result, class Operation>
void AppModel::start(Operation operation, Handlers<Result> handlers) {
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
  const auto work = [operation = std::move(operation), control = control_, delivery = delivery_, operationID, finish,
                     &mainThread = mainThread_](DiskScanner& scanner) {
    const auto report = [&](CleaningScanProgressUpdate update) { delivery->submit(operationID, std::move(update)); };
    auto outcome = std::make_shared<Outcome<Result, ScanFault>>(operation(scanner, *control, report));
    mainThread.post([finish, outcome] { finish(std::move(*outcome)); });
  };
  engine().scanner.perform(work);
}

AppModel::Engine& AppModel::engine() {
  if (!engine_) {
    raiseDescriptorLimit();
    engine_ = std::make_unique<Engine>(*this);
  }
  return *engine_;
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

}  // namespace quorvane
