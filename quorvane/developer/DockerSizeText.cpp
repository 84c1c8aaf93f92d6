#include "quorvane/developer/DockerSizeText.h"

#include "quorvane/base/Utf8.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace quorvane {

namespace {

struct Unit {
  std::string_view name;  // lowered
  double factor;
};

constexpr std::array units{
    Unit{"", 1},
    Unit{"b", 1},
    Unit{"kb", 1e3},
    Unit{"mb", 1e6},
    Unit{"gb", 1e9},
    Unit{"tb", 1e12},
    Unit{"kib", 1024},
    Unit{"mib", 1048576.0},
    Unit{"gib", 1073741824.0},
    Unit{"tib", 1099511627776.0},
};

constexpr double firstTooLarge = 9223372036854775808.0;  // 2^63

bool isDigit(char c) { return c >= '0' && c <= '9'; }

std::string_view takeDigits(std::string_view& text) {
  const auto end = std::ranges::find_if_not(text, isDigit);
  const std::string_view digits = text.substr(0, static_cast<std::size_t>(end - text.begin()));
  text.remove_prefix(digits.size());
  return digits;
}

void append(double& number, std::string_view digits) {
  for (const char digit : digits) number = number * 10 + (digit - '0');
}

/// "12" or "12.5", whatever the locale.
std::optional<double> takeNumber(std::string_view& text) {
  const std::string_view whole = takeDigits(text);
  if (whole.empty()) return std::nullopt;
  double number = 0;
  append(number, whole);
  if (!text.starts_with('.')) return number;
  text.remove_prefix(1);
  const std::string_view fraction = takeDigits(text);
  if (fraction.empty()) return std::nullopt;
  append(number, fraction);
  return number / std::pow(10.0, static_cast<double>(fraction.size()));
}

}  // namespace

std::optional<std::int64_t> dockerSize(std::string_view text) {
  const auto number = takeNumber(text);
  if (!number) return std::nullopt;
  text.remove_prefix(std::min(text.find_first_not_of(" \t\n\r\f\v"), text.size()));
  const auto unit = std::ranges::find(units, asciiLowered(text), &Unit::name);
  if (unit == units.end()) return std::nullopt;
  const double bytes = std::round(*number * unit->factor);
  if (!std::isfinite(bytes) || bytes >= firstTooLarge) return std::nullopt;
  return static_cast<std::int64_t>(bytes);
}

std::optional<std::int64_t> dockerContainerSize(std::string_view text) {
  return dockerSize(trimmed(text.substr(0, text.find('('))));
}

}  // namespace quorvane
