#pragma once

#include "quorvane/scan/DiskScanner.h"
#include "quorvane/scan/policy/ItemVerdict.h"

#include <string>
#include <string_view>
#include <vector>

namespace quorvane {

/// A place below the home where an application may have left something.
struct LeftoverPlace {
  std::string folder;  ///< below the home
  std::string name;    ///< in that folder
  ItemVerdict verdict;
};

/// Knows where an application of a home of the macOS layout leaves things, and how far a name proves whose they are.
namespace ApplicationSafetyPolicy {

inline constexpr std::string_view launchAgentsFolder = "Library/LaunchAgents";

/// The places in their order, launch agents left out: those are found by listing their folder. An identifier or name
/// that could lead out of a folder has none.
std::vector<LeftoverPlace> places(const LeftoverQuery& application);

/// Whether a file in the launch-agents folder is one of the application's.
bool ownsLaunchAgent(const LeftoverQuery& application, std::string_view fileName);

/// Of a launch agent: what it starts is not known here.
ItemVerdict launchAgentVerdict(const LeftoverQuery& application);

}  // namespace ApplicationSafetyPolicy

}  // namespace quorvane
