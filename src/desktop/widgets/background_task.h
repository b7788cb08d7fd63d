// Work beside a window, which stays alive meanwhile.
#pragma once

#include <QObject>
#include <functional>
#include <memory>
#include <thread>

#include "platform/cancel.h"

namespace quillcast::desktop {

// How often a window looks at how far work has come, in milliseconds.
inline constexpr int kTick = 100;

// One piece of work at a time.
class BackgroundTask final : public QObject {
 public:
  // Runs on a thread of its own; what it returns is called on the window's thread when it is done. A window that is
  // closed waits for it only after its own members are gone, so what it works on it has with it.
  using Work = std::function<std::function<void()>(const platform::CancelToken&)>;

  explicit BackgroundTask(QObject* parent) : QObject(parent) {}
  ~BackgroundTask() override;

  // Work that is still under way is given up first.
  void Start(Work work);
  // Asks it to give up; what it returns is called all the same.
  void Cancel();
  // Cancels it and waits for it; what it returns is dropped.
  void GiveUp();
  bool is_running() const { return thread_.joinable(); }

 private:
  std::unique_ptr<platform::CancelToken> cancel_;
  std::thread thread_;
  int number_ = 0;  // of the work whose end counts
};

}  // namespace quillcast::desktop
