// What a child costs beside bare system calls: starting a trivial program and waiting for its end,
// and reading what a pipe holds line by line.
//
// Both are work of several threads and of the system, so it is wall time that counts, and no bound
// on instructions is checked: a start is to take at most 1.5 times as long as the floor.

#include "VelmarPlatform/Process/Subprocess.h"

#include "VelmarPlatform/Concurrency/MainExecutor.h"
#include "VelmarPlatform/Files/FileDescriptor.h"
#include "bench/Pair.h"

#include <array>
#include <cstdlib>
#include <cstring>
#include <spawn.h>
#include <string>
#include <string_view>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

namespace velmar {

namespace {

const char* const program = "/bin/true";

void startBare(bench::State& state) {
  std::string name = program;
  std::array<char*, 2> arguments = {name.data(), nullptr};
  std::array<char*, 1> variables = {nullptr};
  for (auto _ : state) {
    pid_t id = 0;
    if (::posix_spawn(&id, program, nullptr, nullptr, arguments.data(), variables.data()) != 0 ||
        ::waitpid(id, nullptr, 0) != id)
      std::abort();
  }
}

void startOurs(bench::State& state) {
  mainExecutor().run([&]() -> Task<void> {
    for (auto _ : state) {
      const auto result = co_await Subprocess::run(
          {.executable = Subprocess::Executable::path(FilePath(program))},
          {.output = Subprocess::DiscardedOutput(), .error = Subprocess::DiscardedOutput()});
      if (!result.status.isSuccess())
        std::abort();
    }
  });
}

const bool startIsMeasured = bench::registerPair(
    {"process/start and wait", 0, startBare, startOurs, {}, bench::Clock::wall});

/// A pipe into which a thread writes lines of some 60 bytes, 4 MB of them.
class LineSource {
public:
  static constexpr std::size_t size = std::size_t{4} << 20;

  LineSource() : pipe_(Pipe::make()) {
    thread_ = std::thread([end = pipe_.writingEnd.release()] {
      const FileDescriptor owner(end);
      for (std::string_view rest = text(); !rest.empty();) {
        const ssize_t count = ::write(end, rest.data(), rest.size());
        if (count < 0)
          std::abort();
        rest.remove_prefix(static_cast<std::size_t>(count));
      }
    });
  }
  LineSource(const LineSource&) = delete;
  LineSource& operator=(const LineSource&) = delete;
  ~LineSource() { thread_.join(); }

  FileDescriptor& end() { return pipe_.readingEnd; }

private:
  static const std::string& text() {
    static const std::string lines = [] {
      std::string result;
      for (std::size_t i = 0; result.size() < size; ++i)
        result += std::string(40 + i % 40, 'x') + "\n";
      result.resize(size);
      result.back() = '\n';
      return result;
    }();
    return lines;
  }

  Pipe pipe_;
  std::thread thread_;
};

void readLinesBare(bench::State& state) {
  for (auto _ : state) {
    LineSource source;
    std::string buffer(65536, '\0');
    std::string partial;
    std::size_t total = 0;
    while (true) {
      const ssize_t count = ::read(source.end().number(), buffer.data(), buffer.size());
      if (count <= 0)
        break;
      const char* at = buffer.data();
      const char* const end = at + count;
      while (const void* found = std::memchr(at, '\n', static_cast<std::size_t>(end - at))) {
        const char* next = static_cast<const char*>(found) + 1;
        partial.append(at, next);
        total += partial.size();
        benchmark::DoNotOptimize(partial.data());
        partial = std::string();
        at = next;
      }
      partial.append(at, end);
    }
    if (total != LineSource::size)
      std::abort();
  }
}

void readLinesOurs(bench::State& state) {
  mainExecutor().run([&]() -> Task<void> {
    for (auto _ : state) {
      LineSource source;
      AsyncLines lines = AsyncBytes(AsyncDescriptor::adopt(std::move(source.end()))).lines();
      std::size_t total = 0;
      while (true) {
        const std::vector<std::string> batch = co_await lines.nextBatch();
        if (batch.empty())
          break;
        for (const std::string& line : batch)
          total += line.size();
        benchmark::DoNotOptimize(batch.data());
      }
      if (total != LineSource::size)
        std::abort();
    }
  });
}

const bool linesAreMeasured = bench::registerPair(
    {"process/lines of a pipe", 0, readLinesBare, readLinesOurs, {}, bench::Clock::wall});

} // namespace

} // namespace velmar
