#include "quorvane/base/Assert.h"
#include "quorvane/platform/linux/MountInfo.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace quorvane;
  const std::string_view text(reinterpret_cast<const char*>(data), size);
  const auto points = mountPointsFromMountInfo(text);
  if (!points) return 0;
  require(std::ranges::is_sorted(*points), "mount points are sorted");
  for (const FilePath& point : *points)
    require(point.bytes.starts_with('/') && !point.bytes.contains('\0'), "a mount point is an absolute path");
  return 0;
}
