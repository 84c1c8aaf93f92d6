#include "quorvane/health/SystemStatusMonitor.h"

#include <utility>

namespace quorvane {

SystemStatusMonitor::SystemStatusMonitor(Dispatcher& mainThread, SystemStatusSampler sampler,
                                         SystemStatusSnapshot empty, Options options, std::function<void()> published)
    : mainThread_(mainThread),
      sampler_(std::move(sampler)),
      options_(options),
      published_(std::move(published)),
      snapshot_(std::move(empty)) {
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
  remember(cpuHistory_, snapshot_.cpuPercent);
  remember(memoryHistory_, memoryPercent(snapshot_));
  remember(networkHistory_, snapshot_.networkDownloadBytesPerSecond + snapshot_.networkUploadBytesPerSecond);
  isRefreshing_ = false;
  scheduleNext();
  published_();
}

void SystemStatusMonitor::remember(std::vector<double>& history, double value) const {
  history.push_back(value);
  if (history.size() > options_.historyLimit) history.erase(history.begin());
}

void SystemStatusMonitor::scheduleNext() {
  if (!isRepeating_) return;
  mainThread_.postAfter(options_.refreshInterval, [this, task = std::weak_ptr(task_)] {
    if (!task.expired() && !isPaused_) refreshNow();
  });
}

void SystemStatusMonitor::forgetWhatIsUnderWay() {
  task_ = std::make_shared<const bool>(true);
  isRefreshing_ = false;
}

}  // namespace quorvane
