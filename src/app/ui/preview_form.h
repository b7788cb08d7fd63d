// The preview inside the program: the message as any recipient will see it, and what may be wrong.
#pragma once

#include <QDialog>
#include <QUrl>

#include "app/program.h"
#include "compose/message_document.h"
#include "platform/ui/background_task.h"
#include "sending/preview_look.h"

class QButtonGroup;
class QLabel;
class QListWidget;
class QPlainTextEdit;
class QPushButton;
class QSpinBox;
class QTimer;

namespace quillcast::compose {
class HtmlEditor;
}
namespace quillcast::sending {
class PicturesPanel;
}

namespace quillcast::app {

// The pictures from other folders that the document names can be answered for here too.
class PreviewForm final : public QDialog {
  Q_OBJECT
 public:
  PreviewForm(const Program& program, compose::MessageDocument document, recipients::RecipientGroup group,
              std::int64_t recipients, QUrl base, QWidget* parent);

  // With what the person answered about pictures.
  const compose::PicturePlaces& picture_places() const { return document_.picture_places; }

 private:
  void BuildWindow();
  void LookOver();
  void TakeAnswer(const std::vector<std::filesystem::path>& files, bool take);
  void ShowRecipient();
  void Put(const Result<sending::RecipientView>& view);
  void SendToMyself();
  void SetWidth(bool phone);

  const Program& program_;
  compose::MessageDocument document_;
  recipients::RecipientGroup group_;
  std::int64_t recipients_;
  QUrl base_;
  platform::BackgroundTask* view_task_;
  platform::BackgroundTask* look_task_;
  platform::BackgroundTask* send_task_;
  QTimer* pause_;
  QSpinBox* position_;
  QLabel* whom_;
  QLabel* subject_;
  compose::HtmlEditor* page_;
  QPlainTextEdit* text_;
  QListWidget* findings_;
  sending::PicturesPanel* pictures_;
  QPushButton* send_;
  QLabel* status_;
};

}  // namespace quillcast::app
