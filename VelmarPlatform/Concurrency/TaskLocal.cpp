#include "VelmarPlatform/Concurrency/TaskLocal.h"

namespace velmar::detail {

std::shared_ptr<const TaskLocalBinding> currentBindings() noexcept {
  const Coroutine* coroutine = threadState().coroutine;
  if (coroutine == nullptr || coroutine->bindings == nullptr)
    return nullptr;
  return coroutine->bindings->shared_from_this();
}

const TaskLocalBinding* findBinding(const void* local) noexcept {
  const Coroutine* coroutine = threadState().coroutine;
  if (coroutine == nullptr)
    return nullptr;
  const TaskLocalBinding* binding = coroutine->bindings;
  while (binding != nullptr && binding->key != local)
    binding = binding->outer.get();
  return binding;
}

} // namespace velmar::detail
