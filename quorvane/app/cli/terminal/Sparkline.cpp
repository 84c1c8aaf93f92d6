#include "quorvane/app/cli/terminal/Sparkline.h"

#include "quorvane/app/cli/terminal/Glyphs.h"

#include <algorithm>

namespace quorvane {

std::string sparkline(std::span<const double> values, double most, std::size_t columns, CharacterSet characters) {
  const auto& heights = glyphs(characters).heights;
  const std::size_t count = std::min(values.size(), columns);
  std::string line(columns - count, ' ');
  for (const double value : values.last(count)) {
    const double part = most > 0 ? std::clamp(value / most, 0.0, 1.0) : 0;
    const auto height = static_cast<std::size_t>(part * static_cast<double>(heights.size()));
    line += heights[std::min(height, heights.size() - 1)];
  }
  return line;
}

}  // namespace quorvane
