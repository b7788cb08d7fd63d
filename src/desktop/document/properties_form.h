// The dialog that reports the facts about the document, and what would hurt a mailing of it.
#pragma once

#include <QDialog>
#include <filesystem>
#include <vector>

#include "desktop/widgets/background_task.h"
#include "document/document_look.h"
#include "document/message_document.h"
#include "document/message_properties.h"

class QLabel;
class QTabWidget;

namespace quillcast::desktop {

class RowList;
class StatusLine;

// Looks beside the window; there is nothing to change in it.
class PropertiesForm final : public QDialog {
  Q_OBJECT
 public:
  // `file` is empty for a document that was never saved; `has_text_part`: whether one goes out beside the HTML.
  PropertiesForm(document::MessageDocument document, std::filesystem::path file, bool has_text_part, QWidget* parent);

 signals:
  void Known();  // everything stands there

 private:
  void BuildWindow();
  RowList* AddList(const char* name, const QString& title, std::vector<QString>& rows);
  void LookAt(document::MessageDocument document, std::filesystem::path file, bool has_text_part);
  void Show(const document::MessageProperties& properties);
  void Show(const Result<document::DocumentLook>& look);

  std::vector<QLabel*> labels_;  // in the order of their rows
  QTabWidget* tabs_;
  std::vector<QString> findings_;
  std::vector<QString> links_;
  std::vector<QString> pictures_;
  RowList* finding_list_ = nullptr;
  RowList* link_list_ = nullptr;
  RowList* picture_list_ = nullptr;
  StatusLine* status_;
  BackgroundTask task_{this};
};

}  // namespace quillcast::desktop
