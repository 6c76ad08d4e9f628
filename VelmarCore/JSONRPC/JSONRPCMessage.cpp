#include "VelmarCore/JSONRPC/JSONRPCMessage.h"

#include "VelmarPlatform/Basics/Overloaded.h"

#include <ostream>

namespace velmar {

namespace {

constexpr std::string_view protocolVersion = "2.0";

} // namespace

std::string JSONRPCMessageID::debugDescription() const {
  return std::visit(Overloaded{[](const std::string& text) { return text; },
                               [](std::int64_t number) { return std::to_string(number); },
                               [](Null) { return std::string("<null>"); }},
                    value_);
}

std::ostream& operator<<(std::ostream& stream, const JSONRPCMessageID& id) {
  return stream << id.debugDescription();
}

bool Coder<JSONRPCMessageID>::decode(Decoder from, JSONRPCMessageID& into) {
  std::string text;
  std::int64_t number = 0;
  if (from.tryRead(text))
    into = std::move(text);
  else if (from.tryRead(number))
    into = number;
  else if (from.isNil())
    into = JSONRPCMessageID();
  else
    return from.fail(DecodingErrorKind::typeMismatch,
                     "Expected message ID to be a string, number, or null.");
  return true;
}

void Coder<JSONRPCMessageID>::encode(const JSONRPCMessageID& value, Encoder& into) {
  std::visit(Overloaded{[&](const std::string& text) { into.text(text); },
                        [&](std::int64_t number) { into.integer(number); },
                        [&](JSONRPCMessageID::Null) { into.nil(); }},
             value.value());
}

bool Coder<Message>::decode(Decoder from, Message& into) {
  KeyedDecodingContainer table;
  if (!detail::openMessage(from, table))
    return false;
  if (!table.contains("id"))
    return table.read("method", into.value.emplace<Message::Notification>().method);
  JSONRPCMessageID id;
  if (!table.read("id", id))
    return false;
  if (!table.contains("method")) {
    into.value = Message::Response{std::move(id)};
    return true;
  }
  auto& request = into.value.emplace<Message::Request>();
  request.id = std::move(id);
  return table.read("method", request.method);
}

bool Coder<RawRequestMessage>::decode(Decoder from, RawRequestMessage& into) {
  KeyedDecodingContainer table;
  return detail::openMessage(from, table) && table.read("id", into.id) &&
         table.read("method", into.method) && table.readIfPresent("params", into.params);
}

void Coder<RawRequestMessage>::encode(const RawRequestMessage& value, Encoder& into) {
  into.table([&](TableEncoder& table) {
    detail::writeHeader(table, &value.id, value.method);
    table.writeIfPresent("params", value.params);
  });
}

bool Coder<RawNotificationMessage>::decode(Decoder from, RawNotificationMessage& into) {
  KeyedDecodingContainer table;
  return detail::openMessage(from, table) && table.read("method", into.method) &&
         table.readIfPresent("params", into.params);
}

void Coder<RawNotificationMessage>::encode(const RawNotificationMessage& value, Encoder& into) {
  into.table([&](TableEncoder& table) {
    detail::writeHeader(table, nullptr, value.method);
    table.writeIfPresent("params", value.params);
  });
}

namespace detail {

bool openMessage(Decoder from, KeyedDecodingContainer& table) {
  std::string version;
  if (!from.open(table) || !table.read("jsonrpc", version))
    return false;
  if (version == protocolVersion)
    return true;
  const auto error = unsupportedProtocolVersion(version);
  return table.at("jsonrpc", [&](Decoder member) {
    return member.fail(DecodingErrorKind::dataCorrupted, error.message(),
                       std::make_exception_ptr(error));
  });
}

void writeHeader(TableEncoder& table, const JSONRPCMessageID* id,
                 std::optional<std::string_view> method) {
  if (id != nullptr)
    table.write("id", *id);
  table.at("jsonrpc", [](Encoder& member) { member.text(protocolVersion); });
  if (method)
    table.at("method", [&](Encoder& member) { member.text(*method); });
}

const JSONEncoder& messageEncoder() {
  static const JSONEncoder encoder({.sortedKeys = true});
  return encoder;
}

} // namespace detail
} // namespace velmar

std::size_t
std::hash<velmar::JSONRPCMessageID>::operator()(const velmar::JSONRPCMessageID& id) const noexcept {
  using velmar::JSONRPCMessageID;
  return std::visit(
      velmar::Overloaded{[](const std::string& text) { return std::hash<std::string>()(text); },
                         [](std::int64_t number) { return std::hash<std::int64_t>()(number); },
                         [](JSONRPCMessageID::Null) { return std::size_t{0}; }},
      id.value());
}
