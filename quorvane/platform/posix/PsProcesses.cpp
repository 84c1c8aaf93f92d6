#include "quorvane/platform/posix/PsProcesses.h"

#include "quorvane/base/Utf8.h"
#include "quorvane/platform/BusiestProcesses.h"
#include "quorvane/platform/posix/TextWords.h"

#include <cerrno>
#include <cmath>
#include <limits>

namespace quorvane {

namespace {

// Numbers as programs write them, not as people of some country do.
ProcessRequest psRequest(const PsProcesses::Request& request) {
  ProcessRequest command;
  command.executable = request.program;
  command.arguments = {"-axww", "-o", "pid=", "-o", "pcpu=", "-o", "rss=", "-o", "comm="};
  command.environment = {{"LC_ALL", "C"}};
  command.timeLimit = request.timeLimit;
  command.outputLimit = request.outputLimit;
  return command;
}

std::optional<SystemProcessSample> processFromLine(std::string_view line) {
  const auto pid = wholeNumber<std::int32_t>(takeWord(line));
  const auto load = wholeNumber<double>(takeWord(line));
  const auto kilobytes = wholeNumber<std::int64_t>(takeWord(line));
  const std::string_view command = trimmed(line);
  if (!pid || *pid < 0 || !load || !std::isfinite(*load) || *load < 0 || !kilobytes || *kilobytes < 0 ||
      *kilobytes > std::numeric_limits<std::int64_t>::max() / 1024 || command.empty())
    return std::nullopt;
  SystemProcessSample sample{.pid = *pid, .cpuPercent = *load, .memoryBytes = *kilobytes * 1024};
  if (isAbsolute(command)) sample.executablePath = {std::string(command)};
  sample.name = isAbsolute(command) ? std::string(command.substr(command.rfind('/') + 1)) : std::string(command);
  return sample;
}

}  // namespace

std::optional<std::vector<SystemProcessSample>> processesFromPs(std::string_view text) {
  std::vector<SystemProcessSample> samples;
  while (text.contains('\n'))
    if (auto sample = processFromLine(takeLine(text))) samples.push_back(*std::move(sample));
  if (samples.empty()) return std::nullopt;
  return samples;
}

Outcome<SafeProcessResult, PosixError> PsProcesses::output(StopToken stop) {
  if (trouble_ && clock_.uptime() - trouble_->since < request_.pause) return failure(trouble_->error);
  auto result = runner_.run(psRequest(request_), std::move(stop));
  if (!result) return result;
  trouble_.reset();
  if (result->droppedOutputBytes > 0) trouble_ = {PosixError{EFBIG}, clock_.uptime()};
  if (result->didTimeOut) trouble_ = {PosixError{ETIMEDOUT}, clock_.uptime()};
  if (trouble_) return failure(trouble_->error);
  return result;
}

Outcome<std::vector<SystemProcessSample>, PosixError> PsProcesses::busiest(std::size_t most, StopToken stop) {
  const auto result = output(std::move(stop));
  if (!result) return failure(result.error());
  if (result->exitCode != 0) return failure(PosixError{EIO});
  auto samples = processesFromPs(result->standardOutput);
  if (!samples) return failure(PosixError{EBADMSG});
  keepBusiest(*samples, most, isBusier, isLarger);
  return *std::move(samples);
}

}  // namespace quorvane
