#pragma once

#include <cstddef>
#include <memory>
#include <type_traits>
#include <utility>

namespace VorselKelp::platform {

template <class Signature>
class UniqueFunction;

/// A move-only callable, for answers that are given once. Every callback handed to a platform service is of
/// this kind: the service calls it exactly once, never from inside the call that it was handed to unless the
/// service's header says so, and destroys it on the thread that called it or on the one that destroys the
/// service.
template <class R, class... Args>
class UniqueFunction<R(Args...)> {
 public:
  UniqueFunction() = default;
  UniqueFunction(std::nullptr_t) {}

  template <class F>
  requires(!std::is_same_v<std::remove_cvref_t<F>, UniqueFunction> && std::is_invocable_r_v<R, F&, Args...>)
      UniqueFunction(F&& f)
      : holder_(std::make_unique<Holder<std::decay_t<F>>>(std::forward<F>(f))) {}

  explicit operator bool() const { return holder_ != nullptr; }

  R operator()(Args... args) { return holder_->call(std::forward<Args>(args)...); }

 private:
  struct Base {
    virtual ~Base() = default;
    virtual R call(Args... args) = 0;
  };
  template <class F>
  struct Holder final : Base {
    template <class G>
    explicit Holder(G&& g) : f(std::forward<G>(g)) {}
    R call(Args... args) override { return f(std::forward<Args>(args)...); }
    F f;
  };

  std::unique_ptr<Base> holder_;
};

}  // namespace VorselKelp::platform
