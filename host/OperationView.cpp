#include "host/OperationView.h"

#include <fmt/format.h>
#include <utility>
#include <variant>

namespace velmar::host {

OperationView::OperationView(std::shared_ptr<ObservableOperation> operation, Streams& streams)
    : operation_(std::move(operation)), streams_(streams), start_(streams.now()) {
  observations_.push_back(operation_->observe({.didSet = [this](const PropertyChange& change) {
    if (change.property == ObservableOperation::stepsKey)
      addSteps();
  }}));
  addSteps();
}

void OperationView::addSteps() {
  const auto& steps = operation_->steps();
  for (; stepsSeen_ < steps.size(); ++stepsSeen_)
    addStep(steps[stepsSeen_]);
}

void OperationView::addStep(const std::shared_ptr<OperationStep>& step) {
  pieces_.push_back({step->name() + "\n", Style::heading});
  const auto seen = std::make_shared<std::size_t>(0);
  observations_.push_back(step->observe({.didSet = [this, seen](const PropertyChange& change) {
    if (change.property == OperationStep::outputKey)
      addItems(static_cast<const OperationStep&>(change.object), *seen);
  }}));
  addItems(*step, *seen);
}

void OperationView::addItems(const OperationStep& step, std::size_t& seen) {
  const auto& items = step.output();
  for (; seen < items.size(); ++seen) {
    const OperationLogItem& item = items[seen];
    const bool isWarning = std::holds_alternative<OperationLogItem::Warning>(item.kind);
    pieces_.push_back({fmt::format("{}: {}\n", item.event, item.message),
                       isWarning ? Style::error : Style::faint});
    if (const auto* stream = std::get_if<std::shared_ptr<OperationLogStream>>(&item.kind))
      addStream(*stream);
  }
}

void OperationView::addStream(const std::shared_ptr<OperationLogStream>& stream) {
  observations_.push_back(stream->observe(
      {.didSet = [this, seen = std::size_t{0}](const PropertyChange& change) mutable {
        addLines(static_cast<const OperationLogStream&>(change.object), seen);
      }}));
}

/// Each append is seen, so what the stream has dropped was shown.
void OperationView::addLines(const OperationLogStream& stream, std::size_t& seen) {
  for (; seen - stream.droppedCount() < stream.items().size(); ++seen) {
    const auto& [message, source] = stream.items()[seen - stream.droppedCount()];
    const bool isOutput = source == OperationLogStreamSource::standardOutput();
    pieces_.push_back({message + "\n", isOutput ? Style::plain : Style::field, isOutput});
    ++lineCount_;
  }
}

void OperationView::addNote(std::string_view sentence) {
  pieces_.push_back({fmt::format("{}\n", sentence), Style::faint});
}

void OperationView::deliver() {
  eraseLiveLine();
  writePieces();
  if (isLive()) {
    // Without wrapping, so that the line can be erased however narrow the terminal is.
    streams_.output.write("\x1b[?7l" + liveLine() + "\x1b[?7h");
    hasLiveLine_ = true;
  }
  streams_.output.flush();
  streams_.errors.flush();
}

void OperationView::finish() {
  eraseLiveLine();
  writePieces();
  streams_.output.flush();
  const auto error = operation_->error();
  if (error == nullptr) {
    streams_.errors.write(fmt::format("Finished after {}.\n", elapsed()), Style::heading);
  } else {
    streams_.errors.write("velmar: ", Style::error);
    streams_.errors.write(fmt::format("{} ({})\n", error->reason(), elapsed()));
    if (error->recoverySuggestion())
      streams_.errors.write(*error->recoverySuggestion() + "\n");
  }
  streams_.errors.flush();
}

void OperationView::writePieces() {
  // On a terminal all goes one way, or the two outputs would not stay in order.
  for (const Piece& piece : std::exchange(pieces_, {})) {
    if (!piece.isOutput && !isLive()) {
      streams_.errors.write(piece.text, piece.style);
      continue;
    }
    // The steps so far are told also to those who have stopped reading the output.
    streams_.errors.flush();
    streams_.output.write(piece.text, piece.style);
  }
}

void OperationView::eraseLiveLine() {
  if (std::exchange(hasLiveLine_, false))
    streams_.output.write("\r\x1b[K");
}

std::string OperationView::liveLine() const {
  const auto& steps = operation_->steps();
  const std::string name = steps.empty() ? "Starting" : steps.back()->name();
  return fmt::format("\x1b[2m… {}, {}, {} lines\x1b[0m", elapsed(), name, lineCount_);
}

std::string OperationView::elapsed() const {
  const std::chrono::duration<double> time = streams_.now() - start_;
  if (time < std::chrono::minutes(1))
    return fmt::format("{:.1f} s", time.count());
  const auto seconds = std::chrono::floor<std::chrono::seconds>(time).count();
  return fmt::format("{}:{:02} min", seconds / 60, seconds % 60);
}

} // namespace velmar::host
