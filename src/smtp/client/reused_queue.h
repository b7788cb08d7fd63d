// A queue that keeps the objects that have left it and gives them out again, so that a text in them is not allocated
// anew for every message.
#pragma once

#include <cstddef>
#include <utility>
#include <vector>

namespace quillcast::smtp {

template <typename T>
class ReusedQueue {
 public:
  bool empty() const { return count_ == 0; }
  std::size_t size() const { return count_; }
  T& operator[](std::size_t index) { return slots_[(first_ + index) % slots_.size()]; }
  const T& operator[](std::size_t index) const { return slots_[(first_ + index) % slots_.size()]; }
  T& front() { return (*this)[0]; }
  const T& front() const { return (*this)[0]; }
  T& back() { return (*this)[count_ - 1]; }
  const T& back() const { return (*this)[count_ - 1]; }

  // A new last element, in the state in which an earlier one was left: the caller sets every member. References to
  // others may become invalid.
  T& Push() {
    if (count_ == slots_.size()) Grow();
    ++count_;
    return back();
  }
  // The first leaves; a reference to it stays valid until the next Push.
  void Pop() {
    first_ = (first_ + 1) % slots_.size();
    --count_;
  }

 private:
  void Grow() {
    std::vector<T> larger(slots_.empty() ? 4 : slots_.size() * 2);
    for (std::size_t n = 0; n < count_; ++n) larger[n] = std::move((*this)[n]);
    slots_ = std::move(larger);
    first_ = 0;
  }

  std::vector<T> slots_;
  std::size_t first_ = 0;
  std::size_t count_ = 0;
};

}  // namespace quillcast::smtp
