#include "quorvane/core/ScanResult.h"

#include "quorvane/base/JsonText.h"

namespace quorvane {

std::string jsonText(const ScanResult& result) { return printedRecord(result); }

Outcome<ScanResult, JsonError> scanResultFromJson(std::string_view text) { return recordFromText<ScanResult>(text); }

}  // namespace quorvane
