#include "host/OpenDocument.h"

#include "VelmarPlatform/Unicode/UTF.h"
#include "host/LanguageChoice.h"
#include "host/SourceText.h"

#include <fmt/format.h>

namespace velmar::host {

void Complaints::tell(const std::string& sentence) {
  if (!told_.insert(sentence).second)
    return;
  errors_.write(fmt::format("velmar: {}\n", repairedUTF8(sentence)));
  errors_.flush();
}

OpenOptions OpenOptions::from(const Arguments& arguments) {
  const auto language = arguments.valueOf("--language");
  return {.language = language ? std::optional<std::string>(*language) : std::nullopt,
          .isVerbose = arguments.has("--verbose")};
}

Option languageOption() {
  return {"--language", "ID", "Take it as this language, whatever the file is called."};
}

Option verboseOption() {
  return {"--verbose", "", "Say also which query texts of the grammars don’t fit."};
}

OpenDocument::OpenDocument(std::string name, const Language& language, bool isVerbose,
                           Streams& streams)
    : name_(std::move(name)), language_(language.id), complaints_(streams.errors),
      languages_(LanguageFolders::find(streams), isVerbose
                                                     ? Murmur([this](std::string_view sentence) {
                                                         complaints_.tell(std::string(sentence));
                                                       })
                                                     : Murmur()) {
  if (const std::string note = LanguageFolders::find(streams).note; !note.empty())
    complaints_.tell(note);
  static_cast<void>(grammarOf(language)); // Throws where there is none.
  parse_ = std::make_unique<Parse>(*languages_.configurationFor(language.id));
  parse_->setErrorHandler([this](const ParseConfiguration& configuration, std::string_view label,
                                 const std::exception& error) {
    complaints_.tell(fmt::format("The {} of {} are left out here. {}", label,
                                 configuration.id().rawValue, error.what()));
  });
}

void OpenDocument::load(std::u16string_view text, Streams& streams) {
  const auto start = streams.now();
  parse_->replaceSubrange({0, 0}, text);
  loadTime_ = streams.now() - start;
}

std::unique_ptr<OpenDocument> OpenDocument::fromText(std::u16string_view text, std::string name,
                                                     const Language& language, bool isVerbose,
                                                     Streams& streams) {
  std::unique_ptr<OpenDocument> document(
      new OpenDocument(std::move(name), language, isVerbose, streams));
  document->load(text, streams);
  return document;
}

std::unique_ptr<OpenDocument> OpenDocument::fromFile(const std::string& path,
                                                     const OpenOptions& options, Streams& streams) {
  SourceText source = readSource(path, streams);
  const Language& language = languageFor(source, options.language);
  const std::string name = path == "-" ? "standard input" : FilePath(path).description();
  std::unique_ptr<OpenDocument> document(
      new OpenDocument(name, language, options.isVerbose, streams));
  for (const std::string& note : source.notes)
    document->complaints_.tell(note);
  const std::u16string text = source.text->substringFor({0, source.text->count()});
  source.text.reset();
  document->load(text, streams);
  return document;
}

} // namespace velmar::host
