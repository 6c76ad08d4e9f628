#include "VelmarPlatform/Process/ChildProcess.h"

#include "VelmarPlatform/Basics/Error.h"
#include "VelmarPlatform/Files/FileDescriptor.h"
#include "VelmarPlatform/Process/ProgramSearch.h"

#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <new>
#include <spawn.h>
#include <string>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

namespace velmar::detail {

namespace {

using Connection = Subprocess::Connection;

constexpr int lastStandardSignal = 31;

/// A list of what the child does before it is the program.
class FileActions {
public:
  FileActions() { check(::posix_spawn_file_actions_init(&actions_)); }
  FileActions(const FileActions&) = delete;
  FileActions& operator=(const FileActions&) = delete;
  ~FileActions() { ::posix_spawn_file_actions_destroy(&actions_); }

  void replace(int stream, const FileDescriptor& by) {
    check(::posix_spawn_file_actions_adddup2(&actions_, by.number(), stream));
  }
  void open(int stream, const char* path, int flags) {
    check(::posix_spawn_file_actions_addopen(&actions_, stream, path, flags, 0));
  }
  void changeDirectory(const FilePath& path) {
    check(::posix_spawn_file_actions_addchdir_np(&actions_, path.string().c_str()));
  }
  void closeFrom(int lowest) {
    check(::posix_spawn_file_actions_addclosefrom_np(&actions_, lowest));
  }
  [[nodiscard]] const posix_spawn_file_actions_t* get() const noexcept { return &actions_; }

private:
  static void check(int code) { // there is no memory, or the number isn't one of a descriptor
    if (code != 0)
      throw SubprocessError(SubprocessError::Kind::notStarted,
                            "No process can be started: " + systemErrorText(code) + ".", code);
  }
  posix_spawn_file_actions_t actions_{};
};

/// A session of its own, default dispositions and an empty mask, whatever this process has.
class Attributes {
public:
  Attributes() {
    ::posix_spawnattr_init(&attributes_);
    sigset_t signals;
    sigemptyset(&signals);
    ::posix_spawnattr_setsigmask(&attributes_, &signals);
    for (int signal = 1; signal <= lastStandardSignal; ++signal)
      sigaddset(&signals, signal);
    ::posix_spawnattr_setsigdefault(&attributes_, &signals);
    ::posix_spawnattr_setflags(&attributes_,
                               POSIX_SPAWN_SETSID | POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF);
  }
  Attributes(const Attributes&) = delete;
  Attributes& operator=(const Attributes&) = delete;
  ~Attributes() { ::posix_spawnattr_destroy(&attributes_); }
  [[nodiscard]] const posix_spawnattr_t* get() const noexcept { return &attributes_; }

private:
  posix_spawnattr_t attributes_{};
};

/// A list as the system takes it. The texts stay where they are.
std::vector<char*> pointersTo(std::vector<std::string>& texts) {
  std::vector<char*> pointers;
  pointers.reserve(texts.size() + 1);
  for (std::string& text : texts)
    pointers.push_back(text.data());
  pointers.push_back(nullptr);
  return pointers;
}

/// The system would cut a text short at a NUL, and take a name that holds "=" for another.
void checkTexts(const Subprocess::Configuration& configuration) {
  const auto check = [](bool isValid, const char* words) {
    if (!isValid)
      throw SubprocessError(SubprocessError::Kind::invalidArgument, words, EINVAL);
  };
  const auto isWhole = [](const std::string& text) { return text.find('\0') == std::string::npos; };
  check(isWhole(configuration.executable.string()), "The name of a program can't hold a NUL.");
  for (const std::string& argument : configuration.arguments)
    check(isWhole(argument), "An argument of a program can't hold a NUL.");
  for (const auto& [name, value] : configuration.environment.values())
    check(isWhole(name) && isWhole(value) && name.find('=') == std::string::npos,
          "A variable of the environment can't hold a NUL, nor its name “=”.");
  check(!configuration.workingDirectory || isWhole(configuration.workingDirectory->string()),
        "The name of a working directory can't hold a NUL.");
}

/// Connects one stream of the child, and gives our end if it has one. `childsEnd` stays open until
/// the child has been started.
std::shared_ptr<AsyncDescriptor> connect(FileActions& actions, int stream, Connection connection,
                                         FileDescriptor& childsEnd) {
  const bool isInput = stream == STDIN_FILENO;
  switch (connection) {
  case Connection::inherited:
    return nullptr;
  case Connection::none:
    actions.open(stream, "/dev/null", isInput ? O_RDONLY : O_WRONLY);
    return nullptr;
  case Connection::piped:
    break;
  }
  Pipe pipe = Pipe::make();
  childsEnd = std::move(isInput ? pipe.readingEnd : pipe.writingEnd);
  actions.replace(stream, childsEnd);
  return AsyncDescriptor::adopt(std::move(isInput ? pipe.writingEnd : pipe.readingEnd));
}

pid_t spawnProgram(const Subprocess::Configuration& configuration, const FileActions& actions) {
  const std::string path = pathOfProgram(configuration);
  std::vector<std::string> arguments = {configuration.executable.string()};
  arguments.insert(arguments.end(), configuration.arguments.begin(), configuration.arguments.end());
  std::vector<std::string> variables;
  for (const auto& [name, value] : configuration.environment.values())
    variables.push_back(name + "=" + value);

  const Attributes attributes;
  pid_t id = 0;
  const int code = ::posix_spawn(&id, path.c_str(), actions.get(), attributes.get(),
                                 pointersTo(arguments).data(), pointersTo(variables).data());
  if (code != 0)
    failToStart(configuration, path, code);
  return id;
}

void killAndForget(pid_t id) {
  ::kill(-id, SIGKILL);
  while (::waitpid(id, nullptr, 0) < 0 && errno == EINTR) {
  }
}

} // namespace

std::shared_ptr<ChildProcess> ChildProcess::start(const Subprocess::Configuration& configuration,
                                                  Subprocess::Connections connections) {
  checkTexts(configuration);
  const std::shared_ptr<ChildProcess> child(new ChildProcess);
  try {
    FileActions actions;
    FileDescriptor inputEnd;
    FileDescriptor outputEnd;
    FileDescriptor errorEnd;
    child->input = connect(actions, STDIN_FILENO, connections.input, inputEnd);
    child->output = connect(actions, STDOUT_FILENO, connections.output, outputEnd);
    child->error = connect(actions, STDERR_FILENO, connections.error, errorEnd);
    if (configuration.workingDirectory)
      actions.changeDirectory(*configuration.workingDirectory);
    actions.closeFrom(STDERR_FILENO + 1);
    const pid_t id = spawnProgram(configuration, actions);
    FileDescriptor exit(static_cast<int>(::syscall(SYS_pidfd_open, id, 0)));
    const int code = errno;
    try {
      if (!exit.isOpen())
        throw SystemError("The process can't be waited for: " + systemErrorText(code) + ".", code);
      child->exit_ = AsyncDescriptor::adopt(std::move(exit));
    } catch (...) {
      killAndForget(id);
      throw;
    }
    child->id_ = id;
  } catch (const SystemError& error) { // there are no descriptors left, say
    throw SubprocessError(SubprocessError::Kind::notStarted, error.message(), error.code());
  }
  return child;
}

ChildProcess::~ChildProcess() {
  if (id_ != 0 && !isCollected_) // only if there was no memory to supervise it
    killAndForget(id_);
}

bool ChildProcess::hasExited() const noexcept {
  siginfo_t info{};
  const int result = ::waitid(P_PID, static_cast<id_t>(id_), &info, WEXITED | WNOHANG | WNOWAIT);
  return result != 0 || info.si_pid != 0;
}

bool ChildProcess::isOutputClosed() const noexcept {
  return (output == nullptr || output->isHungUp()) && (error == nullptr || error->isHungUp());
}

void ChildProcess::closeStreams() const noexcept {
  for (const auto& stream : {input, output, error})
    if (stream != nullptr)
      stream->close();
}

void ChildProcess::signalGroup(int signal) noexcept {
  const std::scoped_lock lock(mutex_);
  if (!isCollected_)
    ::kill(-id_, signal);
}

TerminationStatus ChildProcess::collectStatus() {
  const std::scoped_lock lock(mutex_);
  siginfo_t info{};
  int result = 0;
  while ((result = ::waitid(P_PID, static_cast<id_t>(id_), &info, WEXITED)) != 0 &&
         errno == EINTR) {
  }
  isCollected_ = true;
  if (result != 0)
    throw SubprocessError(SubprocessError::Kind::statusLost,
                          "A process has ended, but its exit status was collected elsewhere.");
  return info.si_code == CLD_EXITED ? TerminationStatus::exited(info.si_status)
                                    : TerminationStatus::signalled(info.si_status);
}

} // namespace velmar::detail
