#include "desktop/shell/practice_form.h"

#include <QDialogButtonBox>
#include <QFontDatabase>
#include <QListWidget>
#include <QPlainTextEdit>
#include <QSplitter>
#include <QVBoxLayout>
#include <string>
#include <vector>

#include "account/practice.h"
#include "desktop/widgets/first_key.h"
#include "desktop/widgets/qt_text.h"
#include "platform/file.h"

namespace quillcast::desktop {
namespace {

namespace fs = std::filesystem;

constexpr std::size_t kMostShown = 2000;                    // messages, the last ones
constexpr std::size_t kMostRead = std::size_t{256} * 1024;  // bytes of one

std::string Beginning(const fs::path& file) {
  const auto fd = platform::OpenForReading(file);
  if (!fd) return InOneLine(fd.error());
  std::string text(kMostRead, '\0');
  const auto got = platform::ReadSome(fd->get(), file, text.data(), text.size());
  if (!got) return InOneLine(got.error());
  text.resize(*got);
  return text;
}

}  // namespace

PracticeForm::PracticeForm(fs::path folder, QWidget* parent)
    : QDialog(parent), folder_(std::move(folder)), list_(new QListWidget(this)), message_(new QPlainTextEdit(this)) {
  setObjectName("PracticeForm");
  setWindowTitle(tr("Practice Mailbox"));
  resize(800, 520);
  list_->setObjectName("PracticeList");
  list_->setAccessibleName(tr("Messages"));
  new FirstKey(list_);
  message_->setObjectName("PracticeMessage");
  message_->setAccessibleName(tr("The message as it arrived"));
  message_->setReadOnly(true);
  message_->setTabChangesFocus(true);
  message_->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
  message_->setPlaceholderText(tr("Messages that you send while you practise arrive here."));
  auto* parts = new QSplitter(this);
  parts->addWidget(list_);
  parts->addWidget(message_);
  parts->setStretchFactor(1, 3);
  auto* buttons = new QDialogButtonBox(QDialogButtonBox::Close, this);
  auto* column = new QVBoxLayout(this);
  column->addWidget(parts, 1);
  column->addWidget(buttons);
  connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
  connect(list_, &QListWidget::currentRowChanged, this, &PracticeForm::ShowMessage);
  Fill();
}

void PracticeForm::Fill() {
  std::vector<std::string> files = account::PracticeMessages(folder_);
  if (files.size() > kMostShown) files.resize(kMostShown);
  for (const auto& file : files) list_->addItem(ToQt(file));
  list_->setCurrentRow(files.empty() ? -1 : 0);
}

void PracticeForm::ShowMessage() {
  if (list_->currentItem() == nullptr) return;
  message_->setPlainText(ToQt(Beginning(folder_ / PathFromQt(list_->currentItem()->text()))));
}

}  // namespace quillcast::desktop
