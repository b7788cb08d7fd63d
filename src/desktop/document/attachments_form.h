// All files that go with the message, of which several can be taken out at once.
#pragma once

#include <QDialog>

#include "document/attachment_list.h"

class QPushButton;

namespace quillcast::desktop {

class RowList;
class StatusLine;

// "3 files, 1.2 MiB", and how many of them are not there.
QString InWords(const document::AttachmentTotal& total);

// Works on a copy; after OK the caller takes what remains.
class AttachmentsForm final : public QDialog {
  Q_OBJECT
 public:
  AttachmentsForm(const document::AttachmentList& attachments, QWidget* parent);

  const document::AttachmentList& Remaining() const { return remaining_; }

 private:
  void RemoveSelected();
  void ShowFiles();

  document::AttachmentList remaining_;
  RowList* list_;
  StatusLine* total_;
  QPushButton* remove_;
};

}  // namespace quillcast::desktop
