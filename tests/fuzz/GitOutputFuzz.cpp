#include "quorvane/base/Assert.h"
#include "quorvane/scan/worktrees/GitOutput.h"

#include <cstddef>
#include <cstdint>

// The first byte chooses the parser, the rest is what git printed.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace quorvane;
  if (size == 0) return 0;
  const std::string_view output(reinterpret_cast<const char*>(data) + 1, size - 1);
  switch (data[0] % 6) {
    case 0: static_cast<void>(gitVersion(output)); break;
    case 1:
      if (const auto path = gitDirectoryNamedBy(output)) require(!path->empty(), "an empty git directory");
      break;
    case 2:
      if (const auto places = gitPlaces(output))
        require(places->topLevel.front() == '/' && places->commonDirectory.front() == '/', "a relative place");
      break;
    case 3:
      if (const auto names = gitFilterNames(output)) require(names->size() * 8 <= size, "more filters than keys");
      break;
    case 4:
      if (const auto status = gitStatus(output)) {
        require(output.empty() == (!status->hasChanges && status->ignored.empty()), "an entry was lost");
        for (const std::string& path : status->ignored) static_cast<void>(isRebuildable(path));
      }
      break;
    case 5:
      if (const auto index = gitIndex(output); index && output.empty())
        require(*index == GitIndex{}, "findings in an empty index");
      break;
  }
  return 0;
}
