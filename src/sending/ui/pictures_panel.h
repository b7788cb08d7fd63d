// Asks about pictures that a message names outside the document's folder; hidden where there are none.
#pragma once

#include <QFrame>
#include <functional>
#include <memory>
#include <optional>

#include "app/settings_store.h"
#include "compose/message_document.h"
#include "platform/result.h"
#include "sending/related_pictures.h"

class QLabel;
class QPushButton;

namespace quillcast::platform {
class BackgroundTask;
}

namespace quillcast::sending {

class PicturesPanel final : public QFrame {
  Q_OBJECT
 public:
  explicit PicturesPanel(const app::SettingsStore& settings, QWidget* parent);

  // Looks beside the window, then emits Known.
  void LookAt(compose::MessageDocument document);
  // Whether nothing is left to be asked; false until that is known.
  bool is_settled() const { return settled_; }

 signals:
  void Known(bool settled);
  // The person answered: where the document's pictures may come from now. The panel looks again by itself.
  void Answered(const quillcast::compose::PicturePlaces& places);

 private:
  void Show(const Result<RelatedPictures>& pictures);
  void Answer(bool take);

  const app::SettingsStore& settings_;
  platform::BackgroundTask* task_;
  compose::MessageDocument document_;
  std::vector<std::filesystem::path> asked_;
  bool settled_ = false;
  QLabel* text_;
  QPushButton* take_;
  QPushButton* leave_;
};

}  // namespace quillcast::sending
