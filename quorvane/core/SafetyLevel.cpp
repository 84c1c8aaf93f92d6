#include "quorvane/core/SafetyLevel.h"

#include <utility>

namespace quorvane {

std::string_view titleKey(SafetyLevel level) {
  switch (level) {
    case SafetyLevel::safe: return "safety.safe";
    case SafetyLevel::review: return "safety.review";
    case SafetyLevel::blocked: return "safety.blocked";
  }
  std::unreachable();
}

std::string_view symbolName(SafetyLevel level) {
  switch (level) {
    case SafetyLevel::safe: return "checkmark.shield";
    case SafetyLevel::review: return "exclamationmark.triangle";
    case SafetyLevel::blocked: return "lock.shield";
  }
  std::unreachable();
}

}  // namespace quorvane
