#include "VelmarCore/Operations.h"

#include "VelmarPlatform/Concurrency/Clock.h"

#include <gtest/gtest.h>

#include <atomic>
#include <stdexcept>
#include <string>
#include <vector>

namespace velmar {
namespace {

using Debug = OperationLogItem::Debug;
using Warning = OperationLogItem::Warning;

/// Runs `operation` on the main executor, and then all that it has queued there.
template <class Body>
TaskValueOf<Body> runOnMain(Body operation) {
  struct Drain {
    ~Drain() {
      while (mainExecutor().runReady() > 0) {
      }
    }
  } drain;
  return mainExecutor().run(std::move(operation));
}

/// Runs the main executor until the job has ended.
template <class Success>
void finish(const std::shared_ptr<Operation<Success>>& operation) {
  ASSERT_TRUE(
      mainExecutor().runUntil([&] { return operation->isFinished(); }, std::chrono::minutes(1)));
}

std::vector<std::string> linesOf(const std::vector<OperationLogItem>& items) {
  std::vector<std::string> lines;
  for (const OperationLogItem& item : items)
    lines.push_back(item.event + ": " + item.message);
  return lines;
}

using Lines = std::vector<std::string>;
const FixedLogContext noBase;

void log(std::string event, const OperationLogMessage& message) {
  Operations::log(std::move(event), message, Debug(), noBase);
}

TEST(Operations, StepsAndTheJobHaveLogsOfTheirOwn) {
  const auto operation = Operation<int>::start([]() -> Task<int> {
    log("Begin", "outside");
    const int value = co_await Operations::withStep("outer", []() -> Task<int> {
      log("Outer", "1");
      co_await Operations::withStep("inner", [] { log("Inner", "2"); });
      log("Outer", "3");
      co_return 42;
    });
    log("End", "outside");
    co_return value;
  });
  EXPECT_FALSE(operation->isFinished());
  finish(operation);

  EXPECT_EQ(runOnMain([&] { return operation->value(); }), 42);
  EXPECT_EQ(linesOf(operation->output()), (Lines{"Begin: outside", "End: outside"}));
  ASSERT_EQ(operation->steps().size(), 2U);
  EXPECT_EQ(operation->steps()[0]->name(), "outer");
  EXPECT_EQ(linesOf(operation->steps()[0]->output()), (Lines{"Outer: 1", "Outer: 3"}));
  EXPECT_EQ(linesOf(operation->steps()[1]->output()), (Lines{"Inner: 2"}));
  for (const auto& step : operation->steps()) {
    EXPECT_TRUE(step->isFinished());
    EXPECT_EQ(step->error(), nullptr);
  }
}

TEST(Operations, AJobIsFinishedWhenAllThatItToldIsThere) {
  const auto operation = Operation<void>::start([] { log("Last", "words"); });
  finish(operation);
  EXPECT_EQ(linesOf(operation->output()), (Lines{"Last: words"}));
}

TEST(Operations, OutsideOfAJobTheBodyRunsAndLogsGoNowhere) {
  const auto step = runOnMain([]() -> Task<std::shared_ptr<OperationStep>> {
    log("Lost", "nobody reads this");
    co_return co_await Operations::withStep("alone", [] {
      log("Kept", "in the step");
      return Operations::currentStep();
    });
  });
  EXPECT_EQ(linesOf(step->output()), (Lines{"Kept: in the step"}));
  EXPECT_TRUE(step->isFinished());
  EXPECT_EQ(Operations::current(), nullptr);
}

TEST(Operations, ChildrenOnOtherThreadsLogToTheStepThatStartedThem) {
  const auto operation = Operation<void>::start([] {
    return Operations::withStep("step", []() -> Task<void> {
      const auto child = spawn([] {
        for (int line = 0; line < 100; ++line)
          log("Line", OperationLogMessage("number ", line));
      });
      co_await child.value();
    });
  });
  finish(operation);
  const auto lines = linesOf(operation->steps().at(0)->output());
  ASSERT_EQ(lines.size(), 100U);
  for (std::size_t line = 0; line < lines.size(); ++line)
    EXPECT_EQ(lines[line], "Line: number " + std::to_string(line));
}

TEST(Operations, AFailurePassesThroughNestedStepsAsOneObject) {
  const auto operation = Operation<void>::start([] {
    return Operations::withStep("outer", [] {
      return Operations::withStep("inner", [] { throw OperationError("The disk is full."); });
    });
  });
  finish(operation);
  const auto error = operation->error();
  ASSERT_NE(error, nullptr);
  EXPECT_EQ(error->reason(), "The disk is full.");
  for (const auto& step : operation->steps()) {
    EXPECT_EQ(step->error(), error);
    EXPECT_TRUE(step->isFinished());
  }
  try {
    runOnMain([&] { return operation->value(); });
    FAIL();
  } catch (const OperationError& thrown) {
    EXPECT_EQ(&thrown, error.get());
  }
}

TEST(Operations, TheCallerOfAStepGetsTheUnwrappedFailure) {
  std::shared_ptr<OperationStep> step;
  EXPECT_THROW(runOnMain([&] {
                 return Operations::withStep("step", [&] {
                   step = Operations::currentStep();
                   throw std::range_error("too far");
                 });
               }),
               std::range_error);
  ASSERT_NE(step->error(), nullptr);
  EXPECT_EQ(step->error()->description(), "too far");
  EXPECT_THROW(std::rethrow_exception(step->error()->underlyingError()), std::range_error);
}

TEST(Operations, ACancelledJobFailsOnceItNotices) {
  const auto operation = Operation<void>::start(
      []() -> Task<void> { co_await monotonicClock().sleepFor(std::chrono::hours(1)); });
  operation->cancel();
  EXPECT_FALSE(operation->isFinished());
  finish(operation);
  ASSERT_NE(operation->error(), nullptr);
  EXPECT_EQ(operation->error()->reason(), "The operation was cancelled.");
  operation->cancel(); // changes nothing
}

TEST(Operations, ObserversLearnWhatChangedAndNothingOfSkippedWrites) {
  const auto step = std::make_shared<OperationStep>("step");
  Lines told;
  const auto note = [&](const char* when) {
    return [&, when](const PropertyChange& change) {
      EXPECT_EQ(&change.object, step.get());
      told.push_back(when + std::string(change.property.name) + (step->isFinished() ? "!" : ""));
    };
  };
  auto observation = step->observe({.willSet = note("will "), .didSet = note("did ")});
  const auto write = [&] {
    step->update([](OperationStep& written) {
      written.appendOutput({"Event", "message", Debug()});
      written.setFinished();
      written.setFinished();
    });
    mainExecutor().runReady();
  };
  write();
  const Lines expected = {"will output", "did output", "will isFinished", "did isFinished!"};
  EXPECT_EQ(told, expected);
  observation.cancel();
  write();
  EXPECT_EQ(told, expected);
}

TEST(Operations, TheJobTellsOfItsErrorBeforeItsEnd) {
  Lines told;
  const auto operation = Operation<void>::start([] { throw OperationError("No."); });
  const auto observation = operation->observe(
      {.didSet = [&](const PropertyChange& change) { told.emplace_back(change.property.name); }});
  finish(operation);
  EXPECT_EQ(told, (Lines{"error", "isFinished"}));
}

TEST(OperationLogStream, ShowsPathsForItsOwnContext) {
  const auto stream =
      std::make_shared<OperationLogStream>(std::make_shared<FixedLogContext>(FilePath("/base")));
  const auto out = OperationLogStreamSource::standardOutput();
  const auto error = OperationLogStreamSource::standardError();
  stream->append(OperationLogMessage("wrote ", FilePath("/base/a/b"), "\n"), out);
  stream->append("oops\r\n\n", error);
  stream->append("\n", out);
  EXPECT_TRUE(stream->items().empty());
  mainExecutor().runReady();
  EXPECT_EQ(stream->items(), (std::vector<OperationLogStream::Element>{
                                 {"wrote a/b", out}, {"oops", error}, {"", out}}));
}

TEST(OperationLogStream, KeepsTheLastPiecesOnly) {
  const auto stream = std::make_shared<OperationLogStream>(std::make_shared<FixedLogContext>(), 3);
  for (int piece = 0; piece < 100; ++piece) {
    stream->append(std::to_string(piece), OperationLogStreamSource::standardOutput());
    mainExecutor().runReady();
    ASSERT_GE(stream->items().size(),
              std::min<std::size_t>(3, static_cast<std::size_t>(piece) + 1));
    ASSERT_LE(stream->items().size(), 6U);
    ASSERT_EQ(stream->droppedCount() + stream->items().size(), static_cast<std::size_t>(piece) + 1);
    ASSERT_EQ(stream->items().back().message, std::to_string(piece));
  }
}

TEST(OperationLogStream, CanBeWaitedForByWhoeverAppends) {
  const auto stream = std::make_shared<OperationLogStream>(std::make_shared<FixedLogContext>());
  mainExecutor().run([&]() -> Task<void> {
    for (std::size_t piece = 1; piece <= 3; ++piece) {
      stream->append("x", OperationLogStreamSource::standardOutput());
      co_await OperationLogStream::appended();
      EXPECT_EQ(stream->items().size(), piece);
    }
  });
}

TEST(OperationLogMessage, IsResolvedDifferentlyForTwoBases) {
  struct Named {
    [[nodiscard]] std::string description() const { return "named"; }
  };
  const OperationLogMessage message("Linked ", FilePath("/base/bin/x"), ", ", 3, " ", true, " ",
                                    Named(), " ", std::runtime_error("why"), " ",
                                    typeid(OperationStep));
  const std::string rest = ", 3 true named why velmar::OperationStep";
  EXPECT_EQ(message.resolveFor(FixedLogContext(FilePath("/base"))), "Linked bin/x" + rest);
  EXPECT_EQ(message.resolveFor(FixedLogContext(FilePath("/base/bin"))), "Linked x" + rest);
  EXPECT_EQ(message.resolveFor(noBase), "Linked /base/bin/x" + rest);
  EXPECT_EQ(OperationLogMessage("plain").segments().size(), 1U);
}

TEST(OperationLogMessage, LosesLineBreaksAtItsEndOnly) {
  const std::pair<const char*, const char*> cases[] = {
      {"done\r\n\n", "done"},
      {"a\nb", "a\nb"},
      {"\n\r\v\f", ""},
      {"x\xc2\x85", "x"},
      {"\nx ", "\nx "},
      {"x\xe2\x80\xa8\xe2\x80\xa9", "x"},
      {"x\xe2\x80\xa7", "x\xe2\x80\xa7"},
      {"", ""},
  };
  for (const auto& [text, stripped] : cases)
    EXPECT_EQ(withoutTrailingLineBreaks(text), stripped);
}

TEST(OperationError, WrapsWhatIsNone) {
  EXPECT_EQ(OperationError::wrapping(std::make_exception_ptr(7))->reason(),
            "An unknown error occurred.");
  const OperationError full("No.", {.recoverySuggestion = "Try again.",
                                    .help = OperationError::HelpAnchor{"trouble"},
                                    .underlyingError = nullptr});
  const auto wrapped = OperationError::wrapping(std::make_exception_ptr(full));
  EXPECT_EQ(wrapped->recoverySuggestion(), "Try again.");
  EXPECT_EQ(wrapped->help(), full.help());
}

TEST(OperationStepDeathTest, IsWrittenOnTheMainExecutorOnly) {
  EXPECT_DEATH(std::make_shared<OperationStep>("step")->setFinished(),
               "outside of the main executor");
}

} // namespace
} // namespace velmar
