#include "quorvane/health/SystemStatusMonitor.h"

#include <algorithm>
#include <utility>

namespace quorvane {

SystemStatusMonitor::SystemStatusMonitor(Dispatcher& mainThread, SystemStatusSampler sampler,
                                         SystemStatusSnapshot empty, Options options, std::function<void()> published)
    : mainThread_(mainThread),
      sampler_(std::move(sampler)),
      options_(options),
      published_(std::move(published)),
      snapshot_(std::move(empty)),
      nextInterval_(std::min(options.firstInterval, options.refreshInterval)) {
  for (auto* history : {&cpuHistory_, &memoryHistory_, &networkHistory_}) history->reserve(options_.historyLimit + 1);
}

void SystemStatusMonitor::start() {
  if (std::exchange(isRepeating_, true)) return;
  if (!isPaused_) refreshNow();
}

void SystemStatusMonitor::stop() {
  isRepeating_ = false;
  forgetWhatIsUnderWay();
}

void SystemStatusMonitor::pause() { isPaused_ = true; }

void SystemStatusMonitor::resume() {
  if (std::exchange(isPaused_, false) && isRepeating_) refreshNow();
}

void SystemStatusMonitor::refreshNow() {
  if (isRefreshing_) return;
  forgetWhatIsUnderWay();
  isRefreshing_ = true;
  sampler_([this, task = std::weak_ptr(task_), &mainThread = mainThread_](SystemStatusSnapshot snapshot) {
    auto sample = std::make_shared<SystemStatusSnapshot>(std::move(snapshot));
    mainThread.post([this, task, sample] {
      if (!task.expired()) publish(std::move(*sample));
    });
  });
}

void SystemStatusMonitor::publish(SystemStatusSnapshot snapshot) {
  snapshot_ = std::move(snapshot);
  remember(SystemStatusInput::processor, snapshot_.cpuPercent, cpuHistory_);
  remember(SystemStatusInput::memory, memoryPercent(snapshot_), memoryHistory_);
  remember(SystemStatusInput::network, snapshot_.networkDownloadBytesPerSecond + snapshot_.networkUploadBytesPerSecond,
           networkHistory_);
  isRefreshing_ = false;
  scheduleNext();
  published_();
}

void SystemStatusMonitor::remember(SystemStatusInput input, double value, std::vector<double>& history) const {
  if (!isMeasured(snapshot_, input)) return;
  history.push_back(value);
  if (history.size() > options_.historyLimit) history.erase(history.begin());
}

void SystemStatusMonitor::scheduleNext() {
  const auto interval = std::exchange(nextInterval_, options_.refreshInterval);
  if (!isRepeating_) return;
  mainThread_.postAfter(interval, [this, task = std::weak_ptr(task_)] {
    if (!task.expired() && !isPaused_) refreshNow();
  });
}

void SystemStatusMonitor::forgetWhatIsUnderWay() {
  task_ = std::make_shared<const bool>(true);
  isRefreshing_ = false;
}

}  // namespace quorvane
