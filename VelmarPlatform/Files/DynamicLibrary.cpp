#include "VelmarPlatform/Files/DynamicLibrary.h"

#include "VelmarPlatform/Unicode/UTF.h"

#include <dlfcn.h>
#include <string_view>

namespace velmar {

namespace {

/// What the loader says of this thread's last failure, and clears by saying it.
std::string loaderMessage() {
  const char* const message =
      dlerror(); // NOLINT(concurrency-mt-unsafe): one message per thread in glibc and musl
  return message ? repairedUTF8(message) : std::string();
}

constexpr std::string_view holdsNUL = "The name holds a NUL.";

} // namespace

void DynamicLibrary::Closer::operator()(void* handle) const noexcept {
  dlclose(handle);
}

Result<DynamicLibrary, std::string> DynamicLibrary::open(const std::string& path) {
  // The loader would read only what stands in front of it: another file.
  if (path.find('\0') != std::string::npos)
    return Failure(std::string(holdsNUL));
  // Without a slash the loader would search its own places, and an empty name would give this very
  // program.
  const std::string file = path.find('/') == std::string::npos ? "./" + path : path;
  void* const handle = dlopen(file.c_str(), RTLD_LAZY | RTLD_LOCAL);
  if (!handle)
    return Failure(loaderMessage());
  return DynamicLibrary(handle);
}

Result<void*, std::string> DynamicLibrary::symbol(const std::string& name) const {
  if (name.find('\0') != std::string::npos)
    return Failure(std::string(holdsNUL));
  (void)loaderMessage(); // so that no older failure is taken for this one's
  void* const address = dlsym(handle_.get(), name.c_str());
  if (!address)
    return Failure(loaderMessage());
  return address;
}

} // namespace velmar
