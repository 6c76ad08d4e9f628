// What awaiting costs: a child, another serialised object and back, a continuation that is answered
// at once. The floor is Asio's own coroutines doing the same on one thread, as everything here runs
// on the thread that loops.
//
// We also promise absolute times on an ordinary machine: at most 100 ns for a child, and 450 ns for
// a call to an object and back.

#include "VelmarPlatform/Concurrency/Task.h"

#include "VelmarPlatform/Concurrency/Continuation.h"
#include "VelmarPlatform/Concurrency/Executor.h"
#include "VelmarPlatform/Concurrency/Spawn.h"
#include "bench/Pair.h"

#define ASIO_STANDALONE
#define ASIO_HAS_CO_AWAIT 1 // this release looks for clang's old coroutines only
#include <asio/awaitable.hpp>
#include <asio/co_spawn.hpp>
#include <asio/detached.hpp>
#include <asio/io_context.hpp>
#include <asio/strand.hpp>
#include <asio/use_awaitable.hpp>
#include <memory>
#include <utility>

namespace velmar {

namespace {

/// Lends the calling thread to the pool until its one job, and all that this leads to, is done.
/// Objects' turns run here too then, as on any thread of the pool.
class ThisThread final : public Executor {
public:
  ThisThread() : Executor("this thread") {}

  template <class Operation>
  void run(Operation operation) {
    auto handle = spawn(*this, std::move(operation));
    detail::ThreadState& thread = detail::threadState();
    const auto kind = std::exchange(thread.kind, detail::ThreadKind::pool);
    while (!handle.isFinished())
      detail::runTurn(thread, this, std::exchange(job_, nullptr));
    thread.kind = kind;
  }

  void enqueue(detail::Job& job) noexcept override {
    job.next = nullptr;
    job_ = &job;
  }
  [[nodiscard]] bool mayRunOn(detail::ThreadKind kind) const noexcept override {
    return kind == detail::ThreadKind::pool;
  }
  [[nodiscard]] bool takeTurnOrEnqueue(detail::Job&) noexcept override { return true; }
  [[nodiscard]] detail::Job* nextInTurn(bool) noexcept override {
    return std::exchange(job_, nullptr);
  }
  void leaveTurn() noexcept override {}
  [[nodiscard]] std::shared_ptr<const Executor> keepAlive() const noexcept override {
    return nullptr;
  }

private:
  detail::Job* job_ = nullptr;
};

template <class Operation>
void runWithAsio(Operation operation) {
  asio::io_context context(1);
  asio::co_spawn(context, std::move(operation), asio::detached);
  context.run();
}

// A child

asio::awaitable<int> asioChild(int value) {
  co_return value + 1;
}

void awaitChildWithAsio(bench::State& state) {
  runWithAsio([&]() -> asio::awaitable<void> {
    int value = 0;
    for (auto _ : state)
      benchmark::DoNotOptimize(value = co_await asioChild(value));
  });
}

Task<int> child(int value) {
  co_return value + 1;
}

void awaitChildWithOurs(bench::State& state) {
  ThisThread().run([&]() -> Task<void> {
    int value = 0;
    for (auto _ : state)
      benchmark::DoNotOptimize(value = co_await child(value));
  });
}

VELMAR_PAIR("task/awaitChild", 1.5, awaitChildWithAsio, awaitChildWithOurs);

// Another object and back

void callObjectWithAsio(bench::State& state) {
  runWithAsio([&]() -> asio::awaitable<void> {
    const auto strand = asio::make_strand(co_await asio::this_coro::executor);
    int value = 0;
    for (auto _ : state)
      benchmark::DoNotOptimize(
          value = co_await asio::co_spawn(strand, asioChild(value), asio::use_awaitable));
  });
}

class Counter : public SerialObject {
public:
  Counter() : SerialObject("counter") {}
  Task<int> add(int amount) { co_return total_ += amount; }
  Task<void> callOther(bench::State& state, std::shared_ptr<Counter> other) {
    for (auto _ : state)
      benchmark::DoNotOptimize(total_ = co_await other->add(1));
  }

private:
  int total_ = 0;
};

void callObjectWithOurs(bench::State& state) {
  ThisThread().run(
      [&] { return std::make_shared<Counter>()->callOther(state, std::make_shared<Counter>()); });
}

VELMAR_PAIR("task/callObject", 1, callObjectWithAsio, callObjectWithOurs);

// A continuation that is answered at once

void continueWithAsio(bench::State& state) {
  runWithAsio([&]() -> asio::awaitable<void> {
    for (auto _ : state)
      co_await asio::async_initiate<const asio::use_awaitable_t<>, void()>(
          [](auto handler) { asio::post(std::move(handler)); }, asio::use_awaitable);
  });
}

void continueWithOurs(bench::State& state) {
  ThisThread().run([&]() -> Task<void> {
    for (auto _ : state)
      co_await withContinuation(
          [](Continuation<> continuation) { std::move(continuation).resume(); });
  });
}

VELMAR_PAIR("task/continuation", 1, continueWithAsio, continueWithOurs);

} // namespace

} // namespace velmar
