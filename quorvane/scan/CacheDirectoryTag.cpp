#include "quorvane/scan/CacheDirectoryTag.h"

#include <algorithm>
#include <array>
#include <string>
#include <string_view>

namespace quorvane {

bool hasCacheDirectoryTag(FileSystem& fileSystem, int folder) {
  constexpr std::string_view signature = "Signature: 8a477f597d28d172789f06886806bc55";
  const auto file = fileSystem.openFile(folder, "CACHEDIR.TAG");
  if (!file) return false;
  const auto status = fileSystem.status(file->number());
  if (!status || !status->isRegularFile()) return false;
  std::array<char, signature.size()> beginning{};
  const auto size = fileSystem.read(file->number(), std::as_writable_bytes(std::span(beginning)));
  return size && std::string_view(beginning.data(), *size) == signature;
}

bool isWorkingCopy(FileSystem& fileSystem, int folder) {
  return std::ranges::any_of(repositoryNames, [&](std::string_view name) {
    const auto status = fileSystem.status(folder, std::string(name).c_str());
    return status || !status.error().isMissing();
  });
}

}  // namespace quorvane
