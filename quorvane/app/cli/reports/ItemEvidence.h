#pragma once

#include "quorvane/app/cli/terminal/ReportText.h"
#include "quorvane/core/ScanResult.h"

#include <string>

namespace quorvane {

/// Everything that a scan knows of one item, for people: where it is, how large, why it has its safety level, what it
/// was proved to be, and what was noted of it.
std::string itemEvidence(const ScanItem& item, const ScanResult& result, const ReportStyle& style);

}  // namespace quorvane
