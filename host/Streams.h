// Where a command reads and writes: the terminal, a pipe or, in the tests, a string. Commands are
// handed these and know of nothing else.
#pragma once

#include "VelmarPlatform/Basics/Bytes.h"

#include <chrono>
#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>

namespace velmar::host {

/// The reader of an output has gone, as `head` does once it has seen enough. Nothing to tell
/// anybody: the program ends quietly.
struct BrokenPipe {};

/// How a piece of output looks on a terminal.
enum class Style { plain, heading, field, faint, error };

/// Collects text and delivers it in large pieces.
class Output {
public:
  explicit Output(bool isStyled) : isStyled_(isStyled) {}
  Output(const Output&) = delete;
  Output& operator=(const Output&) = delete;
  virtual ~Output() = default;

  void write(std::string_view text);
  /// The same in the style, where the reader shows styles.
  void write(std::string_view text, Style style);
  /// Delivers what has been collected. Throws BrokenPipe, or SystemError if it can't be written.
  void flush();
  /// Whether the reader shows styles.
  [[nodiscard]] bool isStyled() const noexcept { return isStyled_; }

protected:
  virtual void deliver(std::string_view text) = 0;

private:
  std::string collected_;
  bool isStyled_;
};

/// An open file of the process, which it doesn't own.
class FileOutput final : public Output {
public:
  /// Styled if `descriptor` is a terminal and the environment neither sets NO_COLOR nor says that
  /// the terminal is dumb.
  explicit FileOutput(int descriptor);

protected:
  void deliver(std::string_view text) override;

private:
  int descriptor_;
};

/// Keeps what is written, for whoever runs a command in process.
class StringOutput final : public Output {
public:
  explicit StringOutput(bool isStyled = false) : Output(isStyled) {}
  /// All that has been written so far.
  [[nodiscard]] const std::string& text() {
    flush();
    return text_;
  }

protected:
  void deliver(std::string_view text) override { text_ += text; }

private:
  std::string text_;
};

struct Streams {
  /// All bytes of standard input; throws SystemError for more than `sizeLimit`.
  std::function<Bytes(std::int64_t sizeLimit)> readInput;
  Output& output;
  /// Notes and errors, a sentence to a line.
  Output& errors;
  std::function<std::chrono::nanoseconds()> now;
  /// A variable of the environment; without a function there are none.
  std::function<std::optional<std::string>(std::string_view name)> environment = {};

  /// All of them; without a function there are none.
  std::function<std::map<std::string, std::string, std::less<>>()> environmentVariables = {};

  /// The next line of standard input as soon as it is there, without its line feed, absent at the
  /// end. It blocks. Without a function, or beside it, there is `readInput`.
  std::function<std::optional<std::string>()> readLine = {};

  [[nodiscard]] std::map<std::string, std::string, std::less<>> allVariables() const {
    return environmentVariables ? environmentVariables()
                                : std::map<std::string, std::string, std::less<>>();
  }
  [[nodiscard]] std::optional<std::string> variable(std::string_view name) const {
    return environment ? environment(name) : std::nullopt;
  }
};

} // namespace velmar::host
