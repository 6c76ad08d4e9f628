#include "host/Interruptions.h"

#include "VelmarPlatform/Basics/Error.h"

#include <cerrno>
#include <span>
#include <sys/signalfd.h>
#include <unistd.h>

namespace velmar::host {

namespace {

sigset_t interruptions() {
  sigset_t signals;
  sigemptyset(&signals);
  sigaddset(&signals, SIGINT);
  sigaddset(&signals, SIGTERM);
  // The terminal has gone. A program that was started so as to outlive it ignores that.
  struct sigaction hangUp{};
  if (sigaction(SIGHUP, nullptr, &hangUp) == 0 && hangUp.sa_handler != SIG_IGN)
    sigaddset(&signals, SIGHUP);
  return signals;
}

sigset_t block() {
  const sigset_t signals = interruptions();
  sigset_t before;
  pthread_sigmask(SIG_BLOCK, &signals, &before);
  return before;
}

std::shared_ptr<AsyncDescriptor> open() {
  const sigset_t signals = interruptions();
  FileDescriptor descriptor(signalfd(-1, &signals, SFD_NONBLOCK | SFD_CLOEXEC));
  if (!descriptor.isOpen()) {
    const int code = errno;
    throw SystemError("Signals can't be read: " + systemErrorText(code) + ".", code);
  }
  return AsyncDescriptor::adopt(std::move(descriptor));
}

} // namespace

Interruptions::Interruptions() : before_(block()), signals_(open()) {}

Interruptions::~Interruptions() {
  // One that has come and wasn't read would end the process now.
  signalfd_siginfo taken;
  while (::read(signals_->descriptor(), &taken, sizeof taken) > 0) {
  }
  signals_->close();
  pthread_sigmask(SIG_SETMASK, &before_, nullptr);
}

Task<int> Interruptions::nextImpl(std::shared_ptr<AsyncDescriptor> signals) {
  signalfd_siginfo taken{};
  co_await signals->readInto(std::as_writable_bytes(std::span(&taken, 1)));
  co_return static_cast<int>(taken.ssi_signo);
}

} // namespace velmar::host
