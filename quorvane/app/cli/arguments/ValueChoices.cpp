#include "quorvane/app/cli/arguments/ValueChoices.h"

#include "quorvane/app/cli/arguments/ScannedCategories.h"
#include "quorvane/core/SafetyLevel.h"
#include "quorvane/health/ProcessOrder.h"
#include "quorvane/removal/Recovery.h"
#include "quorvane/scan/locations/ScanSettings.h"

#include <string_view>
#include <utility>

namespace quorvane {

namespace {

// As a person types the case of a policy.
std::string_view wordOf(RestoreConflictPolicy policy) {
  switch (policy) {
    case RestoreConflictPolicy::skip: return "skip";
    case RestoreConflictPolicy::keepBoth: return "keep-both";
  }
  std::unreachable();
}

std::vector<std::string> layoutWords() {
  std::vector<std::string> words{"auto"};
  for (const HomeLayout layout : allCases<HomeLayout>()) words.emplace_back(caseName(layout));
  return words;
}

std::vector<std::string> conflictPolicyWords() {
  std::vector<std::string> words;
  for (const RestoreConflictPolicy policy : allCases<RestoreConflictPolicy>()) words.emplace_back(wordOf(policy));
  return words;
}

std::vector<std::string> sortModeWords() {
  std::vector<std::string> words;
  for (const SystemProcessSortMode mode : allCases<SystemProcessSortMode>()) words.emplace_back(caseName(mode));
  return words;
}

// Blocked is no choice: a level never selects what is blocked.
std::vector<std::string> selectorWords() {
  std::vector<std::string> words = scannedCategoryNames();
  for (const SafetyLevel level : allCases<SafetyLevel>())
    if (level != SafetyLevel::blocked) words.emplace_back(caseName(level));
  return words;
}

}  // namespace

std::vector<std::string> choicesOf(ValueKind kind) {
  switch (kind) {
    case ValueKind::category: return scannedCategoryNames();
    case ValueKind::layout: return layoutWords();
    case ValueKind::conflictPolicy: return conflictPolicyWords();
    case ValueKind::sortMode: return sortModeWords();
    case ValueKind::selector: return selectorWords();
    case ValueKind::anything:
    case ValueKind::file:
    case ValueKind::folder:
    case ValueKind::path: return {};
  }
  std::unreachable();
}

}  // namespace quorvane
