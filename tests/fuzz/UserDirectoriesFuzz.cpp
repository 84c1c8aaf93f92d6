#include "quorvane/base/Assert.h"
#include "quorvane/scan/locations/UserDirectories.h"

#include <cstddef>
#include <cstdint>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace quorvane;
  const std::string_view text(reinterpret_cast<const char*>(data), size);
  const FilePath home{"/home/someone"};
  const auto folder = userDirectory(text, "XDG_DOWNLOAD_DIR", home);
  if (!folder) return 0;
  require(isBelow(*folder, home) && !folder->bytes.contains('\0'), "a folder lies below the home");
  require(standardised(*folder) == *folder, "a folder is told by its plain path");
  return 0;
}
