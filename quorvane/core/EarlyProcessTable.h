#pragma once

#include "quorvane/platform/Clock.h"
#include "quorvane/platform/ProcessTable.h"

#include <chrono>
#include <future>

namespace quorvane {

/// A process table that can be read ahead of time, since reading it takes as long as moving some hundred files.
///
/// Used by one thread at a time.
class EarlyProcessTable final : public ProcessTable {
 public:
  /// Both outlive the object.
  EarlyProcessTable(ProcessTable& table, const Clock& clock) : table_(table), clock_(clock) {}

  /// Begins a reading on a thread of its own, for the next `read`; unless one was begun at most a second ago.
  void begin();

  /// What was begun at most a second ago; otherwise the table is read now.
  Outcome<std::vector<RunningProcess>, PosixError> read() override;

 private:
  bool isYoung() const;

  ProcessTable& table_;
  const Clock& clock_;
  std::chrono::steady_clock::time_point begunAt_;
  std::future<Outcome<std::vector<RunningProcess>, PosixError>> reading_;
};

}  // namespace quorvane
