#pragma once

#include "quorvane/base/Uuid.h"

#include <cstddef>
#include <span>

namespace quorvane {

/// Unpredictable bytes. A system that has none to give ends the program: nothing it does is safe without.
class RandomSource {
 public:
  virtual ~RandomSource() = default;
  virtual void fill(std::span<std::byte> bytes) = 0;

  Uuid uuid();
};

class SystemRandomSource final : public RandomSource {
 public:
  void fill(std::span<std::byte> bytes) override;
};

}  // namespace quorvane
