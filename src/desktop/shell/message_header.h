// The upper part of the main window: who sends, to whom, what about, with which files and how.
#pragma once

#include <QWidget>

#include "document/drafts.h"
#include "document/message_document.h"
#include "profile/program.h"

class QCheckBox;
class QComboBox;

namespace quillcast::desktop {

class AttachmentsField;
class GroupField;
class SubjectField;

class MessageHeader final : public QWidget {
  Q_OBJECT
 public:
  MessageHeader(const profile::Program& program, QWidget* parent);

  // From, method, priority and format as at the start; failures are told by Trouble.
  void Load();
  // The To box anew, with `chosen` in it, or what was chosen before when that is empty.
  void LoadGroups(const QString& chosen = {});
  void ChooseNoGroup();
  // The same beside the window, where the store holds other groups, or others in them, than are shown.
  void Refresh();
  void ShowSender(const QString& from);
  void ShowSender(const QString& from, const QString& method);
  QString Group() const;
  bool HasGroups() const;
  QString Priority() const;  // "Normal"
  void SetSubject(const QString& subject);
  // Without a question, as a draft that is taken up does.
  void SetFormat(document::Format format);
  // Subject, format, attachments, priority and receipt into the document.
  void Collect(document::MessageDocument& document) const;
  // The same with group and method; the body and its file are the caller's.
  void Collect(document::Draft& draft) const;
  void Show(const document::Draft& draft);
  // As for a new message.
  void Clear();

  void AddAttachments();
  void AddAttachments(const QStringList& files);
  void DeleteAttachment();

 signals:
  void Trouble(const QString& sentence);
  void Said(const QString& sentence);
  void Changed();  // something that a draft keeps

 protected:
  void dragEnterEvent(QDragEnterEvent* event) override;
  void dropEvent(QDropEvent* event) override;

 private:
  void FillBoxes();
  void LayOut();
  QWidget* MakeOptions();
  void ConnectParts();
  void PickMethod();
  void PickFormat();

  const profile::Program& program_;
  QComboBox* from_;
  GroupField* group_;
  SubjectField* subject_;
  AttachmentsField* attachments_;
  QComboBox* method_;
  QComboBox* priority_;
  QComboBox* format_;
  QCheckBox* receipt_;
};

}  // namespace quillcast::desktop
