// The dialog that prints a message file: its margins, its body in one of four forms, and a heading line.
#pragma once

#include <QDialog>
#include <functional>
#include <memory>
#include <optional>

#include "desktop/mail_file/print_message.h"
#include "profile/program.h"

class QCheckBox;
class QLineEdit;
class QPrinter;
class QPushButton;
class QRadioButton;
class QTimer;

namespace quillcast::desktop {

class BackgroundTask;
class CountBar;
class FormColumn;
class MessageFileField;
class ProgressPanel;
class StatusLine;
struct SharedCount;

class ExtraForm1 final : public QDialog {
  Q_OBJECT
 public:
  // `file` is named at first.
  ExtraForm1(const profile::Program& program, const std::filesystem::path& file, QWidget* parent);

  // Lets the person choose the printer; false for none. The desktop's dialog where nothing else is put here.
  std::function<bool(QPrinter& printer)> choose_printer;

 public slots:
  // What is under way is given up first; the dialog then stays.
  void reject() override;

 private:
  // What was read beside the window.
  struct Reading {
    std::string warning;  // of the load, to the letter
    std::optional<MessagePages> pages;
    std::optional<Error> error;
    std::vector<Sentence> wrong = {};  // with the file
    bool is_loaded = false;
  };
  using Use = void (ExtraForm1::*)(const std::shared_ptr<const MessagePages>& pages);

  void MakeWindow();
  void AddHeading(FormColumn* column);
  void EnableControls();
  mail_file::PrintForm Form() const;
  void Begin(Use use, std::size_t most);
  static Reading Read(const profile::Program& program, const mail_file::PrintForm& form, std::size_t most,
                      const platform::CancelToken& cancel);
  void Take(const std::shared_ptr<Reading>& reading, Use use);
  void Print(const std::shared_ptr<const MessagePages>& pages);
  std::optional<mail_file::PrintedMessage> LeftAlone(const QPrinter& printer, const MessagePages& pages) const;
  void ShowEnd(const mail_file::PrintedMessage& printed);
  void SayPrinted(const mail_file::PrintedMessage& printed);
  void ShowPages(const std::shared_ptr<const MessagePages>& pages);

  const profile::Program& program_;
  BackgroundTask* task_;
  QTimer* tick_;
  std::shared_ptr<SharedCount> seen_;
  QString into_;  // the printer's file; empty for paper
  MessageFileField* file_;
  QLineEdit* left_;
  QLineEdit* top_;
  QLineEdit* right_;
  std::vector<QRadioButton*> formats_;  // by BodyFormat
  QLineEdit* heading_;
  QCheckBox* center_;
  QCheckBox* bold_;
  QCheckBox* underline_;
  StatusLine* status_;
  QPushButton* preview_;
  QPushButton* print_;
  ProgressPanel* progress_;
  CountBar* bar_;
};

}  // namespace quillcast::desktop
