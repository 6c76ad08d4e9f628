#include "host/UserEnvironment.h"

#include "VelmarCore/Environment/UserEnvironmentFetch.h"
#include "VelmarCore/ShellEnvironment.h"
#include "VelmarPlatform/Concurrency/Clock.h"
#include "VelmarPlatform/Concurrency/MainExecutor.h"

#include <charconv>
#include <fmt/format.h>

namespace velmar::host {

namespace {

using Seconds = std::chrono::duration<double>;

constexpr Seconds usualTimeout{10};
constexpr Seconds longestTimeout{3600};

Seconds timeoutIn(const Arguments& arguments) {
  const auto text = arguments.valueOf("--timeout");
  if (!text)
    return usualTimeout;
  double seconds = 0;
  const auto [end, code] = std::from_chars(text->data(), text->data() + text->size(), seconds);
  if (code != std::errc() || end != text->data() + text->size() || !(seconds > 0) ||
      Seconds(seconds) > longestTimeout)
    throw UsageError(fmt::format("The timeout “{}” isn’t a number of seconds up to {}.", *text,
                                 longestTimeout.count()));
  return Seconds(seconds);
}

FilePath shellFor(const Arguments& arguments, const Streams& streams) {
  if (const auto shell = arguments.valueOf("--shell"))
    return FilePath(*shell);
  const std::string own = streams.variable("SHELL").value_or("");
  return FilePath(own.empty() ? "/bin/sh" : own);
}

Task<void> cancelAfter(Seconds time, TaskHandle<SubprocessEnvironment::Values> task) {
  co_await monotonicClock().sleepFor(std::chrono::duration_cast<Clock::Duration>(time));
  task.cancel();
}

Task<SubprocessEnvironment::Values> fetchWithin(Seconds time, FilePath shell,
                                                SubprocessEnvironment::Values base) {
  const auto fetch = spawn([shell, base] { return fetchUserEnvironment(shell, base); });
  TaskScope scope;
  scope.spawn([time, fetch] { return cancelAfter(time, fetch); });
  co_return co_await fetch.value();
}

} // namespace

std::vector<Option> userEnvironmentOptions() {
  return {{"--shell", "PATH", "Ask this shell instead of the user’s own."},
          {"--timeout", "SECONDS", "How long the shell may take: 10 unless said otherwise."}};
}

UserEnvironment askForUserEnvironment(const Arguments& arguments, const Streams& streams) {
  const Seconds timeout = timeoutIn(arguments);
  const FilePath shell = shellFor(arguments, streams);
  const auto base =
      ShellEnvironment::baseEnvironmentOf(SubprocessEnvironment(streams.allVariables()));
  const auto start = streams.now();
  try {
    auto values = mainExecutor().run([&] { return fetchWithin(timeout, shell, base); });
    return {shell, std::move(values), streams.now() - start};
  } catch (const CancellationError&) {
    throw Error(fmt::format("The shell “{}” hasn’t told its environment within {} seconds, and was "
                            "stopped. A start-up file may wait for something; --timeout gives it "
                            "more time.",
                            shell.description(), timeout.count()));
  }
}

} // namespace velmar::host
