// What a long-running job has to tell, as the user interface shows it: steps with their lines, and
// live streams of what child processes write.
//
// All objects here belong to the main executor: their properties are read and written there alone.
// Code elsewhere reaches them by `update` and `append`, which queue on the main executor and return
// at once; what one task queues happens in its order.
#pragma once

#include "VelmarCore/Operations/OperationError.h"
#include "VelmarCore/Operations/OperationLogMessage.h"
#include "VelmarPlatform/Concurrency/Task.h"
#include "VelmarPlatform/Observation/Observation.h"

#include <cstddef>
#include <functional>
#include <limits>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

namespace velmar {

/// Which stream of a child a text came from. Open: other names survive.
struct OperationLogStreamSource {
  using RawValue = std::string;
  std::string rawValue;

  [[nodiscard]] static OperationLogStreamSource standardOutput() { return {"StandardOutput"}; }
  [[nodiscard]] static OperationLogStreamSource standardError() { return {"StandardError"}; }
  bool operator==(const OperationLogStreamSource&) const = default;
};

/// The live output of something, piece by piece. Held by `std::shared_ptr`.
class OperationLogStream final : public Object,
                                 public std::enable_shared_from_this<OperationLogStream> {
public:
  struct Element {
    std::string message;
    OperationLogStreamSource source;
    bool operator==(const Element&) const = default;
  };
  static constexpr PropertyKey itemsKey{"items"};

  /// `context` isn't null. Of more than `maximumItems` pieces, at least 1, the oldest are dropped:
  /// for output that may never end.
  explicit OperationLogStream(std::shared_ptr<const OperationLogContext> context,
                              std::size_t maximumItems = std::numeric_limits<std::size_t>::max() /
                                                         2);

  [[nodiscard]] const std::shared_ptr<const OperationLogContext>& context() const noexcept {
    return context_;
  }
  /// Oldest first; with a maximum, at least that many and at most twice as many of the last ones.
  /// On the main executor's thread, as the next.
  [[nodiscard]] const std::vector<Element>& items() const noexcept { return items_; }
  /// How many pieces were dropped in front of these.
  [[nodiscard]] std::size_t droppedCount() const noexcept { return droppedCount_; }

  /// Queues an append of the text, without the line breaks at its end; paths are resolved then, for
  /// the stream's own context. Any thread.
  void append(OperationLogMessage message, OperationLogStreamSource source);
  /// Ends when all that was appended before, to any stream, is there. Whoever passes on what a
  /// child writes waits for it between two chunks: a child that writes faster than the main
  /// executor runs would fill the memory.
  [[nodiscard]] static Task<void> appended();

  [[nodiscard]] Observation observe(PropertyObserver observer) {
    return registrar_.add(std::move(observer));
  }

private:
  void add(Element element);

  std::shared_ptr<const OperationLogContext> context_;
  std::size_t maximumItems_;
  std::size_t droppedCount_ = 0;
  std::vector<Element> items_;
  ObservationRegistrar registrar_;
};

/// One line of a log.
struct OperationLogItem {
  struct Debug {
    bool operator==(const Debug&) const = default;
  };
  struct Warning {
    bool operator==(const Warning&) const = default;
  };
  /// A stream: the item heads its live output. Debug: for those who want to know everything.
  using Kind = std::variant<std::shared_ptr<OperationLogStream>, Debug, Warning>;

  std::string event; ///< A short verb, such as "Download".
  std::string message;
  Kind kind;
  bool operator==(const OperationLogItem&) const = default;
};

/// A step of a job: unfinished, then finished, with or without an error. Its identity is its
/// address. Held by `std::shared_ptr`.
class OperationStep final : public Object, public std::enable_shared_from_this<OperationStep> {
public:
  static constexpr PropertyKey outputKey{"output"};
  static constexpr PropertyKey isFinishedKey{"isFinished"};
  static constexpr PropertyKey errorKey{"error"};

  explicit OperationStep(std::string name) : name_(std::move(name)) {}

  /// The step's title. Any thread; the other properties on the main executor's thread.
  [[nodiscard]] const std::string& name() const noexcept { return name_; }
  /// Oldest first.
  [[nodiscard]] const std::vector<OperationLogItem>& output() const noexcept { return output_; }
  [[nodiscard]] bool isFinished() const noexcept { return isFinished_; }
  /// Null unless the step failed.
  [[nodiscard]] const std::shared_ptr<const OperationError>& error() const noexcept {
    return error_;
  }

  /// Has `body` called with the step on the main executor, and returns at once. Any thread; `body`
  /// doesn't throw.
  void update(std::function<void(OperationStep&)> body);

  /// On the main executor, which stops the process if it isn't so. Setting what is set already
  /// tells nobody.
  void appendOutput(OperationLogItem item);
  void setFinished();
  void setError(std::shared_ptr<const OperationError> error);

  [[nodiscard]] Observation observe(PropertyObserver observer) {
    return registrar_.add(std::move(observer));
  }

private:
  std::string name_;
  std::vector<OperationLogItem> output_;
  bool isFinished_ = false;
  std::shared_ptr<const OperationError> error_;
  ObservationRegistrar registrar_;
};

} // namespace velmar

template <>
struct std::hash<velmar::OperationLogStreamSource> {
  std::size_t operator()(const velmar::OperationLogStreamSource& source) const noexcept {
    return std::hash<std::string>()(source.rawValue);
  }
};
