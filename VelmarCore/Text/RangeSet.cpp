#include "VelmarCore/Text/RangeSet.h"

namespace velmar {

template class RangeSet<std::int64_t>;

} // namespace velmar
