#pragma once

#include "quorvane/removal/Remover.h"

namespace quorvane {

/// What one removal has come to so far, and who is told of it.
class RunReport {
 public:
  /// Both outlive the object.
  RunReport(const std::vector<RemovalRequest>& requests, const RemovalOptions& options)
      : requests_(requests), options_(options) {}

  void refuse(std::size_t index, RemovalRefusal refusal) {
    result.failures.push_back({index, std::move(refusal)});
    noteDone(index);
  }

  void noteMoved(std::size_t index, std::int64_t bytes) {
    ++result.movedCount;
    result.movedBytes += bytes;
    noteDone(index);
  }

  /// Some of the requests are left as they are.
  void noteStopped() { result.wasStopped = true; }

  bool isStopped() {
    if (options_.stop.stopRequested()) noteStopped();
    return result.wasStopped;
  }

  RemovalReport result;

 private:
  void noteDone(std::size_t index) {
    ++doneCount_;
    if (options_.progressed) options_.progressed(doneCount_, requests_.size(), requests_[index].path);
  }

  const std::vector<RemovalRequest>& requests_;
  const RemovalOptions& options_;
  std::size_t doneCount_ = 0;
};

}  // namespace quorvane
