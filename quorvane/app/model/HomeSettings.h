#pragma once

#include "quorvane/scan/locations/ScanSettings.h"

#include <optional>

namespace quorvane {

/// How homes of the running system are laid out.
HomeLayout systemHomeLayout();

/// Which home a run works on.
struct HomeRequest {
  ApplicationFolders folders;
  HomeLayout layout = HomeLayout::linux;
  bool staysInside = false;  ///< nothing outside of the home is looked at
};

/// Completes the request with the folders in which such a system keeps applications.
ScanSettings scanSettings(const HomeRequest& request);

}  // namespace quorvane
