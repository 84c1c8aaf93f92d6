#include "quorvane/scan/locations/PlaceEvidence.h"

#include "tests/support/ScanHome.h"

#include <gtest/gtest.h>

namespace quorvane {
namespace {

using namespace std::chrono_literals;

TEST(PlaceEvidenceTests, saysWhatTheRuleForAnItemRestsOn) {
  const struct {
    const char* path;
    EvidenceKind kind;
    std::string_view source = {};
    std::string_view broughtBy = {};
  } cases[] = {
      {".cache/pip", EvidenceKind::clearingCommand, "pip cache purge", "pip install"},
      {".npm/_npx", EvidenceKind::ownersWord, "docs.npmjs.com/cli/v10/commands/npx", "npx"},
      {".config/Slack/Code Cache", EvidenceKind::ownersWord, "www.electronjs.org/docs/latest/api/session"},
      {".cache/Mesa_Shader_Cache", EvidenceKind::baseDirectories},
      {".var/app/org.any.App/cache/fontconfig", EvidenceKind::rebuildCommand, "fc-cache", "fc-cache"},
      {".cache/Google/AndroidStudio1", EvidenceKind::baseDirectories},
      {".cache/unheard-of", EvidenceKind::undocumented},
      {".cache/tagged", EvidenceKind::cacheTag},
      {"projects/mine/target", EvidenceKind::cacheTag},
      {".local/state/some.log", EvidenceKind::logFile},
      {"Downloads/old.iso", EvidenceKind::age},
  };
  ScanHome home{HomeLayout::linux};
  for (const auto& each : cases) {
    const bool isFile = each.kind == EvidenceKind::logFile || each.kind == EvidenceKind::age;
    home.write(isFile ? each.path : std::string(each.path) + "/content");
    if (each.kind == EvidenceKind::cacheTag)
      home.write(std::string(each.path) + "/CACHEDIR.TAG", "Signature: 8a477f597d28d172789f06886806bc55");
  }
  home.age("", 24h * 40);

  const ScanResult result = home.scan();
  const LocationFolders folders(home.settings, home.fileSystem);
  const PlaceEvidence evidence(linuxLocations(), folders);
  for (const auto& each : cases) {
    const Evidence expected{each.kind, each.source, each.broughtBy};
    EXPECT_EQ(evidence.of(itemAt(result, home.at(each.path))), expected) << each.path;
  }
  ScanItem elsewhere;
  elsewhere.url.path = home.at("documents");
  EXPECT_EQ(evidence.of(elsewhere).kind, EvidenceKind::none);
}

}  // namespace
}  // namespace quorvane
