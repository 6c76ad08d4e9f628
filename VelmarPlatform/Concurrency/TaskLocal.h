// Task-scoped values: visible to the code that runs within a scope and to the tasks started there,
// and to nobody else.
//
//   const TaskLocal<FilePath> workingDirectory{FilePath("/")};   // with its default
//
//   co_await workingDirectory.withValue(directory, [&] { return install(package); });
//   // anywhere below, in plain functions as well:  workingDirectory.get()
//
// Inherited: by everything that is awaited, by the tasks of groups, and by tasks that are spawned
// (these keep the value for as long as they run, even after the scope has ended). Not inherited: by
// plain functions that are posted to an executor.
#pragma once

#include "VelmarPlatform/Concurrency/Task.h"

#include <memory>
#include <utility>

namespace velmar {

namespace detail {

/// One value of one TaskLocal in a chain from the inside out.
struct TaskLocalBinding : std::enable_shared_from_this<TaskLocalBinding> {
  TaskLocalBinding(const void* local, std::shared_ptr<const TaskLocalBinding> others) noexcept
      : key(local), outer(std::move(others)) {}
  TaskLocalBinding(const TaskLocalBinding&) = delete;
  TaskLocalBinding& operator=(const TaskLocalBinding&) = delete;
  virtual ~TaskLocalBinding() = default;

  const void* key;
  std::shared_ptr<const TaskLocalBinding> outer;
};

template <class T>
struct TaskLocalValue : TaskLocalBinding {
  TaskLocalValue(const void* local, std::shared_ptr<const TaskLocalBinding> others, T v)
      : TaskLocalBinding(local, std::move(others)), value(std::move(v)) {}
  T value;
};

/// What the calling task sees; null outside of tasks.
[[nodiscard]] std::shared_ptr<const TaskLocalBinding> currentBindings() noexcept;
/// The innermost binding of `local` that the calling task sees, or null.
[[nodiscard]] const TaskLocalBinding* findBinding(const void* local) noexcept;

} // namespace detail

/// The name of a task-scoped value. Made once, usually at namespace scope; its address is its
/// identity.
template <class T>
class TaskLocal {
public:
  explicit TaskLocal(T defaultValue = {}) : default_(std::move(defaultValue)) {}
  TaskLocal(const TaskLocal&) = delete;
  TaskLocal& operator=(const TaskLocal&) = delete;
  TaskLocal(TaskLocal&&) = delete;
  TaskLocal& operator=(TaskLocal&&) = delete;
  ~TaskLocal() = default;

  /// The value of the innermost scope around the calling task, or the default. O(depth of scopes).
  /// The reference lives as long as the scope; copy the value to keep it across a suspension.
  [[nodiscard]] const T& get() const noexcept {
    const detail::TaskLocalBinding* binding = detail::findBinding(this);
    return binding == nullptr ? default_
                              : static_cast<const detail::TaskLocalValue<T>*>(binding)->value;
  }

  /// Awaits what `operation` gives, with `value` in place of what is visible outside.
  template <class Operation>
  Task<TaskValueOf<Operation>> withValue(T value, Operation operation) const {
    return run(this, std::move(value), std::move(operation));
  }

private:
  template <class Operation>
  static Task<TaskValueOf<Operation>> run(const TaskLocal* self, T value, Operation operation) {
    const auto binding = std::make_shared<const detail::TaskLocalValue<T>>(
        self, detail::currentBindings(), std::move(value));
    auto child = detail::invokeAsTask(operation);
    auto awaiter = std::move(child).operator co_await();
    awaiter.setBindings(binding.get());
    co_return co_await awaiter;
  }

  T default_;
};

} // namespace velmar
