#pragma once

#include "quorvane/base/CaseNames.h"

#include <optional>
#include <string_view>

namespace quorvane {

/// Why an application's own files are not to be touched.
enum class SensitiveApplicationCategory {
  network,   ///< VPN clients, proxies, firewalls
  security,  ///< password managers, malware protection
};
QV_CASE_NAMES(SensitiveApplicationCategory, network, security)

/// Knows the applications whose caches and logs may hold more than can be regenerated.
namespace SensitiveApplicationPolicy {

/// By identifier (its beginning) or name (all of it, white space at the ends aside), in any case of ASCII letters.
std::optional<SensitiveApplicationCategory> category(std::string_view bundleIdentifier, std::string_view displayName);

/// For a folder of which only the name is known: tried as an identifier and as a name.
bool isSensitive(std::string_view folderName);

}  // namespace SensitiveApplicationPolicy

}  // namespace quorvane
