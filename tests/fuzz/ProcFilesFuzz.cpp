#include "quorvane/base/Assert.h"
#include "quorvane/platform/linux/ProcFiles.h"

#include <cstddef>
#include <cstdint>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace quorvane;
  const std::string_view text(reinterpret_cast<const char*>(data), size);
  std::vector<FilePath> paths;
  addMappedPaths(text, paths);
  for (const FilePath& path : paths) require(path.bytes.starts_with('/'), "a mapped path is absolute");
  if (const auto number = processNumberFromName(text)) require(*number > 0, "a process number is positive");
  require(!programNameFromExecutable(text).contains('/'), "a program's name is one component");
  (void)processStatusFromText(text);
  return 0;
}
