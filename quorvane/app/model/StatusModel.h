#pragma once

#include "quorvane/app/model/MainLoop.h"
#include "quorvane/base/Dispatcher.h"
#include "quorvane/base/Serialised.h"
#include "quorvane/health/SystemStatusMonitor.h"
#include "quorvane/health/SystemStatusService.h"
#include "quorvane/platform/SystemPlatform.h"

#include <chrono>
#include <functional>
#include <memory>

namespace quorvane {

/// The status of this machine for a face: the sampling of the system on a thread of its own, and its monitor.
///
/// Belongs to the main thread. Destroying it ends a sampling that takes long, and waits for it.
class StatusModel {
 public:
  struct Options {
    SystemStatusMonitor::Options monitor = {};
    bool withProcesses = true;
  };

  /// Starts the thread, and takes no sample yet. `published` is called on the main thread after each one.
  StatusModel(Dispatcher& mainThread, Options options, std::function<void()> published);
  ~StatusModel();

  SystemStatusMonitor& monitor() { return *monitor_; }

 private:
  struct Sources;

  StopSource stop_;
  std::unique_ptr<Sources> sources_;
  std::unique_ptr<Serialised<SystemStatusService>> service_;
  std::unique_ptr<SystemStatusMonitor> monitor_;
};

/// Runs the loop for as long as two samples take, and gives the second one, whose rates are true.
SystemStatusSnapshot measuredStatus(MainLoop& loop, StatusModel::Options options);

}  // namespace quorvane
