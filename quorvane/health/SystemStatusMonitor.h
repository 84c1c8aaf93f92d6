#pragma once

#include "quorvane/base/Dispatcher.h"
#include "quorvane/health/SystemStatusSnapshot.h"

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <vector>

namespace quorvane {

/// Takes one sample, on whatever thread, and hands it over there.
using SystemStatusSampler = std::function<void(std::function<void(SystemStatusSnapshot)> sampled)>;

/// Samples again and again, keeps short histories, and tells whoever shows them.
///
/// Belongs to the main thread, where its handler runs too. Samplings that are under way when it is destroyed are not
/// told of any more.
class SystemStatusMonitor {
 public:
  struct Options {
    std::chrono::milliseconds refreshInterval{2000};  ///< from one sample that was told to the beginning of the next
    std::chrono::milliseconds firstInterval{250};     ///< the same from the first one, where that is shorter: its rates
    std::size_t historyLimit = 150;                   ///< values kept of each kind; five minutes by default
  };

  /// `empty` is what there is to show before the first sample; `published` is called after each one.
  SystemStatusMonitor(Dispatcher& mainThread, SystemStatusSampler sampler, SystemStatusSnapshot empty, Options options,
                      std::function<void()> published);

  /// Samples at once and from then on; nothing when it does so already.
  void start();
  /// Ends that; a sampling under way is not told of.
  void stop();
  /// Takes no samples until `resume`, which takes one at once.
  void pause();
  void resume();
  /// Takes one sample now, even while stopped or paused; nothing while one is being taken. The next one comes after a
  /// whole interval.
  void refreshNow();

  const SystemStatusSnapshot& snapshot() const { return snapshot_; }
  /// What was measured, the oldest first: the load in percent, memory in percent, and the bytes a second, down and up
  /// together.
  const std::vector<double>& cpuHistory() const { return cpuHistory_; }
  const std::vector<double>& memoryHistory() const { return memoryHistory_; }
  const std::vector<double>& networkHistory() const { return networkHistory_; }
  std::chrono::milliseconds refreshInterval() const { return options_.refreshInterval; }
  bool isRefreshing() const { return isRefreshing_; }
  bool isPaused() const { return isPaused_; }

 private:
  void publish(SystemStatusSnapshot snapshot);
  void remember(SystemStatusInput input, double value, std::vector<double>& history) const;
  void scheduleNext();
  void forgetWhatIsUnderWay();

  Dispatcher& mainThread_;
  const SystemStatusSampler sampler_;
  const Options options_;
  const std::function<void()> published_;
  SystemStatusSnapshot snapshot_;
  std::vector<double> cpuHistory_, memoryHistory_, networkHistory_;
  std::chrono::milliseconds nextInterval_;
  bool isRepeating_ = false;
  bool isPaused_ = false;
  bool isRefreshing_ = false;
  /// What was posted holds a weak reference to the one of its time; a new one makes it come to nothing.
  std::shared_ptr<const bool> task_ = std::make_shared<const bool>(true);
};

}  // namespace quorvane
