#include "quorvane/base/Utf8.h"

#include <algorithm>
#include <cstdint>

namespace quorvane {

namespace {

constexpr Utf8Step invalidByte{U'\uFFFD', 1, false};

struct Lead {
  std::size_t length;
  char32_t bits;
  char32_t smallest;  // shorter forms of smaller code points are not valid
};

Lead leadOf(std::uint8_t byte) {
  if (byte < 0x80) return {1, byte, 0};
  if ((byte & 0xE0u) == 0xC0) return {2, byte & 0x1Fu, 0x80};
  if ((byte & 0xF0u) == 0xE0) return {3, byte & 0x0Fu, 0x800};
  if ((byte & 0xF8u) == 0xF0) return {4, byte & 0x07u, 0x10000};
  return {0, 0, 0};
}

}  // namespace

Utf8Step readUtf8(std::string_view text) {
  const Lead lead = leadOf(static_cast<std::uint8_t>(text.front()));
  if (lead.length == 0 || lead.length > text.size()) return invalidByte;
  char32_t codePoint = lead.bits;
  for (std::size_t i = 1; i < lead.length; ++i) {
    const auto byte = static_cast<std::uint8_t>(text[i]);
    if ((byte & 0xC0u) != 0x80) return invalidByte;
    codePoint = codePoint << 6 | (byte & 0x3Fu);
  }
  const bool isSurrogate = codePoint >= 0xD800 && codePoint <= 0xDFFF;
  if (codePoint < lead.smallest || codePoint > 0x10FFFF || isSurrogate) return invalidByte;
  return {codePoint, lead.length, true};
}

bool isValidUtf8(std::string_view text) {
  while (!text.empty()) {
    const Utf8Step step = readUtf8(text);
    if (!step.isValid) return false;
    text.remove_prefix(step.length);
  }
  return true;
}

std::string withReplacedInvalidUtf8(std::string_view text) {
  std::string result;
  result.reserve(text.size());
  while (!text.empty()) {
    const Utf8Step step = readUtf8(text);
    result += step.isValid ? text.substr(0, step.length) : std::string_view("\xEF\xBF\xBD");
    text.remove_prefix(step.length);
  }
  return result;
}

std::string asciiLowered(std::string_view text) {
  std::string result(text);
  std::ranges::transform(result, result.begin(),
                         [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; });
  return result;
}

std::string_view trimmed(std::string_view text) {
  constexpr std::string_view white = " \t\n\v\f\r";
  const std::size_t first = text.find_first_not_of(white);
  if (first == std::string_view::npos) return {};
  return text.substr(first, text.find_last_not_of(white) - first + 1);
}

}  // namespace quorvane
