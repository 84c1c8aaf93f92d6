#include "quorvane/platform/linux/TrashInfo.h"

#include "quorvane/platform/linux/PercentEncoding.h"

#include <fmt/format.h>

#include <ctime>

namespace quorvane {

namespace {

constexpr std::string_view heading = "[Trash Info]";
constexpr std::size_t lengthWithoutZone = std::string_view("2026-11-21T05:04:03").size();
constexpr std::string_view pathKey = "Path";
constexpr std::string_view moveKey = "X-Quorvane-Move";

std::string localTimeText(Date date) {
  const std::time_t seconds = std::chrono::floor<std::chrono::seconds>(date).time_since_epoch().count();
  std::tm local{};
  if (::localtime_r(&seconds, &local) == nullptr) return isoText(date).substr(0, lengthWithoutZone);
  return fmt::format("{:04}-{:02}-{:02}T{:02}:{:02}:{:02}", local.tm_year + 1900, local.tm_mon + 1, local.tm_mday,
                     local.tm_hour, local.tm_min, local.tm_sec);
}

/// The next line that has its end; one that was cut off says nothing reliable.
std::optional<std::string_view> takeWholeLine(std::string_view& rest) {
  const std::size_t end = rest.find('\n');
  if (end == std::string_view::npos) return std::nullopt;
  const std::string_view line = rest.substr(0, end);
  rest.remove_prefix(end + 1);
  return line;
}

void readLine(std::string_view line, TrashInfo& info) {
  const std::size_t equals = line.find('=');
  if (equals == std::string_view::npos) return;
  const std::string_view key = line.substr(0, equals), value = line.substr(equals + 1);
  // Of several the first one counts.
  if (key == pathKey && info.path.empty()) info.path = percentDecoded(value).value_or("");
  if (key == moveKey && !info.move) info.move = uuidFromText(value);
}

}  // namespace

std::string trashInfoText(std::string_view path, Date deletedAt, const Uuid& move) {
  return fmt::format("{}\n{}={}\nDeletionDate={}\n{}={}\n", heading, pathKey, percentEncoded(path),
                     localTimeText(deletedAt), moveKey, uuidText(move));
}

std::optional<TrashInfo> trashInfoFromText(std::string_view text) {
  if (takeWholeLine(text) != heading) return std::nullopt;
  TrashInfo info;
  for (auto line = takeWholeLine(text); line; line = takeWholeLine(text)) {
    if (line->starts_with('[')) break;
    readLine(*line, info);
  }
  if (info.path.empty()) return std::nullopt;
  return info;
}

}  // namespace quorvane
