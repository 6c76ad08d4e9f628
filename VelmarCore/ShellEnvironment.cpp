#include "VelmarCore/ShellEnvironment.h"

#include "VelmarCore/Environment/EnvFile.h"
#include "VelmarCore/Environment/UserEnvState.h"
#include "VelmarCore/Environment/UserEnvironmentFetch.h"
#include "VelmarPlatform/Files/FileContents.h"
#include "VelmarPlatform/Unicode/UTF.h"

#include <memory>

namespace velmar::ShellEnvironment {

namespace {

const std::shared_ptr<UserEnvState>& sharedState() {
  static const auto& state = *new auto(std::make_shared<UserEnvState>(
      [] { return fetchUserEnvironment(defaultShellPath(), baseEnvironment()); }));
  return state;
}

} // namespace

Values baseEnvironmentOf(const SubprocessEnvironment& own) {
  Values values = {{"LANG", "en_US.UTF-8"},
                   {"LC_CTYPE", "en_US.UTF-8"},
                   {"PATH", std::string(SubprocessEnvironment::standardPath)}};
  for (const char* name : {"HOME", "SHELL", "USER", "TMPDIR"})
    if (auto value = own.value(name))
      values.emplace(name, *std::move(value));
  return values;
}

const Values& baseEnvironment() {
  static const auto& values = *new Values(baseEnvironmentOf(SubprocessEnvironment::inherited()));
  return values;
}

const std::vector<FilePath>& standardPaths() {
  static const auto& paths =
      *new std::vector<FilePath>(splitSearchPath(SubprocessEnvironment::standardPath));
  return paths;
}

const FilePath& defaultShellPath() {
  static const auto& path = *new FilePath([] {
    const std::string shell = baseShell().value("SHELL").value_or("");
    return FilePath(shell.empty() ? "/bin/sh" : shell);
  }());
  return path;
}

Task<Values> userEnvironment() {
  return sharedState()->environment();
}

Task<std::vector<FilePath>> userPaths() {
  const SubprocessEnvironment environment = co_await userShell();
  co_return environment.paths();
}

Task<void> invalidateUserEnvironmentCache() {
  return sharedState()->invalidate();
}

Values readEnvFile(const FilePath& path) {
  const Bytes bytes = readFile(path);
  const std::string_view text = charactersOf(bytes);
  return isValidUTF8(text) ? entriesOfEnvText(text) : Values();
}

SubprocessEnvironment baseShell() {
  return SubprocessEnvironment(baseEnvironment());
}

Task<SubprocessEnvironment> userShell() {
  try {
    co_return SubprocessEnvironment(co_await userEnvironment());
  } catch (const CancellationError&) {
    throw;
  } catch (const Error&) {
    co_return baseShell();
  }
}

Subprocess::Executable defaultShell() {
  return Subprocess::Executable::path(defaultShellPath());
}

Subprocess::Arguments shellCommand(const ShellCommand& command) {
  return {"-c", command.asShellArguments(" ")};
}

} // namespace velmar::ShellEnvironment
