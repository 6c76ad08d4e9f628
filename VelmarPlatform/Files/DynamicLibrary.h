// Shared libraries that are loaded while the program runs, such as grammars that somebody compiled.
#pragma once

#include "VelmarPlatform/Basics/Result.h"

#include <memory>
#include <string>

namespace velmar {

/// A loaded library, which is closed when its owner goes: whatever was found in it is gone then.
/// Loading one runs the code in it, so load only what the user trusts. Any thread.
class DynamicLibrary {
public:
  /// Loads the file at `path`, binding its functions lazily and keeping its symbols to itself. The
  /// failure is the loader's own message, empty if it gives none.
  ///
  /// A path is always a file's: a bare name means the current directory and isn't searched among
  /// the system's libraries.
  [[nodiscard]] static Result<DynamicLibrary, std::string> open(const std::string& path);

  /// The address of the function or object with that name, to be cast to its type. The failure is
  /// the loader's own message, empty if it gives none: also where the name stands for a null
  /// address.
  [[nodiscard]] Result<void*, std::string> symbol(const std::string& name) const;

private:
  struct Closer {
    void operator()(void* handle) const noexcept;
  };
  explicit DynamicLibrary(void* handle) : handle_(handle) {}

  std::unique_ptr<void, Closer> handle_;
};

} // namespace velmar
