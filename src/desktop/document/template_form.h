// The dialog in which the template that takes the place of the message is chosen.
#pragma once

#include <QDialog>
#include <string>

#include "desktop/widgets/background_task.h"
#include "document/designs.h"
#include "profile/program.h"

class QLineEdit;
class QListWidget;
class QPushButton;
class QStackedWidget;
class QTimer;

namespace quillcast::desktop {

class EditorDocument;
class HtmlEditor;
class OwnTemplatesBox;
class StatusLine;

// One of the five designs, which are filled in, or one of the person's own. OK offers to save what was changed, and
// then puts the template in the place of the whole body; what was not saved becomes a draft that is offered.
class TemplateForm final : public QDialog {
  Q_OBJECT
 public:
  // `editor` is the one that holds the document.
  TemplateForm(const profile::Program& program, EditorDocument& document, HtmlEditor& editor, QWidget* parent);
  ~TemplateForm() override;

 public slots:
  void accept() override;

 signals:
  void Shown();  // the template that was chosen last, or what was typed last

 private:
  void BuildWindow();
  QWidget* MakeChoices();
  void ConnectControls();
  document::DesignChoice Choice() const;
  QString Name() const;  // of what is chosen; empty for nothing
  // The same with the designs' own examples where nothing is typed yet.
  document::DesignChoice ChoiceToShow() const;
  void ShowChoice();
  void ShowPreview();
  void Show(const QString& name, const Result<std::string>& html);
  QStringList Notes() const;
  void ShowNotes();
  void DropNotes();
  bool MayReplace();
  void Replace(const Result<std::string>& html);
  void SetBusy(bool busy);

  const profile::Program& program_;
  EditorDocument& document_;
  HtmlEditor* preview_;
  QStackedWidget* stack_;
  QListWidget* designs_;
  OwnTemplatesBox* own_;
  QLineEdit* company_ = nullptr;
  QLineEdit* web_site_ = nullptr;
  QLineEdit* address_ = nullptr;
  QLineEdit* subject_ = nullptr;
  StatusLine* notes_;
  StatusLine* status_;
  QPushButton* ok_ = nullptr;
  QTimer* pause_;
  QStringList told_;  // the notes
  QString shown_;     // the name of what the preview shows
  BackgroundTask task_{this};
};

}  // namespace quillcast::desktop
