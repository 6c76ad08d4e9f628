#include "VelmarCore/JSONRPC/JSONRPCError.h"

namespace velmar {

JSONRPCError<JSONRPCVoid> unsupportedProtocolVersion(std::string_view version) {
  return JSONRPCError<JSONRPCVoid>(JSONRPCErrorCode::invalidRequest,
                                   "The JSON-RPC protocol version " + std::string(version) +
                                       " is not supported.");
}

JSONRPCError<JSONRPCVoid> methodNotFound(std::string_view method) {
  return JSONRPCError<JSONRPCVoid>(JSONRPCErrorCode::methodNotFound,
                                   "The method “" + std::string(method) + "” is not supported.");
}

JSONRPCError<JSONRPCVoid> emptyParametersNotAllowed() {
  return JSONRPCError<JSONRPCVoid>(JSONRPCErrorCode::invalidRequest,
                                   "The request does not allow empty parameters.");
}

} // namespace velmar
