#include "quorvane/developer/DockerNames.h"

#include "quorvane/base/Utf8.h"

#include <algorithm>
#include <array>
#include <utility>
#include <vector>

namespace quorvane {

namespace {

constexpr std::string_view digestPrefix = "sha256:";
constexpr std::string_view noName = "<none>";
constexpr std::size_t digitsOfID = 64, shownDigits = 12;

bool isHex(char c) { return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'f'); }

bool isInVolumeName(char c) { return isLetterOrDigit(c) || c == '_' || c == '.' || c == '-'; }

std::vector<std::string_view> entriesOf(std::string_view labels) {
  std::vector<std::string_view> entries;
  while (!labels.empty()) {
    const std::size_t end = std::min(labels.find(','), labels.size());
    entries.push_back(labels.substr(0, end));
    labels.remove_prefix(std::min(end + 1, labels.size()));
  }
  return entries;
}

std::string_view folderOf(DockerResourceKind kind) {
  switch (kind) {
    case DockerResourceKind::images: return "docker://images/";
    case DockerResourceKind::containers: return "docker://containers/";
    case DockerResourceKind::volumes: return "docker://volumes/";
    case DockerResourceKind::buildCache: return "docker://builder/";
  }
  std::unreachable();
}

}  // namespace

bool isLetterOrDigit(char c) { return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); }

bool isFullImageID(std::string_view id) {
  return id.starts_with(digestPrefix) && isFullContainerID(id.substr(digestPrefix.size()));
}

bool isFullContainerID(std::string_view id) { return id.size() == digitsOfID && std::ranges::all_of(id, isHex); }

bool isVolumeName(std::string_view name) {
  return !name.empty() && isLetterOrDigit(name.front()) && std::ranges::all_of(name, isInVolumeName);
}

bool isCommandTarget(DockerResourceKind kind, std::string_view target) {
  switch (kind) {
    case DockerResourceKind::images: return isFullImageID(target);
    case DockerResourceKind::containers: return isFullContainerID(target);
    case DockerResourceKind::volumes: return isVolumeName(target);
    case DockerResourceKind::buildCache: return false;
  }
  std::unreachable();
}

std::string shortID(std::string_view id) {
  if (id.starts_with(digestPrefix)) id.remove_prefix(digestPrefix.size());
  return std::string(id.substr(0, shownDigits));
}

bool isDangling(const DockerImageRecord& image) { return !hasRepository(image) || image.tag == noName; }

bool hasRepository(const DockerImageRecord& image) { return image.repository != noName; }

std::string displayNameOf(const DockerImageRecord& image) {
  return isDangling(image) ? shortID(image.id) : image.repository + ":" + image.tag;
}

std::string historyLocation(DockerResourceKind kind, std::string_view target) {
  return std::string(folderOf(kind)).append(target);
}

std::optional<std::string> labelValue(std::string_view labels, std::string_view key) {
  for (const std::string_view entry : entriesOf(labels)) {
    const std::size_t equals = std::min(entry.find('='), entry.size());
    if (entry.substr(0, equals) == key) return std::string(entry.substr(std::min(equals + 1, entry.size())));
  }
  return std::nullopt;
}

std::optional<std::string> composeProjectOf(std::string_view labels) {
  return labelValue(labels, "com.docker.compose.project");
}

// A value may hold a comma, and so what looks like a label of its own: every one that protects counts.
bool isKept(std::string_view labels) {
  constexpr std::array refusals{"false", "no", "0"};
  return std::ranges::any_of(entriesOf(labels), [&](std::string_view entry) {
    const std::size_t equals = std::min(entry.find('='), entry.size());
    if (asciiLowered(trimmed(entry.substr(0, equals))) != "quorvane.keep") return false;
    const std::string value = asciiLowered(trimmed(entry.substr(std::min(equals + 1, entry.size()))));
    return std::ranges::find(refusals, value) == refusals.end();
  });
}

bool isAnonymous(const DockerVolumeRecord& volume) {
  return volume.labels.contains("com.docker.volume.anonymous") || isFullContainerID(asciiLowered(volume.name));
}

}  // namespace quorvane
