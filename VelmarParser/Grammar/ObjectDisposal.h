// Frees anything that is large and no longer wanted away from the caller, beside the trees.
#pragma once

#include <memory>

namespace velmar {

/// Frees `object` on a background thread, soon, if this is its last owner. Its destructor must bear
/// another thread. Returns at once; any thread.
void disposeInBackground(std::shared_ptr<void> object);

} // namespace velmar
