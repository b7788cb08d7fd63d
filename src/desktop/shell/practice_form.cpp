#include "desktop/shell/practice_form.h"

#include <QFontDatabase>
#include <QPlainTextEdit>
#include <QSplitter>

#include "account/practice.h"
#include "desktop/widgets/form_column.h"
#include "desktop/widgets/qt_text.h"
#include "desktop/widgets/row_list.h"
#include "mime/read_header.h"
#include "platform/file.h"
#include "platform/text.h"

namespace quillcast::desktop {
namespace {

namespace fs = std::filesystem;

constexpr std::size_t kMostShown = 2000;                    // messages, the last ones
constexpr std::size_t kMostRead = std::size_t{256} * 1024;  // bytes of one

constexpr std::size_t kMostHead = std::size_t{16} * 1024;  // bytes of one, for its line in the list

enum Column : int { kTo, kSubject };

std::string Beginning(const fs::path& file, std::size_t most) {
  const auto fd = platform::OpenForReading(file);
  if (!fd) return InOneLine(fd.error());
  std::string text(most, '\0');
  const auto got = platform::ReadSome(fd->get(), file, text.data(), text.size());
  if (!got) return InOneLine(got.error());
  text.resize(*got);
  return text;
}

}  // namespace

PracticeForm::PracticeForm(fs::path folder, QWidget* parent)
    : QDialog(parent),
      folder_(std::move(folder)),
      list_(new RowList(
          "PracticeList", tr("Messages"), {{tr("To"), 24}, {tr("Subject")}},
          [this](std::size_t row, int column) { return TextOf(row, column); }, this)),
      message_(new QPlainTextEdit(this)) {
  setObjectName("PracticeForm");
  setWindowTitle(tr("Practice Mailbox"));
  resize(860, 520);
  list_->SetEmptyText(tr("No message has arrived yet. Send one from the main window."));
  message_->setObjectName("PracticeMessage");
  message_->setAccessibleName(tr("The message as it arrived"));
  message_->setReadOnly(true);
  message_->setTabChangesFocus(true);
  message_->setLayoutDirection(Qt::LeftToRight);
  message_->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
  message_->setPlaceholderText(tr("Messages that you send while you practise arrive here."));
  auto* parts = new QSplitter(this);
  parts->addWidget(list_);
  parts->addWidget(message_);
  parts->setSizes({340, 500});
  parts->setStretchFactor(0, 2);
  parts->setStretchFactor(1, 3);
  auto* column = new FormColumn(this);
  column->Add(parts, 1);
  column->AddButtons(QDialogButtonBox::Close);
  connect(list_, &RowList::ChosenChanged, this, &PracticeForm::ShowMessage);
  Fill();
  list_->setFocus();
}

void PracticeForm::Fill() {
  files_ = account::PracticeMessages(folder_);
  if (files_.size() > kMostShown) files_.resize(kMostShown);
  heads_.assign(files_.size(), {});
  list_->Reset(files_.size());
  if (!files_.empty()) list_->Choose(0);
}

// Read when its line comes to the screen.
QString PracticeForm::TextOf(std::size_t row, int column) const {
  auto& head = heads_[row];
  if (!head) {
    const std::string text = Beginning(folder_ / files_[row], kMostHead);
    head = Head{ToQt(platform::Printable(mime::ReadHeader(text, "To"))),
                ToQt(platform::Printable(mime::ReadHeader(text, "Subject")))};
  }
  return column == kTo ? head->to : head->subject;
}

void PracticeForm::ShowMessage() {
  const auto chosen = list_->Chosen();
  if (!chosen.empty()) message_->setPlainText(ToQt(Beginning(folder_ / files_[chosen.front()], kMostRead)));
}

}  // namespace quillcast::desktop
