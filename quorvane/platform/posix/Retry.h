#pragma once

#include <cerrno>

namespace quorvane {

/// Makes a system call again for as long as a signal interrupts it.
template <class Call>
auto retried(Call call) {
  decltype(call()) result{};
  do {
    result = call();
  } while (result == -1 && errno == EINTR);
  return result;
}

}  // namespace quorvane
