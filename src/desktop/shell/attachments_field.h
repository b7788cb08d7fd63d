// The attachments: the box that shows them one at a time, and the button that shows how many there are.
#pragma once

#include <QWidget>

#include "document/attachment_list.h"
#include "platform/prompts.h"

class QComboBox;
class QPushButton;

namespace quillcast::desktop {

class AttachmentsField final : public QWidget {
  Q_OBJECT
 public:
  AttachmentsField(platform::Prompts& prompts, QWidget* parent);

  const document::AttachmentList& List() const { return list_; }
  void SetList(const document::AttachmentList& list);

  // Asks for files, and adds those that are not there yet.
  void Add();
  void Add(const QStringList& files);
  // The one that is shown, after a question.
  void Delete();
  // Opens the window that shows all of them.
  void Change();

 signals:
  void Changed();

 private:
  platform::Prompts& prompts_;
  document::AttachmentList list_;
  QComboBox* box_;
  QPushButton* total_;
};

}  // namespace quillcast::desktop
