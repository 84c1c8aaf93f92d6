#include "quorvane/base/Assert.h"
#include "quorvane/base/JsonText.h"
#include "quorvane/core/IgnoreRule.h"
#include "quorvane/core/ScanResult.h"

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

namespace quorvane {
namespace {

/// What is believed once is written such that it is believed again, and means the same.
template <class Record>
void roundTrip(std::string_view text) {
  const auto record = recordFromText<Record>(text);
  if (!record) return;
  const std::string written = printedRecord(*record);
  require(written == printedJson(toJson(*record)), "a record and its document are written in two ways");
  const auto again = recordFromText<Record>(written);
  require(again.has_value(), "what was written is not read back");
  require(*again == *record, "what was written has another meaning");
  require(printedRecord(*again) == written, "the same record is written in two ways");
}

}  // namespace
}  // namespace quorvane

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view text(reinterpret_cast<const char*>(data), size);
  quorvane::roundTrip<quorvane::ScanResult>(text);
  quorvane::roundTrip<std::vector<quorvane::IgnoreRule>>(text);
  return 0;
}
