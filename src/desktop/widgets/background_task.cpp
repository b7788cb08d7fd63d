#include "desktop/widgets/background_task.h"

#include <QMetaObject>

#include "desktop/widgets/soon.h"

namespace quillcast::desktop {

BackgroundTask::~BackgroundTask() { GiveUp(); }

void BackgroundTask::Start(Work work) {
  GiveUp();
  cancel_ = std::make_unique<platform::CancelToken>();
  thread_ = std::thread([this, work = std::move(work), number = number_] {
    auto done = work(*cancel_);
    QMetaObject::invokeMethod(this, [this, done = std::move(done), number] {
      Soon(this, [this, done, number] {  // what waits for a page may begin here
        if (number != number_) return;
        thread_.join();
        if (done) done();
      });
    });
  });
}

void BackgroundTask::Cancel() {
  if (!cancel_) return;
  cancel_->Request();
  cancel_->Request();  // also what is under way
}

void BackgroundTask::GiveUp() {
  ++number_;
  Cancel();
  if (thread_.joinable()) thread_.join();
}

}  // namespace quillcast::desktop
