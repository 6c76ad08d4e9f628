// A growable array whose first few elements live in the object itself.
//
// The sets and run arrays here are nearly always tiny (one range for a document, one run for a
// plain text) and now and then huge. This holds both: no allocation while `inlineCapacity`
// suffices, one contiguous block beyond it. It offers only what the collections of this folder
// need; it is no replacement for std::vector.
#pragma once

#include "VelmarPlatform/Basics/Precondition.h"

#include <algorithm>
#include <cstddef>
#include <memory>
#include <type_traits>
#include <utility>

namespace velmar {

/// A contiguous array of `Element`, at most `inlineCapacity` of them without an allocation. A plain
/// value; pointers into it hold until the next change or move.
template <class Element, std::size_t inlineCapacity>
class InlineArray {
  static_assert(inlineCapacity > 0);
  static_assert(std::is_nothrow_move_constructible_v<Element> &&
                    std::is_nothrow_move_assignable_v<Element>,
                "A splice must not fail half-way.");

public:
  using value_type = Element;

  InlineArray() noexcept = default;
  InlineArray(const InlineArray& other) { appendCopies(other); }
  InlineArray(InlineArray&& other) noexcept { take(other); }
  InlineArray& operator=(const InlineArray& other) {
    if (this != &other) {
      clear();
      appendCopies(other);
    }
    return *this;
  }
  InlineArray& operator=(InlineArray&& other) noexcept {
    if (this != &other) {
      clear();
      release();
      take(other);
    }
    return *this;
  }
  ~InlineArray() {
    clear();
    release();
  }

  [[nodiscard]] std::size_t size() const noexcept { return size_; }
  [[nodiscard]] bool empty() const noexcept { return size_ == 0; }
  [[nodiscard]] std::size_t capacity() const noexcept { return capacity_; }
  /// What lies outside of the object: 0 as long as the elements fit in.
  [[nodiscard]] std::size_t allocatedBytes() const noexcept {
    return capacity_ > inlineCapacity ? capacity_ * sizeof(Element) : 0;
  }
  [[nodiscard]] Element* data() noexcept { return data_; }
  [[nodiscard]] const Element* data() const noexcept { return data_; }
  [[nodiscard]] Element* begin() noexcept { return data_; }
  [[nodiscard]] Element* end() noexcept { return data_ + size_; }
  [[nodiscard]] const Element* begin() const noexcept { return data_; }
  [[nodiscard]] const Element* end() const noexcept { return data_ + size_; }
  /// Unchecked, like the pointers: the collections on top check what their callers give them.
  [[nodiscard]] Element& operator[](std::size_t index) noexcept { return data_[index]; }
  [[nodiscard]] const Element& operator[](std::size_t index) const noexcept { return data_[index]; }
  [[nodiscard]] Element& back() noexcept { return data_[size_ - 1]; }
  [[nodiscard]] const Element& back() const noexcept { return data_[size_ - 1]; }

  /// Makes room for `count` elements in all, growing by half or more, so that repeated calls stay
  /// cheap.
  void reserve(std::size_t count) {
    if (count > capacity_)
      relocate(std::max(count, capacity_ * 2));
  }

  void pushBack(Element element) {
    reserve(size_ + 1);
    std::construct_at(data_ + size_, std::move(element));
    ++size_;
  }

  /// Cuts the array down to its first `count` elements.
  void truncate(std::size_t count) noexcept {
    std::destroy(data_ + count, data_ + size_);
    size_ = count;
  }

  void clear() noexcept { truncate(0); }

  /// Sets the size to `count`. New elements hold anything: assign to them before they are read.
  void resizeForOverwrite(std::size_t count) {
    if (count <= size_)
      return truncate(count);
    reserve(count);
    if constexpr (!std::is_trivially_copyable_v<Element>)
      std::uninitialized_value_construct(data_ + size_, data_ + count);
    size_ = count;
  }

  /// Puts `count` elements, the k-th being `make(k)`, in the place of those from `first` to before
  /// `last`.
  ///
  /// `make` gives something to move or copy from that doesn't lie in this array; if it can't fail,
  /// nothing here fails once the room is there. Elements outside are moved only if the size
  /// changes.
  template <class Make>
  void replace(std::size_t first, std::size_t last, std::size_t count, Make make) {
    const std::size_t replaced = last - first;
    const std::size_t overwritten = std::min(replaced, count);
    if (count > replaced)
      openGap(last, count - replaced);
    for (std::size_t k = 0; k < overwritten; ++k)
      data_[first + k] = make(k);
    if (count > replaced) {
      for (std::size_t k = overwritten; k < count; ++k)
        std::construct_at(data_ + first + k, make(k));
    } else if (count < replaced) {
      std::move(data_ + last, data_ + size_, data_ + first + count);
      truncate(size_ - (replaced - count));
    }
  }

private:
  [[nodiscard]] Element* inlineData() noexcept { return reinterpret_cast<Element*>(inline_); }
  [[nodiscard]] bool isInline() noexcept { return data_ == inlineData(); }

  // Moves the elements from `index` on up by `count`, leaving raw memory between.
  void openGap(std::size_t index, std::size_t count) {
    reserve(size_ + count);
    Element* const from = data_ + index;
    Element* const end = data_ + size_;
    if constexpr (std::is_trivially_copyable_v<Element>) {
      std::move_backward(from, end, end + count);
    } else {
      for (Element* element = end; element != from; --element) {
        std::construct_at(element - 1 + count, std::move(element[-1]));
        std::destroy_at(element - 1);
      }
    }
    size_ += count;
  }

  void appendCopies(const InlineArray& other) {
    if (other.size_ > capacity_)
      relocate(other.size_ + other.size_ / 8 + 1); // a copy is mostly made to be changed a little
    std::uninitialized_copy(other.begin(), other.end(), data_ + size_);
    size_ += other.size_;
  }

  void relocate(std::size_t capacity) {
    Element* const fresh = std::allocator<Element>().allocate(capacity);
    std::uninitialized_move(data_, data_ + size_, fresh);
    std::destroy(data_, data_ + size_);
    release();
    data_ = fresh;
    capacity_ = capacity;
  }

  // Gives the block back, if there is one. The elements are gone already.
  void release() noexcept {
    if (!isInline())
      std::allocator<Element>().deallocate(data_, capacity_);
    data_ = inlineData();
    capacity_ = inlineCapacity;
  }

  // Takes over what `other` holds; this array is empty and inline.
  void take(InlineArray& other) noexcept {
    if (other.isInline()) {
      std::uninitialized_move(other.begin(), other.end(), data_);
      size_ = other.size_;
      other.clear();
    } else {
      data_ = std::exchange(other.data_, other.inlineData());
      size_ = std::exchange(other.size_, 0);
      capacity_ = std::exchange(other.capacity_, inlineCapacity);
    }
  }

  Element* data_ = inlineData();
  std::size_t size_ = 0;
  std::size_t capacity_ = inlineCapacity;
  alignas(Element) std::byte inline_[inlineCapacity * sizeof(Element)];
};

} // namespace velmar
