#include "quorvane/core/SensitiveApplicationPolicy.h"

#include "quorvane/base/Utf8.h"

#include <algorithm>
#include <array>
#include <string>

namespace quorvane::SensitiveApplicationPolicy {

namespace {

constexpr std::array<std::string_view, 28> networkPrefixes = {
    "net.tunnelblick.",
    "net.openvpn.",
    "com.openvpn.",
    "com.wireguard.",
    "io.tailscale.",
    "com.cloudflare.1dot1dot1dot1",
    "com.viscosityvpn.",
    "com.nssurge.",
    "com.west2online.clashx",
    "io.github.clash-verge-rev",
    "com.objective-see.lulu",
    "at.obdev.littlesnitch",
    "com.adguard.mac",
    "com.tripmode.",
    "com.cisco.anyconnect",
    "com.cisco.secureclient",
    "com.fortinet.forticlient",
    "com.paloaltonetworks.globalprotect",
    "com.zscaler.",
    "com.zerotier.",
    "net.netbird.",
    "net.mullvad.vpn",
    "com.nordvpn.",
    "com.expressvpn.",
    "ch.protonvpn.",
    "com.windscribe.",
    "com.privateinternetaccess.",
    "com.proxifier.",
};

constexpr std::array<std::string_view, 31> networkNames = {
    "tunnelblick",
    "openvpn",
    "openvpn connect",
    "wireguard",
    "tailscale",
    "cloudflare warp",
    "warp",
    "viscosity",
    "surge",
    "clashx",
    "clash verge",
    "clash verge rev",
    "stash",
    "proxifier",
    "little snitch",
    "lulu",
    "adguard",
    "tripmode",
    "cisco anyconnect",
    "cisco secure client",
    "forticlient",
    "globalprotect",
    "zscaler",
    "netbird",
    "zerotier one",
    "mullvad vpn",
    "nordvpn",
    "expressvpn",
    "proton vpn",
    "windscribe",
    "private internet access",
};

constexpr std::array<std::string_view, 14> securityPrefixes = {
    "com.1password.",    "com.bitwarden.", "org.keepassxc.", "com.strongbox.",     "com.enpass.",
    "com.dashlane.",     "com.lastpass.",  "com.authy.",     "com.crowdstrike.",   "com.sentinelone.",
    "com.malwarebytes.", "com.eset.",      "com.sophos.",    "com.microsoft.wdav",
};

constexpr std::array<std::string_view, 14> securityNames = {
    "1password",
    "bitwarden",
    "keepassxc",
    "strongbox",
    "enpass",
    "dashlane",
    "lastpass",
    "authy",
    "crowdstrike falcon",
    "sentinelone",
    "malwarebytes",
    "eset cyber security",
    "sophos endpoint",
    "microsoft defender",
};

template <class List>
bool holdsPrefixOf(const List& prefixes, std::string_view text) {
  return std::ranges::any_of(prefixes, [&](std::string_view prefix) { return text.starts_with(prefix); });
}

template <class List>
bool holds(const List& names, std::string_view name) {
  return std::ranges::find(names, name) != names.end();
}

}  // namespace

std::optional<SensitiveApplicationCategory> category(std::string_view bundleIdentifier, std::string_view displayName) {
  const std::string identifier = asciiLowered(bundleIdentifier);
  const std::string name = asciiLowered(trimmed(displayName));
  if (holdsPrefixOf(networkPrefixes, identifier) || holds(networkNames, name))
    return SensitiveApplicationCategory::network;
  if (holdsPrefixOf(securityPrefixes, identifier) || holds(securityNames, name))
    return SensitiveApplicationCategory::security;
  return std::nullopt;
}

bool isSensitive(std::string_view folderName) {
  const std::string_view name = trimmed(folderName);
  return category(name, name).has_value();
}

}  // namespace quorvane::SensitiveApplicationPolicy
