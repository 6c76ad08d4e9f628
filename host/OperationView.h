// Shows a running operation: its steps and log lines as they come, and how long it has taken.
#pragma once

#include "VelmarCore/Operations.h"
#include "host/Streams.h"

#include <chrono>
#include <cstddef>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace velmar::host {

/// On a terminal the last line is alive: it tells the step and the time, and goes at the end. Where
/// styles aren't shown there are plain lines: what children write to standard output goes there,
/// all else to standard error.
///
/// Observers only note what there is to say, since they must not fail; `deliver` says it. On the
/// main executor's thread.
class OperationView {
public:
  OperationView(std::shared_ptr<ObservableOperation> operation, Streams& streams);

  /// Has a sentence about the operation written with what has come.
  void addNote(std::string_view sentence);
  /// Writes what has come since the last call, and the live line anew. Throws what writing throws.
  void deliver();
  /// The same without a live line, and the final word behind it.
  void finish();

private:
  struct Piece {
    std::string text; ///< With its line feed.
    Style style = Style::plain;
    bool isOutput = false;
  };

  void addSteps();
  void addStep(const std::shared_ptr<OperationStep>& step);
  void addItems(const OperationStep& step, std::size_t& seen);
  void addStream(const std::shared_ptr<OperationLogStream>& stream);
  void addLines(const OperationLogStream& stream, std::size_t& seen);
  void writePieces();
  void eraseLiveLine();
  [[nodiscard]] std::string liveLine() const;
  [[nodiscard]] std::string elapsed() const;
  [[nodiscard]] bool isLive() const { return streams_.output.isStyled(); }

  std::shared_ptr<ObservableOperation> operation_;
  Streams& streams_;
  std::chrono::nanoseconds start_;
  std::size_t stepsSeen_ = 0;
  std::size_t lineCount_ = 0;
  bool hasLiveLine_ = false;
  std::vector<Piece> pieces_;
  std::vector<Observation> observations_; // last, so that they end first
};

} // namespace velmar::host
