// The catalogue and the sources agree: no key is used without a text, no text stands there without a use.
#include "quorvane/app/messages/MessageCatalogue.h"
#include "quorvane/core/AppPaths.h"
#include "quorvane/core/FileProtectionError.h"
#include "quorvane/core/IgnoreRuleStore.h"
#include "quorvane/core/SafetyLevel.h"
#include "quorvane/core/ScanCategory.h"
#include "quorvane/core/ScanCoverage.h"
#include "quorvane/developer/DockerCleanupError.h"
#include "quorvane/developer/DockerRechecks.h"
#include "quorvane/developer/DockerSafetyPolicy.h"
#include "quorvane/developer/DockerServiceError.h"
#include "quorvane/health/HealthScore.h"
#include "quorvane/health/ProcessOrder.h"
#include "quorvane/removal/CleaningHistory.h"
#include "quorvane/removal/RecoveryStoreError.h"
#include "quorvane/scan/DiskScanner.h"
#include "quorvane/scan/ScanSelectionPreflight.h"
#include "quorvane/scan/locations/Evidence.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <regex>
#include <set>

namespace quorvane {
namespace {

using Keys = std::set<std::string, std::less<>>;

std::string familyOf(std::string_view key) { return std::string(key.substr(0, key.find('.'))); }

// A literal is told to be a key by its family, or by a word that only keys have in them.
bool isKeyOf(const Keys& families, std::string_view text) {
  if (text == AppPaths::historyName) return false;
  const auto holds = [&](std::string_view word) { return text.contains(word); };
  constexpr std::string_view words[] = {".error.", ".reason.", ".status.", ".note.", ".notice.", ".failure."};
  return families.contains(familyOf(text)) || std::ranges::any_of(words, holds);
}

// The literals of words with dots between them, of letters and digits, each beginning with a small letter.
Keys keysIn(const std::string& source, const Keys& families) {
  static const std::regex literal("\"([a-z][A-Za-z0-9]*(\\.[a-z][A-Za-z0-9]*)+)\"");
  Keys keys;
  for (std::sregex_iterator found(source.begin(), source.end(), literal), end; found != end; ++found)
    if (isKeyOf(families, found->str(1))) keys.insert(found->str(1));
  return keys;
}

template <NamedEnumeration E>
void addCases(Keys& keys, std::string_view prefix) {
  for (const E value : allCases<E>()) keys.insert(std::string(prefix) + std::string(caseName(value)));
}

// The keys that the code puts together out of a prefix and the name of a case.
Keys derivedKeys() {
  Keys keys;
  addCases<FileProtectionError>(keys, "protection.error.");
  addCases<IgnoreRuleFault>(keys, "ignore.error.");
  addCases<ScanFault>(keys, "scan.error.");
  addCases<ScanSelectionPreflight::Demotion>(keys, "reason.preflight.");
  addCases<CleanupFailureCategory>(keys, "cleanup.failure.category.");
  addCases<RecoveryFailure>(keys, "recovery.failure.");
  addCases<RecoveryStoreFault>(keys, "history.error.");
  addCases<JsonFault>(keys, "json.fault.");
  addCases<EvidenceKind>(keys, "evidence.");
  keys.erase("evidence.none");
  addCases<DockerServiceFault>(keys, "docker.error.");
  addCases<DockerReviewFault>(keys, "docker.review.error.");
  addCases<DockerRetryFault>(keys, "docker.retry.error.");
  addCases<DockerPresence>(keys, "cleanup.command.");
  addCases<DockerCleanupSafety>(keys, "docker.safety.");
  for (const DockerResourceKind kind : allDockerResourceKinds) keys.merge(Keys{titleKey(kind), detailKey(kind)});
  for (const char* state : {"running", "paused", "restarting", "exited", "created", "dead", "?"})
    keys.insert(DockerSafetyPolicy::stateKey(state));
  addCases<SystemHealthLevel>(keys, "status.health.");
  addCases<SystemStatusInput>(keys, "status.input.");
  addCases<SystemThermalLevel>(keys, "status.thermal.");
  addCases<SystemProcessSortMode>(keys, "status.process.sort.");
  addCases<ScanCoverageReason>(keys, "coverage.reason.");
  for (const char* untold : {"read", "missing", "categoryNotAsked"})
    keys.erase(std::string("coverage.reason.") + untold);
  return keys;
}

// The catalogue's keys without their plural suffixes.
Keys baseKeys(const MessageCatalogue& catalogue) {
  Keys keys;
  for (const auto& [key, text] : catalogue.texts()) {
    const std::size_t end = key.ends_with("_one") ? 4 : key.ends_with("_other") ? 6 : 0;
    keys.insert(key.substr(0, key.size() - end));
  }
  return keys;
}

Keys familiesOf(const Keys& keys) {
  Keys families;
  for (const auto& key : keys) families.insert(familyOf(key));
  return families;
}

Keys usedKeys(const Keys& families) {
  Keys used = derivedKeys();
  for (const auto& entry : std::filesystem::recursive_directory_iterator(QUORVANE_SOURCE_DIR "/quorvane")) {
    if (entry.path().extension() != ".h" && entry.path().extension() != ".cpp") continue;
    std::ifstream file(entry.path());
    used.merge(keysIn(std::string{std::istreambuf_iterator<char>(file), {}}, families));
  }
  return used;
}

Keys difference(const Keys& left, const Keys& right) {
  Keys rest;
  std::ranges::set_difference(left, right, std::inserter(rest, rest.end()));
  return rest;
}

TEST(MessageKeysTests, areAllThereAndAllUsed) {
  const Keys present = baseKeys(MessageCatalogue::english());
  const Keys used = usedKeys(familiesOf(present));
  EXPECT_GT(used.size(), 100U);
  EXPECT_EQ(difference(used, present), Keys{}) << "used in the sources, but without a text in en.json";
  EXPECT_EQ(difference(present, used), Keys{}) << "in en.json, but used nowhere";
}

}  // namespace
}  // namespace quorvane
