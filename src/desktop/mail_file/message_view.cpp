#include "desktop/mail_file/message_view.h"

#include <QFontDatabase>
#include <QLabel>
#include <QPlainTextEdit>
#include <QTabWidget>
#include <QTextBrowser>
#include <algorithm>
#include <cstdlib>
#include <utility>

#include "desktop/mail_file/foreign_page.h"
#include "desktop/widgets/background_task.h"
#include "desktop/widgets/breakable.h"
#include "desktop/widgets/empty_state.h"
#include "desktop/widgets/form_column.h"
#include "desktop/widgets/form_grid.h"
#include "desktop/widgets/note_panel.h"
#include "desktop/widgets/qt_text.h"
#include "desktop/widgets/row_list.h"
#include "desktop/widgets/status_line.h"
#include "mail_file/body_page.h"
#include "mail_file/load_settings.h"
#include "mail_file/safe_part_name.h"
#include "platform/file.h"
#include "platform/text.h"

namespace quillcast::desktop {
namespace {

constexpr std::size_t kMostHtml = std::size_t{256} * 1024;    // laid out in a second at most
constexpr std::size_t kMostSource = std::size_t{256} * 1024;  // bytes
constexpr qsizetype kMostNamed = 5;                           // recipients of a kind
constexpr int kLongestWord = 40;                              // of the fields above the message

enum PartColumn : int { kType, kSize, kName };
enum StampColumn : int { kTime, kDelay, kBy, kFrom };

QString Shown(std::string_view text) { return ToQt(platform::Printable(text, 300)); }

QString Shown(const mail_file::Mailbox& mailbox) { return ToQt(mail_file::ShownMailbox(mailbox)); }

// The time with the zone that its clock was in.
QString Shown(const mail_file::StampedTime& time) {
  const int minutes = std::abs(time.bias_minutes);
  return QString("%1 %2%3:%4")
      .arg(ToQt(time.local), time.bias_minutes < 0 ? "-" : "+")
      .arg(minutes / 60, 2, 10, QChar('0'))
      .arg(minutes % 60, 2, 10, QChar('0'));
}

QLabel* MakeValue(QWidget* parent) {
  auto* value = new QLabel(parent);
  value->setTextFormat(Qt::PlainText);
  value->setWordWrap(true);
  value->setTextInteractionFlags(Qt::TextSelectableByMouse);
  return value;
}

// Whatever is one word in it, the window stays as narrow as it was.
void SetValue(QLabel* label, const QString& text) { label->setText(Breakable(text, kLongestWord)); }

Result<std::string> BeginningOf(const std::filesystem::path& file) {
  const auto fd = platform::OpenForReading(file);
  if (!fd) return fd.error();
  std::string text(kMostSource, '\0');
  const auto got = platform::ReadSome(fd->get(), file, text.data(), text.size());
  if (!got) return got.error();
  text.resize(*got);
  return text;
}

// What a person takes for a file or the body: not what only holds others.
bool IsListed(const mail_file::Part& part) { return part.marker != mail_file::Marker::kNone; }

}  // namespace

MessageView::MessageView(const profile::SettingsStore& settings, QWidget* parent)
    : QWidget(parent),
      settings_(settings),
      task_(new BackgroundTask(this)),
      from_(MakeValue(this)),
      recipients_{MakeValue(this), MakeValue(this), MakeValue(this)},
      date_(MakeValue(this)),
      subject_(MakeValue(this)),
      faults_(new NotePanel(NoteKind::kWarning, "FaultsPanel", "FaultsLabel", this)),
      tabs_(new QTabWidget(this)),
      page_(new QTextBrowser(this)),
      empty_(new EmptyState(page_)),
      parts_(new RowList(
          "PartList", tr("Parts"), {{tr("Type"), 24}, {tr("Size in the file"), 14, true}, {tr("Name")}},
          [this](std::size_t row, int column) { return PartText(row, column); }, this)),
      stamps_(new RowList(
          "StampList", tr("The way it came, the last hop first"),
          {{tr("Time there"), 30}, {tr("Took"), 10, true}, {tr("Server"), 24}, {tr("It came from")}},
          [this](std::size_t row, int column) { return StampText(row, column); }, this)),
      source_(new QPlainTextEdit(this)),
      status_(new StatusLine(this, "MessageStatus")) {
  BuildWindow();
  connect(page_, &QTextBrowser::highlighted, this, [this](const QUrl& link) {
    status_->Say(link.isEmpty() ? QString() : tr("Leads to %1").arg(Shown(FromQt(link.toDisplayString()))));
  });
  connect(page_, &QTextBrowser::anchorClicked, this, [this](const QUrl& link) {
    status_->Say(
        tr("Links of message files are not opened. This one leads to %1").arg(Shown(FromQt(link.toDisplayString()))));
  });
}

void MessageView::BuildWindow() {
  setObjectName("MessageView");
  page_->setObjectName("MessagePage");
  page_->setAccessibleName(tr("The message"));
  page_->setOpenLinks(false);
  QPalette paper = page_->palette();  // its colours are meant for paper, whatever the window's are
  paper.setColor(QPalette::Base, Qt::white);
  paper.setColor(QPalette::Text, Qt::black);
  page_->setPalette(paper);
  source_->setObjectName("MessageSource");
  source_->setAccessibleName(tr("The message as it stands in the file"));
  source_->setReadOnly(true);
  source_->setTabChangesFocus(true);
  source_->setLayoutDirection(Qt::LeftToRight);
  source_->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
  parts_->SetEmptyText(tr("The message has no parts that could be taken out."));
  stamps_->SetEmptyText(
      tr("The message carries no server's stamp: one that was not sent has none, nor has one that a "
         "practice mailbox took."));
  tabs_->setObjectName("MessageTabs");
  tabs_->addTab(page_, tr("M&essage"));
  tabs_->addTab(parts_, tr("&Parts"));
  tabs_->addTab(stamps_, tr("&Way"));
  tabs_->addTab(source_, tr("S&ource"));
  faults_->hide();
  auto* column = new FormColumn(this);
  column->setContentsMargins(0, 0, 0, 0);
  FormGrid* header = column->AddGrid();
  header->Add("FromLabel", tr("From:"), from_);
  header->Add("ToLabel", tr("To:"), recipients_[0]);
  header->Add("CcLabel", tr("Cc:"), recipients_[1])->hide();
  header->Add("BccLabel", tr("Bcc:"), recipients_[2])->hide();
  header->Add("DateLabel", tr("Date:"), date_);
  header->Add("SubjectLabel", tr("Subject:"), subject_);
  column->Add(faults_);
  column->Add(tabs_, 1);
  column->Add(status_);
}

MessageView::Reading MessageView::Read(const std::filesystem::path& file, mail_file::LoadMode mode,
                                       const platform::CancelToken& cancel) {
  Reading reading;
  auto loading = mail_file::Load(file, {.mode = mode, .cancel = &cancel});
  if (!loading) return reading;  // cancelled: nobody looks at it
  reading.wrong = mail_file::WhatWasWrong(*loading);
  if (!loading->message) return reading;
  reading.message = std::make_shared<const mail_file::MailMessage>(*std::move(loading->message));
  auto body = mail_file::ReadShownBody(*reading.message, kMostHtml, &cancel);
  if (!body) reading.error = body.error();
  if (body) reading.body = *std::move(body);
  reading.pictures = DecodePictures(reading.body.pictures, cancel);
  auto beginning = BeginningOf(file);
  if (!beginning) reading.error = beginning.error();
  if (beginning) reading.beginning = *std::move(beginning);
  return reading;
}

void MessageView::Show(const std::filesystem::path& file) {
  // Settings that cannot be read are no reason to show less.
  const auto mode = IgnoreErrors(mail_file::LoadModeOf(settings_), mail_file::LoadMode::kPlain);
  task_->Start([this, file, mode](const platform::CancelToken& cancel) -> std::function<void()> {
    auto reading = std::make_shared<Reading>(Read(file, mode, cancel));
    return [this, reading] { Put(std::move(*reading)); };
  });
}

void MessageView::ShowNothing(const QString& text) {
  task_->GiveUp();
  Put({});
  empty_->setText(text);
}

void MessageView::Put(Reading reading) {
  message_ = std::move(reading.message);
  files_.clear();
  status_->Say({});
  PutHeader(message_ ? message_->facts() : mail_file::MessageFacts());
  PutFaults(reading);
  if (message_) {
    for (std::size_t i = 0; i < message_->parts().size(); ++i) {
      if (IsListed(message_->parts()[i])) files_.push_back(i);
    }
    delays_ = mail_file::HopDelays(message_->facts().stamps);
  }
  parts_->Reset(files_.size());
  TellAttachments();
  stamps_->Reset(message_ ? message_->facts().stamps.size() : 0);
  auto* const shown = new ForeignPage(ToQt(reading.body.html), std::move(reading.pictures), this);
  page_->setDocument(shown);
  delete std::exchange(shown_, shown);
  source_->setPlainText(ToQt(reading.beginning));
  const auto no_body = message_ ? mail_file::WhyNoBody(*message_) : std::nullopt;
  empty_->setText(no_body ? InWords(*no_body) : tr("Nothing of this file can be read as a message."));
  empty_->setVisible(!message_ || no_body);
  if (reading.error) {
    status_->Fail(*reading.error);
  } else if (reading.body.is_cut) {
    status_->Say(tr("The message goes on: its beginning is shown. Extract it to read the whole."));
  }
  emit Loaded(message_ != nullptr);
}

// Where they are seen from the message too.
void MessageView::TellAttachments() {
  const auto count = std::ranges::count_if(
      files_, [this](std::size_t part) { return message_->parts()[part].marker == mail_file::Marker::kAttachment; });
  tabs_->setTabText(1, count == 0 ? tr("&Parts") : tr("&Parts (%1 attached)").arg(count));
}

void MessageView::PutHeader(const mail_file::MessageFacts& facts) {
  SetValue(from_, Shown(facts.from));
  PutRecipients(facts.recipients);
  SetValue(date_, facts.time ? Shown(*facts.time) : Shown(facts.date));
  SetValue(subject_, Shown(facts.subject));
}

// Who had a copy is told only where somebody had.
void MessageView::PutRecipients(const std::vector<mail_file::Recipient>& recipients) {
  std::array<QStringList, 3> names;
  std::array<qsizetype, 3> others{};
  for (const auto& [mailbox, type] : recipients) {
    const auto kind = static_cast<std::size_t>(type);
    if (names.at(kind).size() < kMostNamed) {
      names.at(kind) << Shown(mailbox);
    } else {
      ++others.at(kind);
    }
  }
  for (std::size_t kind = 0; kind < names.size(); ++kind) {
    const QString more = others.at(kind) > 0 ? tr(" and %1 others").arg(others.at(kind)) : QString();
    SetValue(recipients_.at(kind), names.at(kind).join(", ") + more);
    recipients_.at(kind)->setVisible(kind == 0 || !names.at(kind).isEmpty());
  }
}

void MessageView::PutFaults(const Reading& reading) {
  faults_->SetText(InWords(reading.wrong).join("\n"));
  faults_->setVisible(!reading.wrong.empty());
}

QString MessageView::PartText(std::size_t row, int column) const {
  const auto& part = message_->parts()[files_[row]];
  switch (column) {
    case kType:
      return Shown(part.type);
    case kSize:
      return ToQt(platform::HumanSize(part.source.bytes.size()));
    default:
      return Shown(part.name.empty() ? mail_file::FileNameOf(part, files_[row]) : part.name);
  }
}

QString MessageView::StampText(std::size_t row, int column) const {
  const auto& stamp = message_->facts().stamps[row];
  switch (column) {
    case kTime:
      return stamp.time ? Shown(*stamp.time) : tr("none");
    case kDelay:
      return delays_[row] ? tr("%1 s").arg(*delays_[row]) : QString();
    case kBy:
      return Shown(stamp.by);
    default:
      return Shown(stamp.from);
  }
}

}  // namespace quillcast::desktop
