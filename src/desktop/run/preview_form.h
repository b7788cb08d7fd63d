// The preview inside the program: the message as any recipient will see it, and what may be wrong.
#pragma once

#include <QDialog>
#include <QUrl>

#include "desktop/widgets/background_task.h"
#include "document/message_document.h"
#include "profile/program.h"
#include "run/prepared_run.h"

class QButtonGroup;
class QLabel;
class QPlainTextEdit;
class QPushButton;
class QSpinBox;
class QTabWidget;
class QTimer;

namespace quillcast::desktop {

class HtmlEditor;
class NotesPanel;
class PicturesPanel;
class StatusLine;

// The pictures from other folders that the document names can be answered for here too.
class PreviewForm final : public QDialog {
  Q_OBJECT
 public:
  PreviewForm(const profile::Program& program, document::MessageDocument document, run::ChosenGroup group, QUrl base,
              QWidget* parent);

  // With what the person answered about pictures.
  const document::PicturePlaces& picture_places() const { return document_.picture_places; }

 private:
  void SetUpControls();
  QWidget* MakeTabs();
  void BuildWindow();
  void TakeAnswer(const std::vector<std::filesystem::path>& files, bool take);
  void ShowRecipient();
  void Put(const Result<run::RecipientView>& view);
  void SendToMyself();
  void OfferToSend(bool settled);
  void SetWidth(bool phone);

  const profile::Program& program_;
  document::MessageDocument document_;
  run::ChosenGroup group_;
  QUrl base_;
  BackgroundTask* view_task_;
  BackgroundTask* send_task_;
  QTimer* pause_;
  QSpinBox* position_;
  QLabel* whom_;
  QLabel* subject_;
  HtmlEditor* page_;
  QPlainTextEdit* text_;
  QTabWidget* tabs_;
  NotesPanel* notes_;
  PicturesPanel* pictures_;
  QPushButton* send_;
  StatusLine* status_;
};

}  // namespace quillcast::desktop
