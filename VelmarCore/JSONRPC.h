// Conversations in JSON-RPC 2.0: everything that a client or a server of such a protocol needs but
// the stream and its framing.
#pragma once

#include "VelmarCore/JSONRPC/JSONRPCError.h"         // IWYU pragma: export
#include "VelmarCore/JSONRPC/JSONRPCMessage.h"       // IWYU pragma: export
#include "VelmarCore/JSONRPC/JSONRPCMessageFramer.h" // IWYU pragma: export
#include "VelmarCore/JSONRPC/JSONRPCRequest.h"       // IWYU pragma: export
#include "VelmarCore/JSONRPC/JSONRPCSession.h"       // IWYU pragma: export
