#include "quorvane/base/Assert.h"
#include "quorvane/base/Utf8.h"
#include "quorvane/scan/backups/PropertyList.h"

#include <cstddef>
#include <cstdint>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace quorvane;
  const auto list = PropertyList::parse(std::string_view(reinterpret_cast<const char*>(data), size));
  if (!list) return 0;
  for (const char* key : {"k", "Date", "IsEncrypted", "SnapshotState", "Unique Identifier"}) {
    const auto text = list->text(key);
    require(!text || isValidUtf8(*text), "text that is not UTF-8");
    require(text.has_value() + list->boolean(key).has_value() + list->date(key).has_value() <= 1,
            "a value of two types");
  }
  return 0;
}
