#pragma once

namespace tarnkit {

/// One callable of several, for `std::visit`: it compiles only when every alternative is met.
template <class... Functions>
struct Overloaded : Functions... {
  using Functions::operator()...;
};
template <class... Functions>
Overloaded(Functions...) -> Overloaded<Functions...>;

}  // namespace tarnkit
