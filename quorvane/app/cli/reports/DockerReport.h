#pragma once

#include "quorvane/app/cli/terminal/ReportText.h"
#include "quorvane/developer/DockerSnapshot.h"

#include <string>

namespace quorvane {

/// What an engine holds, for people: how much of each kind, every object with its verdict and the reason for it, and
/// what could not be read. Below an object stands what a person types to select it.
std::string dockerReport(const DockerSurvey& survey, const ReportStyle& style);

}  // namespace quorvane
