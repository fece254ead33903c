// A borrowed callable: how the parts of the evaluator hand selected items to each other without a copy.
#pragma once

#include <memory>
#include <type_traits>
#include <utility>

namespace tovin::xpath {

template <class Signature>
class FunctionRef;

template <class Result, class... Args>
class FunctionRef<Result(Args...)> {
 public:
  template <class Body>
  requires(!std::is_same_v<std::remove_cvref_t<Body>, FunctionRef>) FunctionRef(Body&& body)
      : object_(const_cast<void*>(static_cast<const void*>(std::addressof(body)))),
        call_([](void* object, Args... args) -> Result {
          return (*static_cast<std::remove_reference_t<Body>*>(object))(std::forward<Args>(args)...);
        }) {}

  Result operator()(Args... args) const { return call_(object_, std::forward<Args>(args)...); }

 private:
  void* object_;
  Result (*call_)(void*, Args...);
};

}  // namespace tovin::xpath
