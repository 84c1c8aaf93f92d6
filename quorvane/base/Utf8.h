#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace quorvane {

/// One step through text that claims to be UTF-8.
struct Utf8Step {
  char32_t codePoint;  ///< U+FFFD when the bytes are not valid
  std::size_t length;  ///< how many bytes it takes, at least 1
  bool isValid;
};

/// Reads the first code point of a text that is not empty (RFC 3629: shortest form, no surrogates).
Utf8Step readUtf8(std::string_view text);

bool isValidUtf8(std::string_view text);

/// The text for people: each byte that belongs to no code point becomes U+FFFD.
std::string withReplacedInvalidUtf8(std::string_view text);

/// Upper-case ASCII letters made lower-case; every other byte as it is.
std::string asciiLowered(std::string_view text);

/// The part of the text without the ASCII white space and line breaks at both ends.
std::string_view trimmed(std::string_view text);

}  // namespace quorvane
