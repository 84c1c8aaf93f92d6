#include "quorvane/platform/linux/MountInfo.h"

#include "quorvane/base/SortUniquely.h"
#include "quorvane/platform/posix/TextWords.h"

namespace quorvane {

namespace {

constexpr std::size_t rootField = 3, mountPointField = 4;
constexpr std::string_view markOfRemoved = "//deleted";

/// A byte written as a backslash and three octal digits.
std::optional<char> octalByte(std::string_view digits) {
  if (digits.size() < 3) return std::nullopt;
  int value = 0;
  for (const char c : digits.substr(0, 3)) {
    if (c < '0' || c > '7') return std::nullopt;
    value = value * 8 + (c - '0');
  }
  if (value == 0 || value > 0xFF) return std::nullopt;
  return static_cast<char>(value);
}

std::optional<std::string> unescaped(std::string_view field) {
  std::string text;
  while (!field.empty()) {
    if (field.front() != '\\') {
      text += field.front();
      field.remove_prefix(1);
      continue;
    }
    const std::optional<char> byte = octalByte(field.substr(1));
    if (!byte) return std::nullopt;
    text += *byte;
    field.remove_prefix(4);
  }
  return text;
}

std::optional<FilePath> mountPointOf(std::string_view line) {
  for (std::size_t i = 0; i < mountPointField; ++i) takeUntil(line, ' ');
  std::optional<std::string> point = unescaped(takeUntil(line, ' '));
  if (!point || !isAbsolute(*point) || line.empty()) return std::nullopt;
  return FilePath{std::move(*point)};
}

}  // namespace

std::optional<std::vector<FilePath>> mountPointsFromMountInfo(std::string_view text) {
  std::vector<FilePath> points;
  while (!text.empty()) {
    std::optional<FilePath> point = mountPointOf(takeUntil(text, '\n'));
    if (!point) return std::nullopt;
    if (!point->bytes.ends_with(markOfRemoved)) points.push_back(std::move(*point));
  }
  sortUniquely(points);
  return points;
}

std::optional<MountedFileSystem> mountedFileSystemFromLine(std::string_view line) {
  for (std::size_t i = 0; i < rootField; ++i) takeUntil(line, ' ');
  const std::optional<std::string> root = unescaped(takeUntil(line, ' '));
  const std::optional<std::string> point = unescaped(takeUntil(line, ' '));
  // As many optional fields as there are stand before a lone dash.
  while (!line.empty() && takeUntil(line, ' ') != "-") continue;
  const std::string_view type = takeUntil(line, ' ');
  takeUntil(line, ' ');  // the source
  if (!root || !point || !isAbsolute(*root) || !isAbsolute(*point) || type.empty()) return std::nullopt;
  return MountedFileSystem{standardised({*root}), standardised({*point}), std::string(type), std::string(line)};
}

}  // namespace quorvane
