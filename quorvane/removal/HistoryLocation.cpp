#include "quorvane/removal/HistoryLocation.h"

#include <algorithm>

namespace quorvane {

bool isForeignLocation(std::string_view text) {
  constexpr std::string_view scheme = "docker://", marks = ":/_.-";
  const auto isPlain = [=](char c) {
    return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || marks.contains(c);
  };
  return text.starts_with(scheme) && text.size() > scheme.size() && std::ranges::all_of(text, isPlain);
}

}  // namespace quorvane
