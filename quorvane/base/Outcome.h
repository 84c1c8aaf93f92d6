#pragma once

#include <expected>
#include <utility>

namespace quorvane {

/// A value, or the typed reason why there is none. Ignoring one is a compile-time warning.
template <class T, class E>
class [[nodiscard]] Outcome : public std::expected<T, E> {
 public:
  using std::expected<T, E>::expected;
};

/// Turns a reason into the failing side of any `Outcome` that carries such a reason.
template <class E>
[[nodiscard]] constexpr std::unexpected<std::decay_t<E>> failure(E&& reason) {
  return std::unexpected<std::decay_t<E>>(std::forward<E>(reason));
}

}  // namespace quorvane
