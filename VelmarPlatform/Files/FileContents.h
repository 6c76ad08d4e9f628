// Whole files in and out. What a file's bytes mean is somebody else's business, and so are files
// that are read piece by piece. Every failure is a `SystemError` whose sentence names the file:
// “Could not open “a.c”: No such file or directory.” All calls block, on any thread.
#pragma once

#include "VelmarPlatform/Basics/Bytes.h"
#include "VelmarPlatform/Files/FilePath.h"

#include <cstdint>
#include <optional>
#include <span>

namespace velmar {

struct ReadOptions {
  /// The most bytes to accept, at least 0; more are refused with the code EFBIG, at once where the
  /// size is known and else as soon as one more byte has come. Absent, memory is the limit.
  std::optional<std::int64_t> sizeLimit = std::nullopt;
};

/// All bytes of the file at `path`: of a pipe or a device, all until its end. Throws `SystemError`
/// if it can't be opened or read, and for folders (EISDIR).
[[nodiscard]] Bytes readFile(const FilePath& path, ReadOptions options = {});

/// All bytes of the process's standard input until its end. Throws `SystemError`.
[[nodiscard]] Bytes readStandardInput(ReadOptions options = {});

/// Makes `bytes` the contents of the file at `path`: whatever happens, even if the machine stops,
/// the old contents or the new ones are there, never a part of either. When the call returns, the
/// new ones are on the disk.
///
/// They are written to a file beside it, which then takes its place. So the folder must be
/// writable, other links to the old file keep the old contents, and somebody who watches the folder
/// sees the passing file (its name starts with
/// ".velmar-"). The permissions of an existing file stay. A symbolic link to a file stays too and
/// that file is written; one that leads nowhere is replaced. Throws `SystemError` if a step fails,
/// and for what isn't a regular file; nothing has changed then, unless it was the last step, which
/// brings the change of the folder to the disk.
void writeFileAtomically(const FilePath& path, std::span<const std::byte> bytes);

} // namespace velmar
