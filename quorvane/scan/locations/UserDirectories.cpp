#include "quorvane/scan/locations/UserDirectories.h"

#include "quorvane/base/Utf8.h"

namespace quorvane {

namespace {

/// The text between the quotes, a backslash taking the character behind it as it is.
std::optional<std::string> unquoted(std::string_view value) {
  if (value.size() < 2 || value.front() != '"') return std::nullopt;
  std::string text;
  for (std::size_t i = 1; i < value.size(); ++i) {
    if (value[i] == '"') return i + 1 == value.size() ? std::optional(text) : std::nullopt;
    if (value[i] == '\\') ++i;
    if (i == value.size()) return std::nullopt;
    text += value[i];
  }
  return std::nullopt;
}

std::optional<FilePath> folderFromValue(std::string_view value, const FilePath& home) {
  constexpr std::string_view homeVariable = "$HOME/";
  auto text = unquoted(value);
  if (!text || text->contains('\0')) return std::nullopt;
  if (text->starts_with(homeVariable)) text = joined(home, text->substr(homeVariable.size())).bytes;
  if (!text->starts_with('/')) return std::nullopt;
  FilePath folder = standardised({*std::move(text)});
  return isBelow(folder, home) ? std::optional(std::move(folder)) : std::nullopt;
}

}  // namespace

std::optional<FilePath> userDirectory(std::string_view text, std::string_view variable, const FilePath& home) {
  std::optional<FilePath> found;
  while (!text.empty()) {
    const std::size_t end = text.find('\n');
    const std::string_view line = trimmed(text.substr(0, end));
    text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
    if (line.starts_with(variable) && line.substr(variable.size()).starts_with('='))
      found = folderFromValue(line.substr(variable.size() + 1), home);
  }
  return found;
}

}  // namespace quorvane
