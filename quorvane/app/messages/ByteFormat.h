#pragma once

#include "quorvane/app/messages/MessageCatalogue.h"

#include <cstdint>
#include <string>

namespace quorvane {

/// Sizes of files and disks for people: decimal units (1 kB is 1,000 bytes), as disks are sold and file managers count.
/// "512 bytes", "43 kB", "1.2 MB", "843 MB", "12.3 GB".
namespace ByteFormat {
std::string text(const MessageCatalogue& catalogue, std::int64_t bytes);
}  // namespace ByteFormat

/// Amounts of memory for people: binary units (1 KiB is 1,024 bytes), as memory is built. "48 MiB", "1.5 GiB".
namespace MemoryFormat {
std::string text(const MessageCatalogue& catalogue, std::int64_t bytes);
}  // namespace MemoryFormat

/// Whole numbers for people: "1,234,567".
namespace NumberFormat {
std::string text(std::int64_t number);
}  // namespace NumberFormat

}  // namespace quorvane
