// Where the sublayers of a layer lie, as long as the layer is settled.
//
// A layer is settled if its sublayers are apart from each other and each is sure to be found again
// at an edit that doesn't touch it. Then an edit needs to look only at the places around it, and a
// reader only at those that it asks for. A place is one range of text; a combined sublayer has
// several, all others have one.
#pragma once

#include "VelmarCore/Text/RangeSet.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <vector>

namespace velmar::detail {

struct InjectionPoint;
struct LayerEdit;
struct LayerImpl;

class SettledPlaces {
public:
  using LayerPtr = std::shared_ptr<LayerImpl>;

  /// Without places.
  SettledPlaces() = default;
  /// The places of `sublayers`, which are there for `points`, all in text order; absent if that
  /// isn't settled.
  static std::optional<SettledPlaces> of(std::span<const InjectionPoint> points,
                                         std::span<const LayerPtr> sublayers);

  /// In text order.
  [[nodiscard]] std::span<const TextRange> ranges() const noexcept { return ranges_; }
  /// The places that overlap `range`, as indices. O(log n).
  [[nodiscard]] Range<std::size_t> indicesIn(TextRange range) const;

  /// Moves all places along with an edit; those that it touches take it in, and none becomes empty.
  void moveWith(const LayerEdit& edit);
  void moveBy(std::int64_t distance);

  /// Where the sublayer of a place stands among the layer's: for a further place of a combined
  /// sublayer, where one would stand that began there. O(1) if nothing is combined, else a pass
  /// over bytes.
  [[nodiscard]] std::size_t sublayerIndexAt(std::size_t place) const;
  /// The sublayers with a place among some, as indices in order, each once.
  [[nodiscard]] std::vector<std::size_t> sublayerIndicesAt(Range<std::size_t> places) const;

  [[nodiscard]] std::span<const LayerPtr> combined() const noexcept { return combined_; }
  /// The places of a combined sublayer.
  [[nodiscard]] std::vector<std::size_t> placesOfCombined(std::size_t combined) const;
  /// Which combined sublayer, if one, a place belongs to.
  [[nodiscard]] std::optional<std::size_t> combinedAt(std::size_t place) const;

  /// Whether other `points` can take the place of `places` without a change of what comes first in
  /// a combined sublayer.
  [[nodiscard]] bool canReplace(Range<std::size_t> places,
                                std::span<const InjectionPoint> points) const;
  /// Puts them there.
  void replace(Range<std::size_t> places, std::span<const InjectionPoint> points);
  /// Whether each combined sublayer still has its first place for itself, by which it is found.
  [[nodiscard]] bool isStillSettled() const;

  /// What lies outside of the object.
  [[nodiscard]] std::size_t allocatedBytes() const noexcept {
    return ranges_.capacity() * sizeof(TextRange) + kinds_.capacity() * sizeof(Kind) +
           combined_.capacity() * sizeof(LayerPtr);
  }

private:
  /// What kind of place it is: that of a simple sublayer, or the first or a further one of the
  /// combined sublayer with a certain index.
  using Kind = std::uint8_t;
  static constexpr Kind simple = 0;
  static constexpr Kind firstOf(std::size_t combined) {
    return static_cast<Kind>(2 * combined + 1);
  }
  static constexpr Kind furtherOf(std::size_t combined) {
    return static_cast<Kind>(2 * combined + 2);
  }
  static constexpr bool isFirst(Kind kind) { return kind % 2 == 1; }
  static constexpr bool isFurther(Kind kind) { return kind != simple && kind % 2 == 0; }
  static constexpr std::size_t mostCombined = 100;

  [[nodiscard]] Kind kindAt(std::size_t place) const {
    return kinds_.empty() ? simple : kinds_[place];
  }
  [[nodiscard]] std::optional<std::size_t> combinedFor(const InjectionPoint& point) const;

  std::vector<TextRange> ranges_;
  std::vector<Kind> kinds_; // by place; empty if nothing is combined
  std::vector<LayerPtr> combined_;
};

} // namespace velmar::detail
