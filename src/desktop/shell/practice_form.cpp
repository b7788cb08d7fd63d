#include "desktop/shell/practice_form.h"

#include <QSplitter>
#include <QVBoxLayout>
#include <algorithm>
#include <numeric>
#include <utility>

#include "account/practice.h"
#include "desktop/mail_file/message_view.h"
#include "desktop/widgets/background_task.h"
#include "desktop/widgets/filter_box.h"
#include "desktop/widgets/form_column.h"
#include "desktop/widgets/qt_text.h"
#include "desktop/widgets/row_list.h"
#include "desktop/widgets/status_line.h"
#include "mime/read_header.h"
#include "platform/file.h"
#include "platform/text.h"

namespace quillcast::desktop {
namespace {

namespace fs = std::filesystem;

constexpr std::size_t kMostHead = std::size_t{16} * 1024;  // bytes of a message, for its line in the list
constexpr int kSplitterGap = 12;                           // pixels between the list and the message

enum Column : int { kTo, kSubject };

// Without case and accents, for comparing.
QString Folded(const QString& text) {
  QString folded = text.normalized(QString::NormalizationForm_KD);
  erase_if(folded, [](QChar c) { return c.isMark(); });
  return folded.toCaseFolded();
}

bool HoldsAll(const QString& text, const QStringList& words) {
  const QString folded = Folded(text);
  return std::ranges::all_of(words, [&](const QString& word) { return folded.contains(word); });
}

Result<std::string> BeginningOf(const fs::path& file) {
  const auto fd = platform::OpenForReading(file);
  if (!fd) return fd.error();
  std::string text(kMostHead, '\0');
  const auto got = platform::ReadSome(fd->get(), file, text.data(), text.size());
  if (!got) return got.error();
  text.resize(*got);
  return text;
}

}  // namespace

PracticeForm::PracticeForm(const profile::SettingsStore& settings, fs::path folder, MessageTools tools, QWidget* parent)
    : QDialog(parent),
      folder_(std::move(folder)),
      task_(new BackgroundTask(this)),
      filter_(new FilterBox("FilterTextBox", tr("Show those whose recipient and subject hold these words"),
                            tr("Words of recipient or subject"), this)),
      list_(new RowList(
          "PracticeList", tr("Messages"), {{tr("To"), 24}, {tr("Subject")}},
          [this](std::size_t row, int column) {
            const Head& head = HeadOf(listed_[row]);
            return column == kTo ? head.to : head.subject;
          },
          this)),
      message_(new MessageView(settings, this)),
      status_(new StatusLine(this)) {
  BuildWindow(std::move(tools));
  connect(filter_, &QLineEdit::textChanged, this, &PracticeForm::Filter);
  connect(list_, &RowList::ChosenChanged, this, &PracticeForm::ShowMessage);
  ReadFolder();
  list_->setFocus();
}

void PracticeForm::BuildWindow(MessageTools tools) {
  setObjectName("PracticeForm");
  setWindowTitle(tr("Practice Mailbox"));
  resize(980, 600);
  auto* left = new QWidget(this);
  auto* lines = new QVBoxLayout(left);
  lines->setContentsMargins(0, 0, 0, 0);
  lines->addWidget(filter_);
  lines->addWidget(list_, 1);
  lines->addWidget(status_);
  auto* parts = new QSplitter(this);
  parts->setHandleWidth(kSplitterGap);
  parts->addWidget(left);
  parts->addWidget(message_);
  parts->setSizes({360, 600});
  parts->setStretchFactor(0, 2);
  parts->setStretchFactor(1, 3);
  auto* column = new FormColumn(this);
  column->Add(parts, 1);
  auto* row = new MessageToolRow(
      *message_, std::move(tools), [this] { return Chosen(); }, this);
  row->AddTo(column);
}

void PracticeForm::ReadFolder() {
  files_ = std::make_shared<const std::vector<std::string>>(account::PracticeMessages(folder_));
  list_->SetEmptyText(files_->empty() ? tr("No message has arrived yet. Send one from the main window.")
                                      : tr("No message has these words in its recipient or subject."));
  Filter();
}

// All are looked through, however many there are, beside the window; what is listed stays meanwhile.
void PracticeForm::Filter() {
  const QStringList wanted = Folded(filter_->text()).split(' ', Qt::SkipEmptyParts);
  if (wanted.isEmpty()) {
    task_->GiveUp();
    std::vector<std::size_t> all(files_->size());
    std::iota(all.begin(), all.end(), std::size_t{0});
    return List(std::move(all));
  }
  status_->Say(tr("Looking…"));
  task_->Start([this, folder = folder_, files = files_, wanted](const platform::CancelToken& cancel) {
    std::vector<std::size_t> found;
    for (std::size_t file = 0; file < files->size() && cancel.Requested() == platform::Stop::kNone; ++file) {
      const Head head = ReadHead(folder / (*files)[file]);
      if (HoldsAll(head.to + '\n' + head.subject, wanted)) found.push_back(file);
    }
    return [this, found] { List(found); };
  });
}

void PracticeForm::List(std::vector<std::size_t> files) {
  status_->Say({});
  const auto chosen = list_->Chosen();
  const auto before = chosen.empty() ? std::size_t{0} : listed_[chosen.front()];
  listed_ = std::move(files);
  list_->Reset(listed_.size());
  if (listed_.empty()) {
    message_->ShowNothing(files_->empty() ? tr("Messages that you send while you practise arrive here.") : QString());
  } else {
    const auto still = std::ranges::find(listed_, before);
    list_->Choose(still == listed_.end() ? 0 : static_cast<std::size_t>(still - listed_.begin()));
  }
}

// Of one that cannot be read, why.
PracticeForm::Head PracticeForm::ReadHead(const fs::path& file) {
  const auto text = BeginningOf(file);
  if (!text) return {PathToQt(file.filename()), InWords(text.error())};
  return {ToQt(platform::Printable(mime::ReadHeader(*text, "To"))),
          ToQt(platform::Printable(mime::ReadHeader(*text, "Subject")))};
}

// Read when its line comes to the screen.
const PracticeForm::Head& PracticeForm::HeadOf(std::size_t file) const {
  const auto [head, is_new] = heads_.try_emplace(file);
  if (is_new) head->second = ReadHead(folder_ / (*files_)[file]);
  return head->second;
}

void PracticeForm::ShowMessage() {
  if (const auto file = Chosen(); !file.empty()) message_->Show(file);
}

fs::path PracticeForm::Chosen() const {
  const auto chosen = list_->Chosen();
  return chosen.empty() ? fs::path() : folder_ / (*files_)[listed_[chosen.front()]];
}

}  // namespace quillcast::desktop
