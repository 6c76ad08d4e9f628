#include "host/SessionFile.h"

#include "VelmarPlatform/Files/FileContents.h"
#include "host/SourceText.h"

namespace velmar::host {

namespace {

/// A session's text is small beside what it can do.
constexpr std::int64_t largestSession = std::int64_t{1} << 28;

} // namespace

SessionFile readSessionFile(const FilePath& path, const Streams& streams) {
  SessionFile file;
  file.text = charactersOf(readFile(path, {.sizeLimit = largestSession}));
  file.session = readSession(file.text);
  if (file.session.file) {
    const FilePath beside(*file.session.file, path.removingLastComponent());
    const SourceText source = readSource(beside.string(), streams);
    file.session.initial = source.text->substringFor({0, source.text->count()});
    file.session.file.reset();
  }
  checkEdits(file.session, std::ssize(file.session.initial));
  return file;
}

} // namespace velmar::host
