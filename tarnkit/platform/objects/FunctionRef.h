#pragma once

#include <memory>
#include <type_traits>
#include <utility>

namespace tarnkit {

template <class Signature>
class FunctionRef;

/// A callable passed down a call without owning or allocating anything. Valid during the call only.
template <class Result, class... Args>
class FunctionRef<Result(Args...)> {
 public:
  template <class F>
  requires(!std::is_same_v<std::remove_cvref_t<F>, FunctionRef>) FunctionRef(F&& function)
  noexcept
      : target_(const_cast<void*>(static_cast<const void*>(std::addressof(function)))),
        call_([](void* target, Args... args) -> Result {
          return (*static_cast<std::remove_reference_t<F>*>(target))(std::forward<Args>(args)...);
        }) {}
  Result operator()(Args... args) const { return call_(target_, std::forward<Args>(args)...); }

 private:
  void* target_;
  Result (*call_)(void*, Args...);
};

}  // namespace tarnkit
