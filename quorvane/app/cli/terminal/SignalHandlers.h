#pragma once

#include <csignal>
#include <span>
#include <vector>

namespace quorvane {

/// Handles signals in another way as long as it lives; then they are handled as they were before.
class SignalHandlers {
 public:
  SignalHandlers() = default;
  ~SignalHandlers() { putBack(); }
  SignalHandlers(const SignalHandlers&) = delete;
  SignalHandlers& operator=(const SignalHandlers&) = delete;

  /// From now on the signals are handled so, those excepted that the process was started to overlook, and those that
  /// cannot be handled.
  void handle(std::span<const int> numbers, void (*handler)(int));
  /// Ends that for all of them.
  void putBack();

 private:
  struct Before {
    int number;
    struct sigaction action;
  };

  std::vector<Before> before_;
};

}  // namespace quorvane
