#pragma once

#include "quorvane/app/cli/terminal/OutputChannel.h"
#include "quorvane/app/cli/terminal/ReportText.h"
#include "quorvane/app/messages/MessageCatalogue.h"
#include "quorvane/core/ScanResult.h"

#include <string>

namespace quorvane {

/// A scan for people: what was found by category, the largest first; what they should know of it; what could not be
/// read; the sums. On a terminal no line is longer than it is wide. Paths in `home` are shown with "~".
std::string scanReport(const ScanResult& result, const MessageCatalogue& catalogue, const std::optional<FilePath>& home,
                       const TextStyle& style);

/// Only what they should know of it, and what could not be read; empty when there is nothing to tell.
std::string coverageReport(const ScanResult& result, const ReportStyle& style);

/// What a note of a scan says, without the place it is about.
Message contentOf(const ScanCoverageNote& note);

}  // namespace quorvane
