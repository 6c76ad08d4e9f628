// The base of every failure that travels by exception.
#pragma once

#include <exception>
#include <string>
#include <utility>

namespace velmar {

/// A failure with a sentence for people. Named error types derive from it and add what their
/// catchers need.
///
/// Thrown by value and caught by reference. The object is immutable once thrown: several waiters
/// may look at one.
class Error : public std::exception {
public:
  explicit Error(std::string message) : message_(std::move(message)) {}

  /// The sentence, valid UTF-8.
  [[nodiscard]] const std::string& message() const noexcept { return message_; }
  [[nodiscard]] const char* what() const noexcept override { return message_.c_str(); }

private:
  std::string message_;
};

/// Something that the operating system was asked for and didn't give: opening a file, reading it,
/// and the like.
class SystemError : public Error {
public:
  /// `code` is the `errno` of the call that failed.
  SystemError(std::string message, int code) : Error(std::move(message)), code_(code) {}

  [[nodiscard]] int code() const noexcept { return code_; }

private:
  int code_;
};

/// The system's own words for an `errno`, such as "No such file or directory". Safe on any thread.
[[nodiscard]] std::string systemErrorText(int code);

} // namespace velmar
