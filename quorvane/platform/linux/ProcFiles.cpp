#include "quorvane/platform/linux/ProcFiles.h"

#include "quorvane/platform/posix/TextWords.h"

namespace quorvane {

namespace {

/// In maps a newline in a name is written as \012, and nothing else is escaped.
std::string withNewlines(std::string_view text) {
  constexpr std::string_view escaped = "\\012";
  std::string plain;
  for (std::size_t at = text.find(escaped); at != std::string_view::npos; at = text.find(escaped)) {
    plain.append(text.substr(0, at)).push_back('\n');
    text.remove_prefix(at + escaped.size());
  }
  return plain.append(text);
}

/// What stands behind the five words of a mapping: address, permissions, offset, device, inode.
std::string_view pathOfMapping(std::string_view line) {
  for (int i = 0; i < 5; ++i) takeWord(line);
  const std::size_t start = line.find_first_not_of(' ');
  return start == std::string_view::npos ? std::string_view() : line.substr(start);
}

}  // namespace

std::optional<ProcessStatus> processStatusFromText(std::string_view text) {
  std::optional<std::uint32_t> owner;
  std::string_view state;
  while (!text.empty()) {
    std::string_view line = takeLine(text);
    const std::string_view label = takeWord(line);
    if (label == "State:") state = takeWord(line);
    if (label == "Uid:") owner = wholeNumber<std::uint32_t>(takeWord(line));
  }
  if (!owner || state.empty()) return std::nullopt;
  return ProcessStatus{*owner, state == "Z" || state == "X" || state == "x"};
}

void addMappedPaths(std::string_view maps, std::vector<FilePath>& paths) {
  std::string_view last;  // a file is mapped in several pieces, one after the other
  while (!maps.empty()) {
    const std::string_view path = pathOfMapping(takeLine(maps));
    if (!path.starts_with('/') || path == last) continue;
    paths.push_back({withNewlines(path)});
    last = path;
  }
}

std::optional<std::int32_t> processNumberFromName(std::string_view name) {
  const auto number = wholeNumber<std::int32_t>(name);
  if (!number || *number <= 0) return std::nullopt;
  return number;
}

std::string_view pathFromExecutable(std::string_view target) {
  constexpr std::string_view markOfReplaced = " (deleted)";
  if (target.ends_with(markOfReplaced)) target.remove_suffix(markOfReplaced.size());
  return target;
}

std::string programNameFromExecutable(std::string_view target) {
  const std::string_view path = pathFromExecutable(target);
  return std::string(path.substr(path.rfind('/') + 1));
}

}  // namespace quorvane
