#pragma once

#include <array>
#include <compare>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

namespace quorvane {

/// A universally unique identifier (RFC 9562).
struct Uuid {
  std::array<std::uint8_t, 16> bytes{};

  auto operator<=>(const Uuid&) const = default;

  /// A version 4 identifier out of 16 random bytes.
  static Uuid fromRandom(std::array<std::uint8_t, 16> random);
};

/// 36 characters, upper case, "6F9619FF-8B86-4011-B42D-00C04FC964FF".
std::string uuidText(const Uuid& uuid);

/// Reads 36 characters in either case; nothing for any other text.
std::optional<Uuid> uuidFromText(std::string_view text);

}  // namespace quorvane

template <>
struct std::hash<quorvane::Uuid> {
  std::size_t operator()(const quorvane::Uuid& uuid) const {
    return std::hash<std::string_view>()({reinterpret_cast<const char*>(uuid.bytes.data()), uuid.bytes.size()});
  }
};
