#pragma once

#include "quorvane/base/Dispatcher.h"
#include "quorvane/base/ThreadAnnotations.h"
#include "quorvane/base/Uuid.h"
#include "quorvane/scan/ScanProgress.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <functional>
#include <memory>
#include <optional>
#include <utility>

namespace quorvane {

inline double& fractionOf(double& update) { return update; }
inline double& fractionOf(CleaningScanProgressUpdate& update) { return update.progress; }

/// Carries progress from the thread of a scan to the main thread: never backwards, never two deliveries at once, at
/// least `interval` between them. Values that come faster are replaced by newer ones; the last one always arrives.
///
/// All calls may come from any thread and return at once. The handler runs on the dispatcher, which outlives the
/// delivery; a delivery that was released delivers nothing more.
template <class Update>
class ProgressDelivery : public std::enable_shared_from_this<ProgressDelivery<Update>> {
 public:
  using Handler = std::function<void(const Update&)>;

  static std::shared_ptr<ProgressDelivery> make(Dispatcher& dispatcher, std::chrono::milliseconds interval,
                                                Handler handler) {
    return std::shared_ptr<ProgressDelivery>(new ProgressDelivery(dispatcher, interval, std::move(handler)));
  }

  /// Accepts the updates of this operation from now on, from 0 again, and drops those of every other one, also those on
  /// their way. Nothing happens when it is the current operation already.
  void begin(Uuid operation) {
    const MutexLock lock(lock_);
    if (operationID_ == operation) return;
    operationID_ = operation;
    latest_.reset();
    highWater_ = 0;
    // `scheduled_` stays: a task that is posted, running or pausing will come to the new operation's updates. A second
    // one could deliver beside it.
  }

  /// Delivers the update, soon; its fraction is brought into 0 to 1. Dropped: updates of another operation, fractions
  /// that are no number or infinite, and those below an earlier one.
  void submit(Uuid operation, Update update) {
    if (accepted(operation, std::move(update))) post(std::chrono::milliseconds(0));
  }

 private:
  ProgressDelivery(Dispatcher& dispatcher, std::chrono::milliseconds interval, Handler handler)
      : dispatcher_(dispatcher), handler_(std::move(handler)), interval_(interval) {}

  /// Whether a task has to be posted for this update.
  bool accepted(Uuid operation, Update update) {
    const MutexLock lock(lock_);
    double& fraction = fractionOf(update);
    if (operationID_ != operation || !std::isfinite(fraction)) return false;
    fraction = std::clamp(fraction, 0.0, 1.0);
    if (highWater_ > fraction) return false;
    highWater_ = fraction;
    latest_ = std::move(update);
    return !std::exchange(scheduled_, true);
  }

  void post(std::chrono::milliseconds delay) {
    dispatcher_.postAfter(delay, [weak = this->weak_from_this()] {
      if (const auto self = weak.lock()) self->deliver();
    });
  }

  /// Runs in one task at a time: only the one that `scheduled_` stands for posts the next.
  void deliver() {
    const std::optional<Update> update = takeLatest();
    if (!update) return;
    handler_(*update);
    post(interval_);
  }

  std::optional<Update> takeLatest() {
    const MutexLock lock(lock_);
    scheduled_ = latest_.has_value();
    return std::exchange(latest_, std::nullopt);
  }

  Dispatcher& dispatcher_;
  const Handler handler_;

  Mutex lock_;
  const std::chrono::milliseconds interval_;
  std::optional<Uuid> operationID_ QV_GUARDED_BY(lock_);
  std::optional<Update> latest_ QV_GUARDED_BY(lock_);
  double highWater_ QV_GUARDED_BY(lock_) = 0;
  bool scheduled_ QV_GUARDED_BY(lock_) = false;  ///< a delivery is posted or running, or the pause after it
};

/// Delivers the bare fraction of a running operation.
using ScanProgressDelivery = ProgressDelivery<double>;

/// Delivers the full reports of a cleaning scan.
using CleaningScanProgressDelivery = ProgressDelivery<CleaningScanProgressUpdate>;

}  // namespace quorvane
