#include "quorvane/base/Assert.h"
#include "quorvane/base/FilePath.h"
#include "quorvane/platform/linux/DirectorySizes.h"
#include "quorvane/platform/linux/PercentEncoding.h"
#include "quorvane/platform/linux/TrashInfo.h"
#include "quorvane/platform/linux/TrashName.h"

#include <cstddef>
#include <cstdint>

namespace quorvane {
namespace {

void checkNote(std::string_view text) {
  const auto info = trashInfoFromText(text);
  if (!info) return;
  require(!info->path.empty() && !info->path.contains('\0'), "a note tells a path");
  const auto again = trashInfoFromText(trashInfoText(info->path, {}, info->move.value_or(Uuid{})));
  require(again && again->path == info->path, "a path survives being written");
}

void checkSizes(std::string_view text) {
  const auto sizes = directorySizesFromText(text);
  if (!sizes) return;
  std::string written;
  for (const DirectorySize& size : *sizes) {
    require(isOneComponent(size.leaf) && size.bytes >= 0, "a line names a folder in the Trash and a size");
    written += directorySizeLine(size);
  }
  require(directorySizesFromText(written) == sizes, "lines survive being written");
}

void checkName(std::string_view name) {
  if (!isOneComponent(name)) return;
  for (const unsigned attempt : {1u, 2u, mostTrashNames}) {
    const std::string leaf = trashName(name, {}, attempt);
    require(isOneComponent(leaf) && leaf.size() + trashInfoSuffix.size() <= 255, "a name in the Trash fits");
  }
}

}  // namespace
}  // namespace quorvane

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace quorvane;
  const std::string_view text(reinterpret_cast<const char*>(data), size);
  checkNote(text);
  checkSizes(text);
  checkName(text);
  require(text.contains('\0') || percentDecoded(percentEncoded(text)) == text, "encoding loses nothing");
  return 0;
}
