// Why a parser can't be made.
#pragma once

#include "VelmarPlatform/Basics/Error.h"

namespace velmar {

class ParseError : public Error {
public:
  using Error::Error;
};

} // namespace velmar
