#include "quorvane/scan/locations/LocationTable.h"

#include "quorvane/base/Utf8.h"

#include <algorithm>
#include <utility>

namespace quorvane {

namespace {

bool isOneOf(std::string_view words, std::string_view word) {
  while (!words.empty()) {
    const std::size_t blank = words.find(' ');
    if (words.substr(0, blank) == word) return true;
    words.remove_prefix(blank == std::string_view::npos ? words.size() : blank + 1);
  }
  return false;
}

/// Whether the part stands in the name and no letter right behind it: ".log" in "a.log.1", not in "a.login".
bool holdsWord(std::string_view name, std::string_view part) {
  const auto isLetter = [](char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); };
  for (std::size_t at = name.find(part); at != std::string_view::npos; at = name.find(part, at + 1))
    if (at + part.size() == name.size() || !isLetter(name[at + part.size()])) return true;
  return false;
}

/// Some databases number the journals that hold what was written last: "000003.log".
bool isJournalOfDatabase(std::string_view name) {
  const std::size_t digits = name.find_first_not_of("0123456789");
  return digits != 0 && digits != std::string_view::npos && name.substr(digits) == ".log";
}

bool isSameInAnyCase(std::string_view left, std::string_view right) {
  const auto lowered = [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; };
  return std::ranges::equal(left, right, {}, lowered, lowered);
}

}  // namespace

const LocationTable& locationTable(HomeLayout layout) {
  switch (layout) {
    case HomeLayout::linux: return linuxLocations();
    case HomeLayout::macos: return macLocations();
  }
  std::unreachable();
}

std::vector<std::string_view> partsOf(const LocationRule& rule) {
  std::vector<std::string_view> parts;
  for (std::string_view rest = rule.parts; !rest.empty();) {
    const std::size_t bar = rest.find('|');
    parts.push_back(rest.substr(0, bar));
    rest.remove_prefix(bar == std::string_view::npos ? rest.size() : bar + 1);
  }
  return parts;
}

bool asksFor(const LocationRule& rule, std::string_view name) {
  if (!rule.namePart.empty() && !holdsWord(name, rule.namePart)) return false;
  if (rule.kind == LocationKind::log && isJournalOfDatabase(name)) return false;
  return rule.extensions.empty() || isOneOf(rule.extensions, asciiLowered(extensionOf(name)));
}

const KnownCache* knownCache(const LocationTable& table, std::string_view name) {
  const auto known = std::ranges::find_if(table.knownCaches,
                                          [&](const KnownCache& cache) { return isSameInAnyCase(cache.name, name); });
  return known == table.knownCaches.end() ? nullptr : &*known;
}

CleaningRules cleaningRules(const ScanSettings& settings, const LocationFolders& folders) {
  if (settings.layout == HomeLayout::macos) return macosCleaningRules(settings.folders.home);
  std::vector<CleaningRoot> roots;
  for (const LocationRule& rule : linuxLocations().rules) {
    const FilePath location = joined(folders.at(rule.base), rule.path);
    for (const std::string_view part : partsOf(rule)) roots.push_back({joined(location, part), true});
    if (rule.subject != LocationSubject::parts) roots.push_back({location, rule.subject == LocationSubject::itself});
  }
  return linuxCleaningRules(settings.folders, std::move(roots));
}

}  // namespace quorvane
