// Messages of long-running jobs. Paths in them stay paths until it is known against which folder
// they are to be shown.
//
//   const OperationLogMessage message("Linked ", path, " to ", count, " places");
//   message.resolveFor(context);      // "Linked bin/tool to 3 places", if bin lies in the base
#pragma once

#include "VelmarCore/Operations/Description.h"
#include "VelmarPlatform/Files/FilePath.h"

#include <concepts>
#include <optional>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <variant>
#include <vector>

namespace velmar {

/// Says against which folder the paths in log messages are shown.
class OperationLogContext {
public:
  OperationLogContext() = default;
  OperationLogContext(const OperationLogContext&) = delete;
  OperationLogContext& operator=(const OperationLogContext&) = delete;
  virtual ~OperationLogContext() = default;

  /// Absent: paths are shown in full. Read on any thread, each time that a path is shown.
  [[nodiscard]] virtual std::optional<FilePath> basePath() const = 0;
};

/// The context of a folder that doesn't change, or of none.
class FixedLogContext final : public OperationLogContext {
public:
  explicit FixedLogContext(std::optional<FilePath> basePath = std::nullopt)
      : basePath_(std::move(basePath)) {}
  [[nodiscard]] std::optional<FilePath> basePath() const override { return basePath_; }

private:
  std::optional<FilePath> basePath_;
};

/// A message in pieces. A plain value.
class OperationLogMessage {
public:
  /// A piece of text, or a path.
  using Segment = std::variant<std::string, FilePath>;

  /// A message of one text.
  OperationLogMessage(std::string text) // NOLINT(google-explicit-constructor): a text is a message
      : segments_{Segment(std::move(text))} {}
  OperationLogMessage(std::string_view text) // NOLINT(google-explicit-constructor): likewise
      : OperationLogMessage(std::string(text)) {}
  OperationLogMessage(const char* text) // NOLINT(google-explicit-constructor): likewise
      : OperationLogMessage(std::string(text)) {}

  /// A message of several pieces, each a segment of its own: paths as they are, a `std::type_info`
  /// by the type's name, all else by its description (see Description.h).
  template <class First, class Second, class... Others>
  explicit OperationLogMessage(const First& first, const Second& second, const Others&... others) {
    segments_.reserve(2 + sizeof...(others));
    append(first);
    append(second);
    (append(others), ...);
  }

  [[nodiscard]] const std::vector<Segment>& segments() const noexcept { return segments_; }

  /// The message's text, with paths relative to the context's base where they lie below it.
  [[nodiscard]] std::string resolveFor(const OperationLogContext& context) const;

  bool operator==(const OperationLogMessage&) const = default;

private:
  template <class T>
  void append(const T& value) {
    if constexpr (std::same_as<T, FilePath>)
      segments_.emplace_back(std::in_place_type<FilePath>, value);
    else if constexpr (std::same_as<T, std::type_info>)
      segments_.emplace_back(std::in_place_type<std::string>, nameOfType(value));
    else
      segments_.emplace_back(std::in_place_type<std::string>, descriptionOf(value));
  }
  [[nodiscard]] static std::string nameOfType(const std::type_info& type);

  std::vector<Segment> segments_;
};

/// `text` without the line breaks at its end, as logs keep it: the run of U+000A to U+000D, U+0085,
/// U+2028 and U+2029.
[[nodiscard]] std::string_view withoutTrailingLineBreaks(std::string_view text);

} // namespace velmar
