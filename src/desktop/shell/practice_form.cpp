#include "desktop/shell/practice_form.h"

#include <QLabel>
#include <QLineEdit>
#include <QSplitter>
#include <QVBoxLayout>

#include "account/practice.h"
#include "desktop/mail_file/message_view.h"
#include "desktop/widgets/form_column.h"
#include "desktop/widgets/qt_text.h"
#include "desktop/widgets/row_list.h"
#include "mime/read_header.h"
#include "platform/file.h"
#include "platform/text.h"

namespace quillcast::desktop {
namespace {

namespace fs = std::filesystem;

constexpr std::size_t kMostShown = 2000;                   // messages, the last ones
constexpr std::size_t kMostHead = std::size_t{16} * 1024;  // bytes of one, for its line in the list

enum Column : int { kTo, kSubject };

std::string BeginningOf(const fs::path& file) {
  const auto fd = platform::OpenForReading(file);
  if (!fd) return InOneLine(fd.error());
  std::string text(kMostHead, '\0');
  const auto got = platform::ReadSome(fd->get(), file, text.data(), text.size());
  if (!got) return InOneLine(got.error());
  text.resize(*got);
  return text;
}

}  // namespace

PracticeForm::PracticeForm(const profile::SettingsStore& settings, fs::path folder, QWidget* parent)
    : QDialog(parent),
      folder_(std::move(folder)),
      filter_(new QLineEdit(this)),
      list_(new RowList(
          "PracticeList", tr("Messages"), {{tr("To"), 24}, {tr("Subject")}},
          [this](std::size_t row, int column) {
            const Head& head = HeadOf(listed_[row]);
            return column == kTo ? head.to : head.subject;
          },
          this)),
      message_(new MessageView(settings, this)),
      others_(new QLabel(this)) {
  BuildWindow();
  connect(filter_, &QLineEdit::textChanged, this, &PracticeForm::Filter);
  connect(list_, &RowList::ChosenChanged, this, &PracticeForm::ShowMessage);
  ReadFolder();
  list_->setFocus();
}

void PracticeForm::BuildWindow() {
  setObjectName("PracticeForm");
  setWindowTitle(tr("Practice Mailbox"));
  resize(980, 600);
  filter_->setObjectName("FilterTextBox");
  filter_->setPlaceholderText(tr("Recipient or subject"));
  filter_->setAccessibleName(tr("Show those whose recipient or subject holds this text"));
  filter_->setClearButtonEnabled(true);
  others_->setWordWrap(true);
  auto* left = new QWidget(this);
  auto* lines = new QVBoxLayout(left);
  lines->setContentsMargins(0, 0, 0, 0);
  lines->addWidget(filter_);
  lines->addWidget(list_, 1);
  lines->addWidget(others_);
  auto* parts = new QSplitter(this);
  parts->addWidget(left);
  parts->addWidget(message_);
  parts->setSizes({360, 600});
  parts->setStretchFactor(0, 2);
  parts->setStretchFactor(1, 3);
  auto* column = new FormColumn(this);
  column->Add(parts, 1);
  column->AddButtons(QDialogButtonBox::Close);
}

void PracticeForm::ReadFolder() {
  files_ = account::PracticeMessages(folder_);
  others_->setVisible(files_.size() > kMostShown);
  others_->setText(tr("The last %1 of %2 messages. The others are files in %3.")
                       .arg(ToQt(platform::WithThousands(kMostShown)),
                            ToQt(platform::WithThousands(static_cast<std::int64_t>(files_.size()))),
                            PathToQt(folder_)));
  if (files_.size() > kMostShown) files_.resize(kMostShown);
  heads_.assign(files_.size(), {});
  Filter();
}

void PracticeForm::Filter() {
  const QString wanted = filter_->text();
  listed_.clear();
  for (std::size_t file = 0; file < files_.size(); ++file) {
    if (wanted.isEmpty() || HeadOf(file).to.contains(wanted, Qt::CaseInsensitive) ||
        HeadOf(file).subject.contains(wanted, Qt::CaseInsensitive))
      listed_.push_back(file);
  }
  list_->SetEmptyText(files_.empty() ? tr("No message has arrived yet. Send one from the main window.")
                                     : tr("No message has this in its recipient or subject."));
  list_->Reset(listed_.size());
  if (listed_.empty()) {
    message_->ShowNothing(files_.empty() ? tr("Messages that you send while you practise arrive here.") : QString());
  } else {
    list_->Choose(0);
  }
}

// Read when its line comes to the screen, or is looked through.
const PracticeForm::Head& PracticeForm::HeadOf(std::size_t file) const {
  auto& head = heads_[file];
  if (!head) {
    const std::string text = BeginningOf(folder_ / files_[file]);
    head = Head{ToQt(platform::Printable(mime::ReadHeader(text, "To"))),
                ToQt(platform::Printable(mime::ReadHeader(text, "Subject")))};
  }
  return *head;
}

void PracticeForm::ShowMessage() {
  const auto chosen = list_->Chosen();
  if (!chosen.empty()) message_->Show(folder_ / files_[listed_[chosen.front()]]);
}

}  // namespace quillcast::desktop
