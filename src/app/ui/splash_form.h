// The window that is shown while the program starts.
#pragma once

#include <QWidget>
#include <string_view>

class QProgressBar;

namespace quillcast::app {

class SplashForm final : public QWidget {
  Q_OBJECT
 public:
  explicit SplashForm(std::string_view windows_name);
  // Shows it without waiting, and steps its progress from 1 to 500.
  void Run();

 private:
  QProgressBar* progress_;
};

}  // namespace quillcast::app
