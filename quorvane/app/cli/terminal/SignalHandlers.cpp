#include "quorvane/app/cli/terminal/SignalHandlers.h"

#include <signal.h>

namespace quorvane {

void SignalHandlers::handle(std::span<const int> numbers, void (*handler)(int)) {
  struct sigaction action {};
  action.sa_handler = handler;
  action.sa_flags = SA_RESTART;
  before_.reserve(before_.size() + numbers.size());
  for (const int number : numbers) {
    Before before{number, {}};
    if (::sigaction(number, nullptr, &before.action) != 0 || before.action.sa_handler == SIG_IGN) continue;
    if (::sigaction(number, &action, nullptr) == 0) before_.push_back(before);
  }
}

void SignalHandlers::putBack() {
  for (const Before& before : before_) ::sigaction(before.number, &before.action, nullptr);
  before_.clear();
}

}  // namespace quorvane
