#pragma once

#include "quorvane/app/cli/terminal/Console.h"
#include "quorvane/developer/DockerSelection.h"

#include <optional>
#include <string>

namespace quorvane {

/// What came of a removal from an engine, or of its rehearsal.
struct DockerSummary {
  bool isRehearsal = false;
  DockerCleanupReport report = {};
  std::int64_t builtUponCount = 0;  ///< as the review has it
  bool hasNothingToPrune = false;   ///< likewise
};

/// What is about to be removed and how, for people to confirm.
std::string dockerReviewText(const DockerReview& review, const ReportStyle& style);

/// How much that is, with "count" and "size".
Message dockerQuestion(const DockerCleanupPlan& plan);

/// The summary as a JSON document.
std::string jsonText(const DockerSummary& summary);

/// The summary for people: what is gone, what was predicted and measured, and why these may differ.
std::string dockerSummaryText(const DockerSummary& summary, const ReportStyle& style);

/// Prints the summary as the person asked for it, tells each failure, and returns how the run ends.
ExitCode printSummary(Console& console, const DockerSummary& summary, std::optional<ExitCode> cancelled);

}  // namespace quorvane
