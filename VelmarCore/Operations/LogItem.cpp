#include "VelmarCore/Operations/LogItem.h"

#include "VelmarPlatform/Coding/Record.h"
#include "VelmarPlatform/Coding/Vocabulary.h"

namespace velmar {

namespace {

std::size_t combined(std::size_t seed, std::size_t hash) {
  return seed ^ (hash + 0x9e3779b97f4a7c15U + (seed << 6) + (seed >> 2));
}

} // namespace

std::optional<LogItemSeverity> logItemSeverityOf(std::int64_t rawValue) noexcept {
  switch (rawValue) {
  case -1:
    return LogItemSeverity::debug;
  case 0:
    return LogItemSeverity::info;
  case 5:
    return LogItemSeverity::warning;
  case 9:
    return LogItemSeverity::error;
  default:
    return std::nullopt;
  }
}

std::string_view descriptionOf(LogItemSeverity severity) noexcept {
  switch (severity) {
  case LogItemSeverity::debug:
    return "DEBUG";
  case LogItemSeverity::info:
    return "INFO ";
  case LogItemSeverity::warning:
    return "WARN ";
  case LogItemSeverity::error:
    return "ERROR";
  }
  return "";
}

std::string LogItemSource::description() const {
  std::string text;
  std::string_view separator;
  for (const std::string& component : components) {
    text += std::exchange(separator, "::");
    text += component;
  }
  return text;
}

std::string LogItem::description() const {
  std::string line = formatISO8601(date);
  line += " ";
  line += descriptionOf(severity);
  line += " [" + source.description() + "] " + message;
  if (!message.ends_with('\n'))
    line += "\n";
  return line;
}

std::span<const LogItemSeverity> numbersOf(LogItemSeverity /*severity*/) noexcept {
  static constexpr std::array values{LogItemSeverity::debug, LogItemSeverity::info,
                                     LogItemSeverity::warning, LogItemSeverity::error};
  return values;
}

std::span<const FieldRow> LogItemSource::rows() {
  static constexpr auto table =
      rowsOf<LogItemSource>(row<&LogItemSource::components>("components"));
  return table;
}

std::span<const FieldRow> LogItem::rows() {
  static constexpr auto table =
      rowsOf<LogItem>(row<&LogItem::message>("message"), row<&LogItem::severity>("severity"),
                      row<&LogItem::source>("source"), row<&LogItem::date>("date"));
  return table;
}

} // namespace velmar

std::size_t
std::hash<velmar::LogItemSource>::operator()(const velmar::LogItemSource& source) const noexcept {
  std::size_t seed = source.size();
  for (const std::string& component : source)
    seed = velmar::combined(seed, std::hash<std::string>()(component));
  return seed;
}

std::size_t std::hash<velmar::LogItem>::operator()(const velmar::LogItem& item) const noexcept {
  std::size_t seed = std::hash<std::string>()(item.message);
  seed = velmar::combined(seed, static_cast<std::size_t>(item.severity));
  seed = velmar::combined(seed, std::hash<velmar::LogItemSource>()(item.source));
  const auto ticks = item.date.time_since_epoch().count();
  return velmar::combined(seed, std::hash<std::int64_t>()(ticks));
}
