#include "quorvane/base/Assert.h"
#include "quorvane/platform/linux/ControlGroupLimits.h"
#include "quorvane/platform/linux/ControlGroupPlaces.h"
#include "quorvane/platform/posix/TextWords.h"

#include <cstddef>
#include <cstdint>

/// Groups, a NUL, mounts; the same text also as a quota and as statistics.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace quorvane;
  const std::string_view text(reinterpret_cast<const char*>(data), size);
  std::string_view mounts = text;
  const std::string_view groups = takeUntil(mounts, '\0');
  for (const char* controller : {"cpu", "memory"})
    for (const ControlGroupFolder& folder : controlGroupFolders(controller, groups, mounts))
      require(isAbsolute(folder.path.bytes) && standardised(folder.path) == folder.path, "a folder is a plain path");
  std::string_view period = text;
  const std::string_view quota = takeWord(period);
  if (const auto processors = processorsFromQuota(quota, takeWord(period)))
    require(*processors > 0, "no quota leaves nothing");
  if (const auto bytes = bytesFromMemoryStatistics("inactive_file", text)) require(*bytes >= 0, "caches are an amount");
  return 0;
}
