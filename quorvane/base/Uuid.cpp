#include "quorvane/base/Uuid.h"

#include "quorvane/base/Hex.h"

namespace quorvane {

namespace {

constexpr std::string_view shape = "xxxxxxxx-xxxx-xxxx-xxxx-xxxxxxxxxxxx";

}  // namespace

Uuid Uuid::fromRandom(std::array<std::uint8_t, 16> random) {
  random[6] = static_cast<std::uint8_t>((random[6] & 0x0Fu) | 0x40u);
  random[8] = static_cast<std::uint8_t>((random[8] & 0x3Fu) | 0x80u);
  return Uuid{random};
}

std::string uuidText(const Uuid& uuid) {
  std::string text;
  text.reserve(shape.size());
  for (const std::uint8_t byte : uuid.bytes) {
    if (shape[text.size()] == '-') text += '-';
    text += upperCaseHexDigits[byte >> 4];
    text += upperCaseHexDigits[byte & 0x0Fu];
  }
  return text;
}

std::optional<Uuid> uuidFromText(std::string_view text) {
  if (text.size() != shape.size()) return std::nullopt;
  Uuid uuid;
  std::size_t digit = 0;
  for (std::size_t i = 0; i < shape.size(); ++i) {
    if (shape[i] == '-') {
      if (text[i] != '-') return std::nullopt;
      continue;
    }
    const int value = hexDigitValue(text[i]);
    if (value < 0) return std::nullopt;
    uuid.bytes[digit / 2] = static_cast<std::uint8_t>(uuid.bytes[digit / 2] << 4 | value);
    ++digit;
  }
  return uuid;
}

}  // namespace quorvane
