#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace quorvane {

/// The bytes with each percent-encoded that is no unreserved character of a URL (RFC 3986) and no slash.
std::string percentEncoded(std::string_view bytes);

/// The bytes behind such a text, also where it encodes more or less than `percentEncoded` does; nothing when a "%" has
/// no two hexadecimal digits behind it, or for a NUL.
std::optional<std::string> percentDecoded(std::string_view text);

}  // namespace quorvane
