#include "quorvane/scan/ApplicationSafetyPolicy.h"

#include "quorvane/core/SensitiveApplicationPolicy.h"

namespace quorvane::ApplicationSafetyPolicy {

namespace {

bool isSensitive(const LeftoverQuery& application) {
  return SensitiveApplicationPolicy::category(application.bundleIdentifier, application.name).has_value();
}

ItemVerdict unlessSensitive(const LeftoverQuery& application, SafetyLevel safety, std::string_view reasonKey) {
  if (isSensitive(application)) return {SafetyLevel::blocked, "reason.sensitiveApplicationProtected"};
  return {safety, std::string(reasonKey)};
}

}  // namespace

std::vector<LeftoverPlace> places(const LeftoverQuery& application) {
  const std::string& identifier = application.bundleIdentifier;
  if (!isOneComponent(identifier)) return {};
  const ItemVerdict own = unlessSensitive(application, SafetyLevel::safe, "reason.bundleIdentifierMatch");
  std::vector<LeftoverPlace> found{
      {"Library/Caches", identifier, own},
      {"Library/Preferences", identifier + ".plist", own},
      {"Library/Saved Application State", identifier + ".savedState", own},
      {"Library/WebKit", identifier, own},
      {"Library/HTTPStorages", identifier, own},
      {"Library/Cookies", identifier + ".binarycookies", own},
  };
  if (isOneComponent(application.name)) {
    const ItemVerdict byName =
        unlessSensitive(application, SafetyLevel::blocked, "reason.applicationOwnershipUnverified");
    found.push_back({"Library/Application Support", application.name, byName});
    found.push_back({"Library/Logs", application.name, byName});
  }
  found.push_back({"Library/Containers", identifier,
                   unlessSensitive(application, SafetyLevel::review, "reason.applicationContainerMatch")});
  return found;
}

bool ownsLaunchAgent(const LeftoverQuery& application, std::string_view fileName) {
  constexpr std::string_view extension = ".plist";
  if (!fileName.ends_with(extension)) return false;
  fileName.remove_suffix(extension.size());
  return fileName == application.bundleIdentifier || fileName.starts_with(application.bundleIdentifier + ".");
}

ItemVerdict launchAgentVerdict(const LeftoverQuery& application) {
  return unlessSensitive(application, SafetyLevel::blocked, "reason.launchAgentProtected");
}

}  // namespace quorvane::ApplicationSafetyPolicy
