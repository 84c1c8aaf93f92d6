#include "quorvane/scan/ScanGround.h"

namespace quorvane {

namespace {

FilePath cachesRootOf(const ScanSettings& settings) {
  return settings.layout == HomeLayout::macos ? joined(settings.folders.home, "Library/Caches")
                                              : settings.folders.cache;
}

}  // namespace

ScanGround::ScanGround(const ScanServices& services, const ScanSettings& settings,
                       std::vector<ScanCoverageNote>& notices)
    : now(services.clock.now()),
      table(locationTable(settings.layout)),
      cachesRoot(cachesRootOf(settings)),
      folders(settings, services.fileSystem),
      scope(scanScope(services, settings, notices)),
      finder(services.fileSystem, table, folders, scope, now),
      policy(services.fileSystem, cleaningRules(settings, folders)),
      judge(services, settings, now) {}

}  // namespace quorvane
