// A session as it is read from a file, with the text that it starts with.
#pragma once

#include "VelmarPlatform/Files/FilePath.h"
#include "host/Session.h"
#include "host/Streams.h"

#include <string>

namespace velmar::host {

struct SessionFile {
  /// The file as it stands.
  std::string text;
  /// With `initial` filled in, also where the session names another file.
  Session session;
};

/// Throws Error where a file can't be read, or SessionError: the text is no session, or an edit
/// doesn't fit.
[[nodiscard]] SessionFile readSessionFile(const FilePath& path, const Streams& streams);

} // namespace velmar::host
