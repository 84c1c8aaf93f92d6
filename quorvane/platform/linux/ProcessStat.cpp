#include "quorvane/platform/linux/ProcessStat.h"

#include "quorvane/platform/posix/TextWords.h"

namespace quorvane {

std::optional<ProcessStat> processStatFromText(std::string_view text) {
  const std::size_t start = text.find('('), end = text.rfind(')');
  if (start == std::string_view::npos || end == std::string_view::npos || end < start) return std::nullopt;
  ProcessStat stat;
  stat.name = text.substr(start + 1, end - start - 1);
  std::string_view rest = text.substr(end + 1);
  rest = takeUntil(rest, '\n');
  const auto skip = [&](int count) {
    for (int i = 0; i < count; ++i) takeWord(rest);
  };
  // proc(5) counts the fields from 1; the name is the second.
  skip(11);
  const auto user = wholeNumber<std::uint64_t>(takeWord(rest));    // 14
  const auto system = wholeNumber<std::uint64_t>(takeWord(rest));  // 15
  skip(6);
  const auto started = wholeNumber<std::uint64_t>(takeWord(rest));  // 22
  skip(1);
  const auto resident = wholeNumber<std::int64_t>(takeWord(rest));  // 24
  if (!user || !system || !started || !resident) return std::nullopt;
  if (*user > UINT64_MAX / 2 || *system > UINT64_MAX / 2) return std::nullopt;
  stat.ticks = *user + *system;
  stat.startTicks = *started;
  stat.residentPages = *resident;
  return stat;
}

std::string_view fullProcessName(std::string_view name, std::string_view executablePath) {
  constexpr std::size_t cutAt = 15;
  const std::string_view leaf = executablePath.substr(executablePath.rfind('/') + 1);
  return name.size() == cutAt && leaf.starts_with(name) ? leaf : name;
}

}  // namespace quorvane
