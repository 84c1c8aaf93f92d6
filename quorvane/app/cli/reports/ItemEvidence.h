#pragma once

#include "quorvane/app/cli/terminal/ReportText.h"
#include "quorvane/core/ScanResult.h"
#include "quorvane/scan/locations/Evidence.h"

#include <string>

namespace quorvane {

/// Everything that a scan knows of one item, for people: where it is, how large, why it has its safety level and what
/// the rule for such places rests on, what it was proved to be, and what was noted of it.
std::string itemEvidence(const ScanItem& item, const Evidence& evidence, const ScanResult& result,
                         const ReportStyle& style);

}  // namespace quorvane
