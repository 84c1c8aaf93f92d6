#pragma once

#include <cstdint>
#include <random>
#include <vector>

namespace quorvane {

/// Numbers by chance, the same ones for the same seed on every system.
class Chance {
 public:
  explicit Chance(std::uint64_t seed) : engine_(seed) {}

  std::uint64_t number() { return engine_(); }

  /// From 0 up to, and without, `limit`.
  std::size_t below(std::size_t limit) { return engine_() % limit; }

  bool percent(unsigned share) { return below(100) < share; }

  template <class Value>
  const Value& of(const std::vector<Value>& values) {
    return values[below(values.size())];
  }

 private:
  std::mt19937_64 engine_;
};

}  // namespace quorvane
