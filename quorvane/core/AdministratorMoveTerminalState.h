#pragma once

#include <cstdint>
#include <variant>

namespace quorvane {

/// The final answer of the administrator mover. In JSON an object with one member, named after the case; of `finished`
/// it holds the status as member "_0", of the others nothing.
namespace administratorMove {
struct Finished {
  std::uint8_t status = 0;  ///< 0: moved and verified
  bool operator==(const Finished&) const = default;
};
struct Cancelled {  ///< the person declined to authenticate
  bool operator==(const Cancelled&) const = default;
};
struct NotStarted {  ///< the request never reached the mover
  bool operator==(const NotStarted&) const = default;
};
}  // namespace administratorMove

using AdministratorMoveTerminalState =
    std::variant<administratorMove::Finished, administratorMove::Cancelled, administratorMove::NotStarted>;

}  // namespace quorvane
