#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

namespace quorvane {

/// The bytes that a size text such as "1.2GB" or "512 kB" means; without a unit it counts bytes, "KiB" and its like are
/// powers of 1024. Nothing for any other text, and for more than a signed 64-bit number holds.
std::optional<std::int64_t> dockerSize(std::string_view text);

/// The same for the size of a container: a second figure in brackets ("0B (virtual 762kB)") is passed over.
std::optional<std::int64_t> dockerContainerSize(std::string_view text);

}  // namespace quorvane
