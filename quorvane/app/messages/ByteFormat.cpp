#include "quorvane/app/messages/ByteFormat.h"

#include <fmt/format.h>

#include <array>
#include <cmath>
#include <string_view>

namespace quorvane {

namespace {

struct Units {
  double base;
  std::array<std::string_view, 6> keys;  // of the powers of the base, from the first one on
};

constexpr Units decimal{
    1000.0,
    {"size.kilobytes", "size.megabytes", "size.gigabytes", "size.terabytes", "size.petabytes", "size.exabytes"}};
constexpr Units binary{
    1024.0,
    {"size.kibibytes", "size.mebibytes", "size.gibibytes", "size.tebibytes", "size.pebibytes", "size.exbibytes"}};

// Tenths only where they tell something: below 100, and not of the smallest unit.
int decimalsOf(double value, std::size_t unit) { return unit > 0 && value < 99.95 ? 1 : 0; }

double rounded(double value, int decimals) {
  const double scale = decimals == 0 ? 1 : 10;
  return std::round(value * scale) / scale;
}

std::string amountText(const MessageCatalogue& catalogue, std::int64_t bytes, const Units& units) {
  double value = std::abs(static_cast<double>(bytes));
  if (value < units.base) return catalogue.text({"size.bytes", {{"count", bytes}}});
  value /= units.base;
  std::size_t unit = 0;
  while (unit + 1 < units.keys.size() && rounded(value, decimalsOf(value, unit)) >= units.base) {
    value /= units.base;
    ++unit;
  }
  const int decimals = decimalsOf(value, unit);
  const double shown = std::copysign(rounded(value, decimals), static_cast<double>(bytes));
  return catalogue.text({std::string(units.keys[unit]), {{"value", fmt::format("{:.{}f}", shown, decimals)}}});
}

}  // namespace

std::string ByteFormat::text(const MessageCatalogue& catalogue, std::int64_t bytes) {
  return amountText(catalogue, bytes, decimal);
}

std::string MemoryFormat::text(const MessageCatalogue& catalogue, std::int64_t bytes) {
  return amountText(catalogue, bytes, binary);
}

std::string NumberFormat::text(std::int64_t number) {
  std::string digits = fmt::format("{}", number);
  const std::size_t first = number < 0 ? 1 : 0;
  for (std::size_t place = digits.size(); place > first + 3;) digits.insert(place -= 3, 1, ',');
  return digits;
}

}  // namespace quorvane
