#include "quorvane/app/model/StatusModel.h"

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
  std::unique_ptr<StatusModel> model;
  bool isSecond = false;
  model = std::make_unique<StatusModel>(loop, options, [&] {
    if (std::exchange(isSecond, true)) return loop.stop();
    loop.postAfter(firstRatesAfter, [&] { model->monitor().refreshNow(); });
  });
  model->monitor().refreshNow();
  loop.run();
  return model->monitor().snapshot();
}

}  // namespace quorvane
