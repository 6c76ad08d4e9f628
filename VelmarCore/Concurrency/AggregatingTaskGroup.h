// One operation for each element of a collection, all at once and for a limited time.
//
//   Aggregated<Version> versions = co_await withAggregatingTaskGroup(
//       tools, 5s, [](Tool tool) { return tool.latestVersion(); });
//   for (const auto& version : versions) …    // in the order of `tools`: one, or why there is none
#pragma once

#include "VelmarPlatform/Basics/Error.h"
#include "VelmarPlatform/Basics/Overloaded.h"
#include "VelmarPlatform/Concurrency/Clock.h"
#include "VelmarPlatform/Concurrency/TaskGroup.h"

#include <cstddef>
#include <exception>
#include <memory>
#include <optional>
#include <ranges>
#include <utility>
#include <variant>
#include <vector>

namespace velmar {

/// What stands for an element whose operation took too long.
class TimeoutError : public Error {
public:
  TimeoutError() : Error("The operation took too long.") {}
};

/// How the operation ended for each element, in the elements' order.
template <class T>
struct Aggregated {
  std::vector<Outcome<T>> values;

  [[nodiscard]] std::size_t size() const noexcept { return values.size(); }
  [[nodiscard]] const Outcome<T>& operator[](std::size_t index) const { return values.at(index); }
  [[nodiscard]] auto begin() const noexcept { return values.begin(); }
  [[nodiscard]] auto end() const noexcept { return values.end(); }
};

namespace detail {

template <class T>
struct ElementEnded {
  Outcome<T> outcome;
  std::size_t index;
};
struct TimeIsUp {};
struct TimerFinished {};

/// How a child of the group ends: one for each element, and the timer.
template <class T>
using AggregateResult = std::variant<ElementEnded<T>, TimeIsUp, TimerFinished>;

template <class T, class Operation, class Element>
Task<AggregateResult<T>> runElement(Operation& operation, Element element, std::size_t index) {
  std::exception_ptr failure;
  try {
    if constexpr (std::is_void_v<T>) {
      co_await invokeAsTask<Operation, Element>(operation, std::move(element));
      co_return ElementEnded<T>{Nothing(), index};
    } else {
      co_return ElementEnded<T>{
          co_await invokeAsTask<Operation, Element>(operation, std::move(element)), index};
    }
  } catch (...) { // whatever it is belongs into the element's place, cancellation too
    failure = std::current_exception();
  }
  co_return ElementEnded<T>{Failure(failure), index};
}

template <class T>
Task<AggregateResult<T>> runTimer(Clock* clock, Clock::Duration timeLimit) {
  try {
    co_await clock->sleepFor(timeLimit);
  } catch (const CancellationError&) {
    co_return TimerFinished();
  }
  co_return TimeIsUp();
}

/// Fills the places until all are full, the time is up, or the group has nothing more to tell.
template <class T>
Task<void> collectResults(TaskGroup<AggregateResult<T>>& group,
                          std::vector<std::optional<Outcome<T>>>& places) {
  for (std::size_t done = 0; done < places.size();) {
    std::optional<AggregateResult<T>> result = co_await group.next();
    if (!result)
      co_return;
    auto* ended = std::get_if<ElementEnded<T>>(&*result);
    if (ended == nullptr)
      co_return;
    places[ended->index].emplace(std::move(ended->outcome));
    ++done;
  }
}

} // namespace detail

/// Calls `operation(element)` for each element, in tasks of their own on the pool, and gives how
/// each ended. An element that hasn't ended after `timeLimit` is cancelled and counts as failed
/// with TimeoutError; the function waits for it to stop, not for what it would have given. Never
/// throws by itself: failures stay in their places. An empty collection is answered at once.
template <std::ranges::input_range Collection, class Operation>
auto withAggregatingTaskGroup(Collection collection, Clock::Duration timeLimit, Operation operation,
                              Clock* clock = &monotonicClock())
    -> Task<Aggregated<TaskValueOf<Operation, std::ranges::range_value_t<Collection>>>> {
  using Element = std::ranges::range_value_t<Collection>;
  using T = TaskValueOf<Operation, Element>;
  std::vector<std::optional<Outcome<T>>> places;
  co_await withTaskGroup<detail::AggregateResult<T>>(
      [&](TaskGroup<detail::AggregateResult<T>>& group) -> Task<void> {
        for (auto&& element : collection) {
          group.add([&operation, element = Element(std::forward<decltype(element)>(element)),
                     index = places.size()]() mutable {
            return detail::runElement<T>(operation, std::move(element), index);
          });
          places.emplace_back();
        }
        if (!places.empty()) {
          group.add([=] { return detail::runTimer<T>(clock, timeLimit); });
          co_await detail::collectResults<T>(group, places);
        }
        group.cancelAll();
      });
  Aggregated<T> aggregated;
  aggregated.values.reserve(places.size());
  for (std::optional<Outcome<T>>& place : places)
    aggregated.values.push_back(
        place ? std::move(*place) : Outcome<T>(Failure(std::make_exception_ptr(TimeoutError()))));
  co_return aggregated;
}

} // namespace velmar
