// A reference to a callable for the length of one call: what the store and
// the platform operations take for work they run at once and never keep.
// Unlike std::function it never copies the callable: a lambda that captures
// more than two references would otherwise cost a heap block, and a request
// makes thousands of platform calls, each passing its work through several
// layers.
#pragma once

#include <memory>
#include <type_traits>
#include <utility>

namespace zonesim {

template <typename Signature>
class FunctionRef;

template <typename R, typename... Args>
class FunctionRef<R(Args...)> {
  public:
    // Stands in for the callable wherever one is passed, so it converts
    // implicitly; the callable must outlive the call it is passed to.
    template <typename F, typename = std::enable_if_t<
                              !std::is_same_v<std::decay_t<F>, FunctionRef> &&
                              std::is_invocable_r_v<R, std::remove_reference_t<F> &, Args...>>>
    FunctionRef(F &&callable) noexcept  // NOLINT(bugprone-forwarding-reference-overload)
        : object_(const_cast<void *>(static_cast<const void *>(std::addressof(callable)))),
          call_([](void *object, Args... args) -> R {
              return (*static_cast<std::remove_reference_t<F> *>(object))(
                  std::forward<Args>(args)...);
          }) {}

    R operator()(Args... args) const { return call_(object_, std::forward<Args>(args)...); }

  private:
    void *object_;
    R (*call_)(void *, Args...);
};

}  // namespace zonesim
