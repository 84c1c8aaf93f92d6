#include "quorvane/platform/BlockedSignals.h"

#include <initializer_list>

namespace quorvane {

BlockedSignals::BlockedSignals() {
  sigset_t outside{};
  ::sigfillset(&outside);
  for (const int fault : {SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGTRAP, SIGSYS, SIGABRT}) ::sigdelset(&outside, fault);
  ::pthread_sigmask(SIG_BLOCK, &outside, &before_);
}

BlockedSignals::~BlockedSignals() { ::pthread_sigmask(SIG_SETMASK, &before_, nullptr); }

}  // namespace quorvane
