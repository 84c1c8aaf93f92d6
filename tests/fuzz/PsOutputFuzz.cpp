#include "quorvane/base/Assert.h"
#include "quorvane/platform/posix/PsProcesses.h"

#include <cmath>
#include <cstddef>
#include <cstdint>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace quorvane;
  const auto samples = processesFromPs({reinterpret_cast<const char*>(data), size});
  if (!samples) return 0;
  for (const SystemProcessSample& sample : *samples) {
    require(sample.pid >= 0 && sample.memoryBytes >= 0, "a process has a number and takes memory");
    require(std::isfinite(sample.cpuPercent) && sample.cpuPercent >= 0, "a load is a number");
    require(sample.executablePath.bytes.empty() || isAbsolute(sample.executablePath.bytes), "a path is absolute");
  }
  return 0;
}
