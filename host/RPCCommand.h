// `velmar rpc`: talks JSON-RPC with a program or a server.
#pragma once

#include "host/Command.h"

namespace velmar::host {

[[nodiscard]] Command rpcCommand();

} // namespace velmar::host
