#include "VelmarParser/Grammar/Grammar.h"

#include "VelmarParser/Grammar/BuiltInGrammars.h"
#include "VelmarPlatform/Basics/Precondition.h"
#include "VelmarPlatform/Files/DynamicLibrary.h"
#include "VelmarPlatform/Unicode/UTF.h"

#include <fmt/format.h>
#include <ostream>

namespace velmar {

namespace {

/// The runtime's own symbols for errors and their repeats lie at the top of the range.
constexpr std::uint16_t errorSymbol = 0xFFFF;

std::optional<std::string_view> textOf(const char* text) {
  return text ? std::optional<std::string_view>(text) : std::nullopt;
}

} // namespace

DynamicGrammarError DynamicGrammarError::libraryLoadFailed(const FilePath& path,
                                                           std::string_view loaderMessage) {
  return {Kind::libraryLoadFailed,
          fmt::format("Failed to load dynamic library “{}”: {}", path.description(),
                      repairedUTF8(loaderMessage))}; // which names the path once more
}

DynamicGrammarError DynamicGrammarError::functionNotFound(std::string_view symbol,
                                                          std::string_view loaderMessage) {
  return {
      Kind::functionNotFound,
      fmt::format("Failed to reference dynamic language function “{}”: {}", symbol, loaderMessage)};
}

MissingGrammarError::MissingGrammarError(std::string_view id)
    : Error(fmt::format("The grammar “{}” isn’t part of this build.", id)) {}

Grammar::ABIVersion Grammar::ABIVersion::of(std::int32_t value) {
  precondition(value >= 0, "An ABI version is not negative.");
  return {static_cast<std::uint32_t>(value)};
}

std::ostream& operator<<(std::ostream& stream, Grammar::ABIVersion version) {
  return stream << version.rawValue;
}

std::span<const Grammar::BuiltIn> Grammar::allBuiltIns() {
  static const auto all = [] {
    std::vector<BuiltIn> list;
    for (const auto& row : detail::builtInGrammars())
      list.push_back(row.builtIn);
    return list;
  }();
  return all;
}

std::string_view Grammar::rawValueOf(BuiltIn builtIn) {
  return detail::builtInGrammars()[static_cast<std::size_t>(builtIn)].rawValue;
}

std::optional<Grammar::BuiltIn> Grammar::builtInFromRawValue(std::string_view rawValue) {
  for (const auto& row : detail::builtInGrammars()) {
    if (row.rawValue == rawValue)
      return row.builtIn;
  }
  return std::nullopt;
}

bool Grammar::isAvailable(BuiltIn builtIn) {
  return detail::builtInGrammars()[static_cast<std::size_t>(builtIn)].entry != nullptr;
}

std::shared_ptr<const Grammar> Grammar::fromBuiltIn(BuiltIn builtIn) {
  const auto& row = detail::builtInGrammars()[static_cast<std::size_t>(builtIn)];
  if (!row.entry)
    throw MissingGrammarError(row.rawValue);
  const TSLanguage* const base = row.entry();
  precondition(base != nullptr, "A built-in grammar gave no tables.");
  return std::make_shared<const Grammar>(std::string(row.rawValue), base);
}

std::shared_ptr<const Grammar> Grammar::fromDynamicLibrary(std::string id, const FilePath& path) {
  auto opened = DynamicLibrary::open(path.string());
  if (!opened)
    throw DynamicGrammarError::libraryLoadFailed(path, opened.error());
  auto library = std::make_shared<DynamicLibrary>(std::move(opened).value());
  const std::string symbol = "tree_sitter_" + id;
  const auto entry = library->symbol(symbol);
  if (!entry)
    throw DynamicGrammarError::functionNotFound(symbol, entry.error());
  const auto* const base = reinterpret_cast<const TSLanguage* (*)()>(entry.value())();
  // The library goes with the closure, once the grammar has gone.
  return std::make_shared<const Grammar>(std::move(id), base, [library](const TSLanguage*) {});
}

Grammar::Grammar(std::string id, const TSLanguage* base,
                 std::function<void(const TSLanguage*)> deallocator)
    : id_(std::move(id)), base_(base), deallocator_(std::move(deallocator)) {}

Grammar::~Grammar() {
  if (deallocator_)
    deallocator_(base_);
}

std::optional<std::string_view> Grammar::name() const {
  return textOf(ts_language_name(base_));
}

std::optional<Version> Grammar::version() const {
  const TSLanguageMetadata* const metadata = ts_language_metadata(base_);
  if (!metadata)
    return std::nullopt;
  return Version{.major = metadata->major_version,
                 .minor = metadata->minor_version,
                 .patch = metadata->patch_version};
}

Grammar::ABIVersion Grammar::abiVersion() const {
  return {ts_language_abi_version(base_)};
}

std::int64_t Grammar::Fields::count() const {
  return ts_language_field_count(grammar_->base());
}

std::optional<std::string_view> Grammar::Fields::nameFor(FieldID field) const {
  return textOf(ts_language_field_name_for_id(grammar_->base(), field.base));
}

std::int64_t Grammar::Symbols::count() const {
  return ts_language_symbol_count(grammar_->base());
}

std::optional<std::string_view> Grammar::Symbols::nameFor(SymbolID symbol) const {
  return textOf(ts_language_symbol_name(grammar_->base(), symbol.base));
}

Grammar::SymbolID Grammar::Symbols::symbolFor(std::string_view name, bool isNamed) const {
  return {ts_language_symbol_for_name(grammar_->base(), name.data(),
                                      static_cast<std::uint32_t>(name.size()), isNamed)};
}

Grammar::SymbolType Grammar::Symbols::typeFor(SymbolID symbol) const {
  precondition(symbol.base < count() || symbol.base >= errorSymbol - 1,
               "A symbol doesn't belong to the grammar.");
  return static_cast<SymbolType>(ts_language_symbol_type(grammar_->base(), symbol.base));
}

Grammar::StateLookahead::StateLookahead(const Grammar& grammar, StateID state)
    : base_(ts_lookahead_iterator_new(grammar.base(), state.base)) {}

std::optional<Grammar::SymbolID> Grammar::StateLookahead::next() {
  // At its end the runtime's iterator would start giving symbols that aren't valid.
  if (base_ && !ts_lookahead_iterator_next(base_.get()))
    base_.reset();
  if (!base_)
    return std::nullopt;
  return SymbolID{ts_lookahead_iterator_current_symbol(base_.get())};
}

} // namespace velmar
