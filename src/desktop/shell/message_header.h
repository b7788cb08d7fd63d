// The upper part of the main window: who sends, to whom, what about, with which files and how.
#pragma once

#include <QWidget>
#include <cstdint>
#include <string>
#include <vector>

#include "desktop/widgets/background_task.h"
#include "document/attachment_list.h"
#include "document/drafts.h"
#include "document/message_document.h"
#include "profile/program.h"

class QCheckBox;
class QComboBox;
class QLabel;
class QLineEdit;
class QMenu;
class QPushButton;

namespace quillcast::desktop {

class MessageHeader final : public QWidget {
  Q_OBJECT
 public:
  MessageHeader(const profile::Program& program, QWidget* parent);

  // From, method, priority and format as at the start; failures are told by Trouble.
  void Load();
  // The To box anew, with `chosen` in it, or what was chosen before when that is empty.
  void LoadGroups(const QString& chosen = {});
  // The same beside the window, where the store holds other groups, or others in them, than are shown.
  void Refresh();
  void ShowSender(const QString& from, const QString& method);
  QString Group() const;
  bool HasGroups() const;
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
  void ChangeAttachments();

 signals:
  void Trouble(const QString& sentence);
  void Said(const QString& sentence);
  void Changed();  // something that a draft keeps

 protected:
  void dragEnterEvent(QDragEnterEvent* event) override;
  void dropEvent(QDropEvent* event) override;

 private:
  QMenu* MakeTagMenu();
  void ShowSubjectMenu(const QPoint& at);
  void PickMethod();
  void ShowAttachments();
  void PickFormat();
  void ShowCount();
  void ShowGroups(const std::vector<std::string>& names, const QString& chosen);
  void ShowTotal(std::int64_t recipients);
  void LoadGroupsAgain(const QString& why);

  const profile::Program& program_;
  bool loads_again_ = false;
  QString wanted_;  // the group to choose once the groups could be read
  document::AttachmentList attachments_;
  BackgroundTask* refresh_;
  int loads_ = 0;  // of the To box; what was read before the last one is old
  QComboBox* from_;
  QComboBox* to_;
  QLabel* count_;
  QLineEdit* subject_;
  QMenu* tags_ = nullptr;  // for the subject
  QComboBox* attachment_box_;
  QPushButton* attachment_count_;
  QComboBox* method_;
  QComboBox* priority_;
  QComboBox* format_;
  QCheckBox* receipt_;
};

}  // namespace quillcast::desktop
