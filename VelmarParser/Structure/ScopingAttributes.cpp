#include "VelmarParser/Structure/ScopingAttributes.h"

namespace velmar {

void ScopingAttributes::put(Entry entry) {
  const auto place = std::ranges::lower_bound(entries_, entry.key, {}, &Entry::key);
  if (place != entries_.end() && place->key == entry.key)
    *place = std::move(entry);
  else
    entries_.insert(place, std::move(entry));
}

void ScopingAttributes::add(const ScopingAttributes& other) {
  for (const Entry& theirs : other.entries_) {
    if (!std::ranges::binary_search(entries_, theirs.key, {}, &Entry::key))
      put(theirs);
  }
}

bool ScopingAttributes::operator==(const ScopingAttributes& other) const {
  return std::ranges::equal(entries_, other.entries_, [](const Entry& left, const Entry& right) {
    return left.key == right.key && left.box->equals(*right.box);
  });
}

} // namespace velmar
