#include "quorvane/base/Assert.h"
#include "quorvane/base/FilePath.h"
#include "quorvane/base/Utf8.h"
#include "quorvane/platform/linux/KernelTexts.h"
#include "quorvane/platform/linux/ProcessStat.h"

#include <cstddef>
#include <cstdint>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace quorvane;
  const std::string_view text(reinterpret_cast<const char*>(data), size);
  (void)ticksFromStat(text);
  if (const auto memory = memoryFromMeminfo(text))
    require(memory->total > 0 && memory->used >= 0 && memory->used <= memory->total, "used is a part of the total");
  if (const auto name = systemNameFromRelease(text)) require(!name->empty() && isValidUtf8(*name), "a name is a text");
  visitInterfaces(text, [](const InterfaceCounters& interface) {
    require(isOneComponent(interface.name), "the name of an interface is one of a folder");
  });
  if (const auto stat = processStatFromText(text))
    require(fullProcessName(stat->name, text).size() >= stat->name.size(), "a name in full is not shorter");
  return 0;
}
