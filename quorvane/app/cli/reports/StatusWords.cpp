#include "quorvane/app/cli/reports/StatusWords.h"

#include "quorvane/app/cli/terminal/Glyphs.h"
#include "quorvane/app/messages/ByteFormat.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <limits>

namespace quorvane {

namespace {

std::string titleKeyOf(SystemStatusInput input) { return "status.input." + std::string(caseName(input)); }

std::string thermalKey(SystemThermalLevel level) { return "status.thermal." + std::string(caseName(level)); }

// Rounded down, so that 89.9 is not shown as the 90 from which on points are taken.
std::string wholeText(double value) { return fmt::format("{:.0f}", std::floor(value)); }

std::int64_t wholeBytes(double bytes) {
  constexpr double most = 1e18;
  return static_cast<std::int64_t>(std::clamp(bytes, 0.0, most));
}

}  // namespace

std::string StatusWords::healthTitle() const { return say({"cli.status.health", {}}); }

std::string StatusWords::title(SystemStatusInput input) const { return say({titleKeyOf(input), {}}); }

std::string StatusWords::score(const HealthScore& health) const {
  return say(
      {"cli.status.score", {{"score", std::int64_t{health.score}}, {"level", MessageKey{titleKey(health.level)}}}});
}

std::string StatusWords::machine(const SystemStatusSnapshot& snapshot) const {
  if (!isMeasured(snapshot, SystemStatusInput::uptime)) return harmless(snapshot.osVersion);
  return say({"cli.status.machine", {{"system", snapshot.osVersion}, {"time", duration(snapshot.uptime)}}});
}

std::string StatusWords::percent(double percent) const {
  return say({"cli.status.percent", {{"value", wholeText(percent)}}});
}

std::string StatusWords::processors(const SystemStatusSnapshot& snapshot) const {
  return say({"cli.status.processors", {{"count", snapshot.processorCount}}});
}

std::string StatusWords::memory(const SystemStatusSnapshot& snapshot) const {
  return say(
      {"cli.status.memory",
       {{"used", amountOfMemory(snapshot.memoryUsedBytes)}, {"total", amountOfMemory(snapshot.memoryTotalBytes)}}});
}

std::string StatusWords::disk(const SystemStatusSnapshot& snapshot) const {
  return say({"cli.status.disk",
              {{"available", ByteCount{snapshot.diskAvailableBytes}}, {"total", ByteCount{snapshot.diskTotalBytes}}}});
}

std::string StatusWords::network(const SystemStatusSnapshot& snapshot) const {
  const std::string down = rate(snapshot.networkDownloadBytesPerSecond),
                    up = rate(snapshot.networkUploadBytesPerSecond);
  if (!style_.text.isLaidOut) return say({"cli.status.network", {{"down", down}, {"up", up}}});
  const Glyphs& shown = glyphs(style_.text.characters);
  return fmt::format("{} {}  {} {}", shown.down, down, shown.up, up);
}

std::string StatusWords::battery(const SystemStatusSnapshot& snapshot) const {
  return say({snapshot.isCharging ? "cli.status.charging" : "cli.status.notCharging", {}});
}

std::string StatusWords::thermal(SystemThermalLevel level) const { return say({thermalKey(level), {}}); }

std::string StatusWords::notMeasured() const { return say({"cli.status.notMeasured", {}}); }

Message StatusWords::notMeasured(const std::vector<SystemStatusInput>& inputs) const {
  MessageList names;
  for (const SystemStatusInput input : inputs) names.texts.push_back(title(input));
  return {"cli.status.notMeasuredInputs", {{"inputs", std::move(names)}}};
}

Message StatusWords::deduction(const HealthDeduction& deduction, const SystemStatusSnapshot& snapshot,
                               const std::string& points) const {
  const std::string advice = say({deduction.key,
                                  {{"value", wholeText(deduction.value)},
                                   {"threshold", wholeText(deduction.threshold)},
                                   {"level", MessageKey{thermalKey(snapshot.thermalLevel)}}}});
  return {"cli.status.deduction", {{"points", points}, {"advice", advice}}};
}

std::string StatusWords::amountOfMemory(std::int64_t bytes) const {
  return MemoryFormat::text(style_.catalogue, bytes);
}

std::string StatusWords::harmless(const std::string& foreign) const {
  return harmlessText(foreign, style_.text.characters);
}

std::array<std::string, 4> StatusWords::processHeads() const {
  return {say({"cli.status.head.pid", {}}), say({"cli.status.head.load", {}}), say({"cli.status.head.memory", {}}),
          say({"cli.status.head.name", {}})};
}

std::string StatusWords::duration(double seconds) const {
  constexpr double minute = 60, hour = 60 * minute, day = 24 * hour;
  const auto count = [](double part) { return static_cast<std::int64_t>(std::clamp(part, 0.0, 1e9)); };
  const std::int64_t days = count(seconds / day), hours = count(std::fmod(seconds, day) / hour),
                     minutes = count(std::fmod(seconds, hour) / minute);
  if (days > 0) return say({"cli.status.days", {{"days", days}, {"hours", hours}}});
  if (hours > 0) return say({"cli.status.hours", {{"hours", hours}, {"minutes", minutes}}});
  return say({"cli.status.minutes", {{"minutes", minutes}}});
}

std::string StatusWords::rate(double bytesPerSecond) const {
  return say({"cli.status.rate", {{"size", ByteCount{wholeBytes(bytesPerSecond)}}}});
}

}  // namespace quorvane
