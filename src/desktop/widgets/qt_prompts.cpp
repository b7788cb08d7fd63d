#include "desktop/widgets/qt_prompts.h"

#include <QApplication>
#include <QFileDialog>
#include <QMessageBox>

#include "desktop/widgets/qt_text.h"

namespace quillcast::desktop {
namespace {

// Texts are shown as they are: what stands in them is never markup.
QMessageBox::StandardButton Show(const QString& title, QMessageBox::Icon icon, std::string_view text,
                                 QMessageBox::StandardButtons buttons, QMessageBox::StandardButton preferred) {
  QMessageBox box(icon, title, Translated(text).replace("\r\n", "\n"), buttons, QApplication::activeWindow());
  box.setTextFormat(Qt::PlainText);
  box.setDefaultButton(preferred);
  return static_cast<QMessageBox::StandardButton>(box.exec());
}

// What a name without one gets: "html" for "HTML Files (*.html *.htm)", nothing for all files.
QString SuffixOf(const QString& filter) {
  const QString pattern = filter.section('(', -1).section(' ', 0, 0).remove(')');
  return pattern.startsWith("*.") ? pattern.mid(2) : QString();
}

platform::Answer AnswerOf(QMessageBox::StandardButton button) {
  if (button == QMessageBox::Yes) return platform::Answer::kYes;
  return button == QMessageBox::No ? platform::Answer::kNo : platform::Answer::kCancel;
}

}  // namespace

QString FileDialogFilter(std::string_view filter) {
  const QStringList parts = ToQt(filter).split('|');
  QStringList rows;
  for (qsizetype i = 0; i + 1 < parts.size(); i += 2) {
    QString patterns = parts[i + 1];
    patterns.replace("*.*", "*").replace(';', ' ');
    rows << parts[i].section('(', 0, 0).trimmed() + " (" + patterns + ')';
  }
  return rows.join(";;");
}

void WithdrawQuestion() {
  if (auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget())) box->done(QMessageBox::No);
}

void QtPrompts::Warn(std::string_view text) {
  Show(title_, QMessageBox::Warning, text, QMessageBox::Ok, QMessageBox::Ok);
}

void QtPrompts::Inform(std::string_view text) {
  Show(title_, QMessageBox::Information, text, QMessageBox::Ok, QMessageBox::Ok);
}

void QtPrompts::Critical(std::string_view text) {
  Show(title_, QMessageBox::Critical, text, QMessageBox::Ok, QMessageBox::Ok);
}

// Return alone must not confirm what cannot be taken back.
platform::Answer QtPrompts::Ask(std::string_view text) {
  const auto pressed = Show(title_, QMessageBox::Question, text, QMessageBox::Yes | QMessageBox::No, QMessageBox::No);
  return pressed == QMessageBox::Yes ? platform::Answer::kYes : platform::Answer::kNo;
}

platform::Answer QtPrompts::AskOrCancel(std::string_view text) {
  return AnswerOf(Show(title_, QMessageBox::Question, text, QMessageBox::Yes | QMessageBox::No | QMessageBox::Cancel,
                       QMessageBox::Yes));
}

bool QtPrompts::Consent(std::string_view text) {
  return Show(title_, QMessageBox::Question, text, QMessageBox::Ok | QMessageBox::Cancel, QMessageBox::Cancel) ==
         QMessageBox::Ok;
}

std::vector<std::filesystem::path> QtPrompts::PickOpenFile(const platform::FileQuestion& question) {
  std::vector<std::filesystem::path> files;
  QWidget* parent = QApplication::activeWindow();
  const QString title = Translated(question.title);
  const QString filter = FileDialogFilter(question.filter);
  if (question.several) {
    for (const QString& file : QFileDialog::getOpenFileNames(parent, title, {}, filter)) {
      files.push_back(PathFromQt(file));
    }
    return files;
  }
  const QString file = QFileDialog::getOpenFileName(parent, title, {}, filter);
  if (!file.isEmpty()) files.push_back(PathFromQt(file));
  return files;
}

std::filesystem::path QtPrompts::PickSaveFile(const platform::FileQuestion& question) {
  QFileDialog dialog(QApplication::activeWindow(), Translated(question.title));
  dialog.setAcceptMode(QFileDialog::AcceptSave);
  dialog.setOption(QFileDialog::DontConfirmOverwrite, !question.ask_before_overwriting);
  dialog.setNameFilters(FileDialogFilter(question.filter).split(";;"));
  const auto take_suffix = [&dialog](const QString& filter) { dialog.setDefaultSuffix(SuffixOf(filter)); };
  take_suffix(dialog.selectedNameFilter());
  QObject::connect(&dialog, &QFileDialog::filterSelected, &dialog, take_suffix);
  if (!question.name.empty()) dialog.selectFile(ToQt(question.name));
  if (dialog.exec() != QDialog::Accepted) return {};
  return PathFromQt(dialog.selectedFiles().value(0));
}

std::filesystem::path QtPrompts::PickFolder(std::string_view title) {
  return PathFromQt(QFileDialog::getExistingDirectory(QApplication::activeWindow(), Translated(title)));
}

}  // namespace quillcast::desktop
