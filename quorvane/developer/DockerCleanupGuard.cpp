#include "quorvane/developer/DockerCleanupGuard.h"

#include "quorvane/developer/DockerCleanupRun.h"

namespace quorvane {

Outcome<DockerCleanupReport, RecoveryStoreError> DockerCleanupGuard::remove(const DockerCleanupPlan& plan,
                                                                            const DockerCleanupOptions& options) {
  if (plan.isEmpty()) return DockerCleanupReport{};
  if (options.isRehearsal) return DockerCleanupRun(services_, plan, options, nullptr).perform();
  const auto history = services_.history.open();
  if (!history) return failure(history.error());
  DockerRemovalJournal journal(**history, services_.clock, services_.texts, services_.history.dateOfNewRun(**history));
  return DockerCleanupRun(services_, plan, options, &journal).perform();
}

}  // namespace quorvane
