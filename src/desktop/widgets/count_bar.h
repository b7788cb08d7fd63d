// A bar that fills while something is counted.
#pragma once

#include <QProgressBar>
#include <atomic>
#include <cstdint>

namespace quillcast::desktop {

// How far work on another thread is, in whatever it counts: that thread writes it, and the window reads it now and
// then.
struct SharedCount {
  std::atomic<std::uint64_t> done = 0;
  std::atomic<std::uint64_t> total = 0;
};

// Its text can be read on the full part and on the empty one, in light and dark, from left to right and from right to
// left; the style's own cannot.
class CountBar final : public QProgressBar {
  Q_OBJECT
 public:
  CountBar(const char* name, QWidget* parent);

  // Any size. The text is the format's, or the percentage. Nothing is done while `total` is 0.
  void Count(std::uint64_t done, std::uint64_t total);
  void Count(const SharedCount& count) { Count(count.done, count.total); }

 protected:
  void paintEvent(QPaintEvent* event) override;
};

}  // namespace quillcast::desktop
