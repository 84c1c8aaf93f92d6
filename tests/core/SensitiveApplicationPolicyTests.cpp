#include "quorvane/core/SensitiveApplicationPolicy.h"

#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <vector>

namespace quorvane {
namespace {

using enum SensitiveApplicationCategory;

TEST(SensitiveApplicationPolicyTests, goesByIdentifierPrefixOrWholeName) {
  struct Case {
    std::string identifier, name;
    std::optional<SensitiveApplicationCategory> category;
  };
  for (const auto& [identifier, name, category] : std::vector<Case>{
           {"com.wireguard.macos", "", network},
           {"COM.WireGuard.Mac", "", network},
           {"com.cloudflare.1dot1dot1dot1.macos", "", network},
           {"com.privateinternetaccess.vpn", "", network},
           {"com.proxifier.macos", "", network},
           {"com.1password.1password", "", security},
           {"com.microsoft.wdav.tray", "", security},
           {"com.bitwarden", "", std::nullopt},  // the prefix ends in a dot
           {"org.com.bitwarden.desktop", "", std::nullopt},
           {" com.bitwarden.desktop", "", std::nullopt},  // an identifier is not trimmed
           {"example.unknown", " \tLuLu\n", network},
           {"example.unknown", "Private Internet Access", network},
           {"example.unknown", "KeePassXC", security},
           {"example.unknown", "keepassxc 2", std::nullopt},
           {"", "", std::nullopt},
           {"com.bitwarden.desktop", "Tailscale", network},  // network names come before security prefixes
       })
    EXPECT_EQ(SensitiveApplicationPolicy::category(identifier, name), category) << identifier << " / " << name;
}

TEST(SensitiveApplicationPolicyTests, triesAFolderNameAsBoth) {
  for (const std::string name : {"com.bitwarden.desktop", " COM.BITWARDEN.desktop\n", "Bitwarden", "mullvad vpn",
                                 "io.tailscale.ipn.macos", "Microsoft Defender"})
    EXPECT_TRUE(SensitiveApplicationPolicy::isSensitive(name)) << name;
  for (const std::string name : {"", " \n", "com.apple.Safari", "bitwarden-cache", "mozilla", "fontconfig"})
    EXPECT_FALSE(SensitiveApplicationPolicy::isSensitive(name)) << name;
}

}  // namespace
}  // namespace quorvane
