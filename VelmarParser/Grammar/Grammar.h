// A language's parse tables, built in or loaded from a shared library, with the names of its
// symbols and fields.
#pragma once

#include "VelmarPlatform/Basics/Error.h"
#include "VelmarPlatform/Basics/Version.h"
#include "VelmarPlatform/Files/FilePath.h"

#include <tree_sitter/api.h>

#include <array>
#include <compare>
#include <cstdint>
#include <functional>
#include <iosfwd>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace velmar {

/// Why a grammar couldn't be loaded from a shared library.
class DynamicGrammarError : public Error {
public:
  enum class Kind { libraryLoadFailed, functionNotFound };

  static DynamicGrammarError libraryLoadFailed(const FilePath& path,
                                               std::string_view loaderMessage);
  static DynamicGrammarError functionNotFound(std::string_view symbol,
                                              std::string_view loaderMessage);

  [[nodiscard]] Kind kind() const noexcept { return kind_; }

private:
  DynamicGrammarError(Kind kind, std::string message) : Error(std::move(message)), kind_(kind) {}
  Kind kind_;
};

/// A grammar that is known by name but isn't compiled into this build.
class MissingGrammarError : public Error {
public:
  explicit MissingGrammarError(std::string_view id);
};

/// Immutable and shared: parsers, queries and configurations hold it, from any thread. A grammar
/// from a shared library keeps that library open as long as anything refers to it.
class Grammar {
public:
  /// The grammars that the engine knows, in their listed order.
  enum class BuiltIn : std::uint8_t {
    bash,
    c,
    cmake,
    cpp,
    csharp,
    css,
    diff,
    embeddedTemplate,
    html,
    ini,
    javascript,
    jinja,
    jsdoc,
    json,
    lua,
    make,
    markdown,
    markdownInline,
    modulemap,
    perl,
    php,
    phpOnly,
    pod,
    python,
    query,
    regex,
    ruby,
    rust,
    scss,
    sql,
    swift,
    toml,
    tsx,
    typescript,
    xml,
    yaml,
  };

  /// The version of the table format, which the runtime must understand.
  struct ABIVersion {
    std::uint32_t rawValue = 0;
    /// `value` must not be negative.
    static ABIVersion of(std::int32_t value);
    auto operator<=>(const ABIVersion&) const = default;
    [[nodiscard]] std::string description() const { return std::to_string(rawValue); }
  };
  /// The formats that parsers can be made for, both included.
  static constexpr ABIVersion oldestSupportedABIVersion{13};
  static constexpr ABIVersion newestSupportedABIVersion{15};

  struct FieldID {
    std::uint16_t base = 0;
    auto operator<=>(const FieldID&) const = default;
  };
  struct SymbolID {
    std::uint16_t base = 0;
    auto operator<=>(const SymbolID&) const = default;
  };
  struct StateID {
    std::uint16_t base = 0;
    auto operator<=>(const StateID&) const = default;
  };
  enum class SymbolType : std::uint8_t {
    regular = TSSymbolTypeRegular,
    anonymous = TSSymbolTypeAnonymous,
    supertype = TSSymbolTypeSupertype,
    auxiliary = TSSymbolTypeAuxiliary,
  };

  /// The fields of a grammar, numbered from 1 to `count()`.
  class Fields {
  public:
    explicit Fields(const Grammar& grammar) : grammar_(&grammar) {}
    [[nodiscard]] std::int64_t count() const;
    [[nodiscard]] std::optional<std::string_view> nameFor(FieldID field) const;

  private:
    const Grammar* grammar_;
  };

  /// The symbols of a grammar, numbered from 0 to `count()` less one.
  class Symbols {
  public:
    explicit Symbols(const Grammar& grammar) : grammar_(&grammar) {}
    [[nodiscard]] std::int64_t count() const;
    [[nodiscard]] std::optional<std::string_view> nameFor(SymbolID symbol) const;
    /// The symbol of that name; symbol 0 where there is none.
    [[nodiscard]] SymbolID symbolFor(std::string_view name, bool isNamed) const;
    [[nodiscard]] SymbolType typeFor(SymbolID symbol) const;

  private:
    const Grammar* grammar_;
  };

  /// Gives the symbols that can follow in one state of the parser, one at a time.
  class StateLookahead {
  public:
    StateLookahead(const Grammar& grammar, StateID state);
    /// The next valid symbol; absent at the end, and for a state that the grammar doesn't have.
    [[nodiscard]] std::optional<SymbolID> next();

  private:
    struct Deleter {
      void operator()(TSLookaheadIterator* iterator) const noexcept {
        ts_lookahead_iterator_delete(iterator);
      }
    };
    std::unique_ptr<TSLookaheadIterator, Deleter> base_;
  };

  /// All built-in grammars, also those that this build lacks.
  [[nodiscard]] static std::span<const BuiltIn> allBuiltIns();
  /// The identifier of a built-in grammar, such as "c_sharp".
  [[nodiscard]] static std::string_view rawValueOf(BuiltIn builtIn);
  [[nodiscard]] static std::optional<BuiltIn> builtInFromRawValue(std::string_view rawValue);
  /// Whether this build has the tables.
  [[nodiscard]] static bool isAvailable(BuiltIn builtIn);

  /// A built-in grammar, with its raw value as `id`. Throws MissingGrammarError if this build lacks
  /// it.
  [[nodiscard]] static std::shared_ptr<const Grammar> fromBuiltIn(BuiltIn builtIn);
  /// The grammar that the shared library at `path` exports as `tree_sitter_<id>`. Throws
  /// DynamicGrammarError. The library's code runs in this process: the caller vouches for it.
  [[nodiscard]] static std::shared_ptr<const Grammar> fromDynamicLibrary(std::string id,
                                                                         const FilePath& path);
  /// A grammar made elsewhere. `deallocator`, if any, runs once with `base` when the last reference
  /// goes.
  Grammar(std::string id, const TSLanguage* base,
          std::function<void(const TSLanguage*)> deallocator = nullptr);
  Grammar(const Grammar&) = delete;
  Grammar& operator=(const Grammar&) = delete;
  ~Grammar();

  [[nodiscard]] const std::string& id() const noexcept { return id_; }
  [[nodiscard]] const TSLanguage* base() const noexcept { return base_; }
  /// The name that the tables give themselves; absent in older formats.
  [[nodiscard]] std::optional<std::string_view> name() const;
  /// The grammar's own version; absent in older formats.
  [[nodiscard]] std::optional<Version> version() const;
  [[nodiscard]] ABIVersion abiVersion() const;
  [[nodiscard]] Fields fields() const { return Fields(*this); }
  [[nodiscard]] Symbols symbols() const { return Symbols(*this); }
  [[nodiscard]] StateLookahead lookaheadFor(StateID state) const { return {*this, state}; }

private:
  std::string id_;
  const TSLanguage* base_;
  std::function<void(const TSLanguage*)> deallocator_;
};

std::ostream& operator<<(std::ostream& stream, Grammar::ABIVersion version);

} // namespace velmar
