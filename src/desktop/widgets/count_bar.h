// A bar that fills while something is counted.
#pragma once

#include <QProgressBar>
#include <cstdint>

namespace quillcast::desktop {

// Its text can be read on the full part and on the empty one, in light and dark, from left to right and from right to
// left; the style's own cannot.
class CountBar final : public QProgressBar {
  Q_OBJECT
 public:
  CountBar(const char* name, QWidget* parent);

  // Any size. The text is the format's, or the percentage. Nothing is done while `total` is 0.
  void Count(std::uint64_t done, std::uint64_t total);

 protected:
  void paintEvent(QPaintEvent* event) override;
};

}  // namespace quillcast::desktop
