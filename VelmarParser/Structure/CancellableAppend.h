// Collecting what was found in a document, such that it can be given up: a million elements take
// 50 ms to move into larger memory.
#pragma once

#include "VelmarParser/Structure/CancellationTicks.h"
#include "VelmarParser/Structure/DisposedVector.h"

#include <algorithm>
#include <cstddef>
#include <utility>

namespace velmar {

/// Makes room for `capacity` elements. Throws CancellationError, and then the elements are good for
/// nothing but to be freed; so do those below.
template <class Element>
void reserve(std::size_t capacity, DisposedVector<Element>& elements, CancellationTicks& ticks) {
  if (capacity <= elements.capacity())
    return;
  DisposedVector<Element> larger;
  larger.reserve(capacity);
  for (Element& element : elements) {
    ticks.step();
    larger.push_back(std::move(element));
  }
  elements.swap(larger);
}

template <class Element>
void append(Element element, DisposedVector<Element>& elements, CancellationTicks& ticks) {
  ticks.step();
  if (elements.size() == elements.capacity())
    reserve(std::max<std::size_t>(16, 2 * elements.size()), elements, ticks);
  elements.push_back(std::move(element));
}

template <class Element>
void append(DisposedVector<Element> more, DisposedVector<Element>& elements,
            CancellationTicks& ticks) {
  reserve(elements.size() + more.size(), elements, ticks);
  for (Element& element : more)
    append(std::move(element), elements, ticks);
}

} // namespace velmar
