#include "VelmarPlatform/Process/ProgramSearch.h"

#include "VelmarPlatform/Unicode/UTF.h"

#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace velmar::detail {

namespace {

using Kind = SubprocessError::Kind;

std::string quoted(std::string_view text) {
  return "“" + repairedUTF8(text) + "”";
}

/// 0 if a program could be executed at `path`, else the reason.
int reasonAgainstExecuting(const FilePath& path) {
  struct stat status{};
  if (::stat(path.string().c_str(), &status) != 0)
    return errno;
  if (S_ISDIR(status.st_mode))
    return EISDIR;
  if (!S_ISREG(status.st_mode))
    return EACCES;
  return ::faccessat(AT_FDCWD, path.string().c_str(), X_OK, AT_EACCESS) == 0 ? 0 : errno;
}

/// 0 if a process could work in `path`, else the reason.
int reasonAgainstWorkingIn(const FilePath& path) {
  struct stat status{};
  if (::stat(path.string().c_str(), &status) != 0)
    return errno;
  if (!S_ISDIR(status.st_mode))
    return ENOTDIR;
  return ::faccessat(AT_FDCWD, path.string().c_str(), X_OK, AT_EACCESS) == 0 ? 0 : errno;
}

void checkWorkingDirectory(const Subprocess::Configuration& configuration) {
  if (!configuration.workingDirectory)
    return;
  if (const int code = reasonAgainstWorkingIn(*configuration.workingDirectory); code != 0)
    throw SubprocessError(Kind::workingDirectoryNotUsable,
                          "The working directory " +
                              quoted(configuration.workingDirectory->string()) +
                              " can't be used: " + systemErrorText(code) + ".",
                          code);
}

/// Where `path` leads from the child's working directory.
FilePath seenFromHere(std::string_view path, const Subprocess::Configuration& configuration) {
  return FilePath(path, configuration.workingDirectory.value_or(FilePath()));
}

bool isAbsence(int code) {
  return code == ENOENT || code == ENOTDIR;
}

std::string wordsFor(int code) {
  switch (code) {
  case EISDIR:
    return "it is a folder.";
  case ENOEXEC:
    return "it is no program that this system can run.";
  case ENOENT: // though the file itself exists
    return "the interpreter that it asks for doesn't exist.";
  default:
    return systemErrorText(code) + ".";
  }
}

[[noreturn]] void failNotUsable(std::string_view program, int code) {
  throw SubprocessError(Kind::programNotUsable,
                        "The program " + quoted(program) + " can't be run: " + wordsFor(code),
                        code);
}

} // namespace

std::string pathOfProgram(const Subprocess::Configuration& configuration) {
  const std::string& name = configuration.executable.string();
  if (std::holds_alternative<FilePath>(configuration.executable.value()) ||
      name.find('/') != std::string::npos)
    return name;

  const std::vector<FilePath> folders = configuration.environment.paths();
  int code = ENOENT;
  FilePath unusable;
  std::string list;
  for (const FilePath& folder : folders) {
    list += (list.empty() ? "" : ", ") + folder.description();
    if (name.empty())
      continue;
    const FilePath candidate = folder.appending(name);
    const int reason = reasonAgainstExecuting(seenFromHere(candidate.string(), configuration));
    if (reason == 0)
      return candidate.string();
    if (!isAbsence(reason) && isAbsence(code)) {
      code = reason;
      unusable = candidate;
    }
  }
  checkWorkingDirectory(configuration);
  if (!isAbsence(code))
    failNotUsable(unusable.string(), code);
  throw SubprocessError(Kind::programNotFound,
                        "The program " + quoted(name) + " wasn't found" +
                            (list.empty() ? ": the search path is empty." : " in " + list + "."),
                        ENOENT);
}

void failToStart(const Subprocess::Configuration& configuration, const std::string& path,
                 int code) {
  checkWorkingDirectory(configuration);
  if (path.empty())
    throw SubprocessError(Kind::programNotFound, "No program was named to be run.", ENOENT);
  const int reason = reasonAgainstExecuting(seenFromHere(path, configuration));
  if (isAbsence(reason))
    throw SubprocessError(Kind::programNotFound, "The program " + quoted(path) + " doesn't exist.",
                          reason);
  if (reason != 0)
    failNotUsable(path, reason);
  if (code == ENOEXEC || code == ENOENT || code == EACCES || code == ELIBBAD)
    failNotUsable(path, code);
  throw SubprocessError(
      Kind::notStarted,
      "The program " + quoted(path) + " can't be started: " + systemErrorText(code) + ".", code);
}

} // namespace velmar::detail
