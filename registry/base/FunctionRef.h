// A function or lambda that a caller lends for the time of a call.
#pragma once

#include <type_traits>
#include <utility>

namespace tamu::registry {

template <class Signature>
class FunctionRef;

// Two words; owns nothing. What takes a body this way is compiled once, where a template would be
// once for each body.
template <class Result, class... Arguments>
class FunctionRef<Result(Arguments...)> {
 public:
  template <class Function,
            class = std::enable_if_t<!std::is_same<std::decay_t<Function>, FunctionRef>::value>>
  FunctionRef(const Function& function) : function_(&function), call_(&Call<Function>) {}

  Result operator()(Arguments... arguments) const {
    return call_(function_, std::forward<Arguments>(arguments)...);
  }

 private:
  template <class Function>
  static Result Call(const void* function, Arguments... arguments) {
    return (*static_cast<const Function*>(function))(std::forward<Arguments>(arguments)...);
  }

  const void* function_;
  Result (*call_)(const void*, Arguments...);
};

}  // namespace tamu::registry
