#include "VelmarCore/Text/UTF16LineArray.h"

#include "VelmarCore/Text/UTF16LineArray.inl.h"

namespace velmar {

template class Line<NoLineStorage>;
template class Line<UTF16LineArrayStringStorage>;
template class UTF16LineArray<NoLineStorage>;
template class UTF16LineArray<UTF16LineArrayStringStorage>;

template UTF16LineArray<NoLineStorage>::UTF16LineArray(const UTF16LineArray<NoLineStorage>&,
                                                       FromContents);
template UTF16LineArray<NoLineStorage>::UTF16LineArray(
    const UTF16LineArray<UTF16LineArrayStringStorage>&, FromContents);
template UTF16LineArray<UTF16LineArrayStringStorage>::UTF16LineArray(
    const UTF16LineArray<UTF16LineArrayStringStorage>&, FromContents);

} // namespace velmar
