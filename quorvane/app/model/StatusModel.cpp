#include "quorvane/app/model/StatusModel.h"

#include "quorvane/platform/BlockedSignals.h"

#include <utility>

namespace quorvane {

/// What the service reads, as this system has it.
struct StatusModel::Sources {
  SystemClock clock;
  SafeProcessRunner runner;
  std::unique_ptr<SystemCounters> counters = makeSystemCounters();
  std::unique_ptr<SystemSensors> sensors = makeSystemSensors();
  std::unique_ptr<SystemProcesses> processes = makeSystemProcesses(clock, runner);
  std::unique_ptr<Volumes> volumes = makeSystemVolumes();
};

StatusModel::StatusModel(Dispatcher& mainThread, Options options, std::function<void()> published)
    : sources_(std::make_unique<Sources>()) {
  SystemStatusSnapshot empty = emptySnapshot(*sources_->counters);
  const BlockedSignals blocked;
  service_ = std::make_unique<Serialised<SystemStatusService>>(SystemStatusSources{
      *sources_->counters, *sources_->sensors, *sources_->processes, *sources_->volumes, sources_->clock});
  const SystemSampleRequest request{options.withProcesses, stop_.token()};
  const auto sampler = [&service = *service_, request](const std::function<void(SystemStatusSnapshot)>& sampled) {
    service.perform([request, sampled](SystemStatusService& status) { sampled(status.sample(request)); });
  };
  monitor_ = std::make_unique<SystemStatusMonitor>(mainThread, sampler, std::move(empty), options.monitor,
                                                   std::move(published));
}

StatusModel::~StatusModel() { stop_.requestStop(); }

SystemStatusSnapshot measuredStatus(MainLoop& loop, StatusModel::Options options) {
  bool isSecond = false;
  StatusModel model(loop, options, [&] {
    if (std::exchange(isSecond, true)) loop.stop();
  });
  model.monitor().start();
  loop.run();
  return model.monitor().snapshot();
}

}  // namespace quorvane
