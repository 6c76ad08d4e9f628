// Names the main types of coding, for headers whose types say how they are read and written.
#pragma once

#include <span>

namespace velmar {

class Decoder;
class Encoder;
struct CaseRow;
struct FieldRow;
template <class T>
struct Coder;
template <class E>
struct Word;

} // namespace velmar
