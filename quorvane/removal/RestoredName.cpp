#include "quorvane/removal/RestoredName.h"

#include "quorvane/base/FilePath.h"

#include <fmt/format.h>

#include <algorithm>

namespace quorvane {

namespace {

constexpr std::size_t longestName = 255, longestExtension = 16;

bool isContinuation(char byte) { return (static_cast<unsigned char>(byte) & 0xC0) == 0x80; }

}  // namespace

std::string restoredName(std::string_view leaf, bool isFolder, Date date, int attempt) {
  std::string_view extension = isFolder ? std::string_view() : extensionOf(leaf);
  if (extension.size() > longestExtension) extension = {};
  std::string_view stem = leaf;
  if (!extension.empty()) stem.remove_suffix(extension.size() + 1);
  const std::string day = isoText(date).substr(0, 10);
  std::string suffix =
      attempt == 1 ? fmt::format(" (restored {})", day) : fmt::format(" (restored {} {})", day, attempt);
  if (!extension.empty()) (suffix += '.') += extension;
  std::size_t room = std::min(stem.size(), longestName - suffix.size());
  while (room < stem.size() && room > 1 && isContinuation(stem[room])) --room;
  return std::string(stem.substr(0, room)) + suffix;
}

}  // namespace quorvane
