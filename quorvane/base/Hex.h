#pragma once

#include <string_view>

namespace quorvane {

inline constexpr std::string_view upperCaseHexDigits = "0123456789ABCDEF";

/// The value of a hexadecimal digit in either case; -1 for any other character.
constexpr int hexDigitValue(char c) {
  if (c >= '0' && c <= '9') return c - '0';
  if (c >= 'a' && c <= 'f') return c - 'a' + 10;
  if (c >= 'A' && c <= 'F') return c - 'A' + 10;
  return -1;
}

}  // namespace quorvane
