#include "quorvane/core/ScanResult.h"

#include "quorvane/base/Json.h"

namespace quorvane {

std::string jsonText(const ScanResult& result) { return printedJson(toJson(result)); }

Outcome<ScanResult, JsonError> scanResultFromJson(std::string_view text) { return recordFromText<ScanResult>(text); }

}  // namespace quorvane
