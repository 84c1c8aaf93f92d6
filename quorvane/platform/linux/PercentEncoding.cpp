#include "quorvane/platform/linux/PercentEncoding.h"

#include "quorvane/base/Hex.h"

namespace quorvane {

namespace {

bool standsForItself(char c) {
  const bool isAlphanumeric = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9');
  return isAlphanumeric || std::string_view("/-._~").contains(c);
}

std::optional<char> byteOf(std::string_view digits) {
  if (digits.size() < 2) return std::nullopt;
  const int high = hexDigitValue(digits[0]), low = hexDigitValue(digits[1]);
  if (high < 0 || low < 0) return std::nullopt;
  return static_cast<char>(high << 4 | low);
}

}  // namespace

std::string percentEncoded(std::string_view bytes) {
  std::string text;
  text.reserve(bytes.size());
  for (const char c : bytes) {
    if (standsForItself(c)) {
      text += c;
    } else {
      const auto byte = static_cast<unsigned char>(c);
      text += {'%', upperCaseHexDigits[byte >> 4], upperCaseHexDigits[byte & 0x0Fu]};
    }
  }
  return text;
}

std::optional<std::string> percentDecoded(std::string_view text) {
  std::string bytes;
  bytes.reserve(text.size());
  for (std::size_t i = 0; i < text.size(); ++i) {
    const bool isEncoded = text[i] == '%';
    const std::optional<char> byte = isEncoded ? byteOf(text.substr(i + 1)) : text[i];
    if (!byte || *byte == '\0') return std::nullopt;
    bytes += *byte;
    if (isEncoded) i += 2;
  }
  return bytes;
}

}  // namespace quorvane
