// Names out of JSON Schema, the description of what a JSON value may be.
#pragma once

#include "VelmarPlatform/Coding/Vocabulary.h"

#include <string>

namespace velmar {

/// A namespace.
struct JSONSchema {
  JSONSchema() = delete;

  /// What a text stands for, as the keyword "format" says it. There may be others than those with a
  /// name here.
  struct ValueFormat : OpenVocabulary<ValueFormat, std::string> {
    using OpenVocabulary::OpenVocabulary;
    static const ValueFormat dateTime, date, time, duration, email, idnEmail, hostname, idnHostname,
        ipv4, ipv6, uuid, uri, uriReference, iri, iriReference, uriTemplate, jsonPointer, filePath;
  };
};

inline const JSONSchema::ValueFormat JSONSchema::ValueFormat::dateTime("date-time");
inline const JSONSchema::ValueFormat JSONSchema::ValueFormat::date("date");
inline const JSONSchema::ValueFormat JSONSchema::ValueFormat::time("time");
inline const JSONSchema::ValueFormat JSONSchema::ValueFormat::duration("duration");
inline const JSONSchema::ValueFormat JSONSchema::ValueFormat::email("email");
inline const JSONSchema::ValueFormat JSONSchema::ValueFormat::idnEmail("idn-email");
inline const JSONSchema::ValueFormat JSONSchema::ValueFormat::hostname("hostname");
inline const JSONSchema::ValueFormat JSONSchema::ValueFormat::idnHostname("idn-hostname");
inline const JSONSchema::ValueFormat JSONSchema::ValueFormat::ipv4("ipv4");
inline const JSONSchema::ValueFormat JSONSchema::ValueFormat::ipv6("ipv6");
inline const JSONSchema::ValueFormat JSONSchema::ValueFormat::uuid("uuid");
inline const JSONSchema::ValueFormat JSONSchema::ValueFormat::uri("uri");
inline const JSONSchema::ValueFormat JSONSchema::ValueFormat::uriReference("uri-reference");
inline const JSONSchema::ValueFormat JSONSchema::ValueFormat::iri("iri");
inline const JSONSchema::ValueFormat JSONSchema::ValueFormat::iriReference("iri-reference");
inline const JSONSchema::ValueFormat JSONSchema::ValueFormat::uriTemplate("uri-template");
inline const JSONSchema::ValueFormat JSONSchema::ValueFormat::jsonPointer("json-pointer");
inline const JSONSchema::ValueFormat JSONSchema::ValueFormat::filePath("file-path");

} // namespace velmar
