#pragma once

#include <array>
#include <functional>
#include <thread>

namespace quorvane {

/// Runs all of them at once, one on this thread, and returns when the last one is done. What they write must not be
/// shared among them.
template <class First, class... Others>
void sideBySide(First&& first, Others&&... others) {
  std::array<std::thread, sizeof...(Others)> threads{std::thread(std::ref(others))...};
  first();
  for (std::thread& thread : threads) thread.join();
}

}  // namespace quorvane
