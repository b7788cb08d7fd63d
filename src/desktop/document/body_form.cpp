#include "desktop/document/body_form.h"

#include <QColorDialog>
#include <QLineEdit>
#include <QPainter>
#include <QPushButton>
#include <QUrl>
#include <array>
#include <utility>

#include "desktop/document/picture_file.h"
#include "desktop/widgets/form_column.h"
#include "desktop/widgets/form_grid.h"
#include "desktop/widgets/qt_text.h"
#include "desktop/widgets/status_line.h"
#include "document/document_pictures.h"

namespace quillcast::desktop {
namespace {

using document::BodyColours;

// In the order of document::BodyBox.
struct ColourRow {
  const char* name;
  const char* label;
  std::string BodyColours::*field;
};
constexpr auto kColourRows = std::to_array<ColourRow>({
    {"TextColourTextBox", QT_TRANSLATE_NOOP("BodyForm", "&Text:"), &BodyColours::text},
    {"LinkColourTextBox", QT_TRANSLATE_NOOP("BodyForm", "&Links:"), &BodyColours::link},
    {"VisitedColourTextBox", QT_TRANSLATE_NOOP("BodyForm", "&Visited links:"), &BodyColours::visited},
    {"ActiveColourTextBox", QT_TRANSLATE_NOOP("BodyForm", "&Pressed links:"), &BodyColours::active},
    {"BackgroundColourTextBox", QT_TRANSLATE_NOOP("BodyForm", "B&ackground:"), &BodyColours::background},
});

constexpr int kSampleSize = 18;  // pixels
constexpr int kFormWidth = 440;

// What a reader takes the text for; none for one that names no colour.
QColor ColourIn(const QString& text) {
  const QString name = text.trimmed();
  return QColor::isValidColor(name) ? QColor(name) : QColor();
}

// Crossed out where there is none.
QIcon Sample(const QColor& colour, const QPalette& palette) {
  QPixmap picture(kSampleSize, kSampleSize);
  picture.fill(colour.isValid() ? colour : palette.color(QPalette::Base));
  QPainter painter(&picture);
  painter.setPen(palette.color(QPalette::ButtonText));
  painter.drawRect(0, 0, kSampleSize - 1, kSampleSize - 1);
  if (!colour.isValid()) painter.drawLine(0, kSampleSize - 1, kSampleSize - 1, 0);
  painter.end();
  return picture;
}

}  // namespace

BodyForm::BodyForm(platform::Prompts& prompts, std::filesystem::path pictures, BodyColours found, QWidget* parent)
    : QDialog(parent),
      prompts_(prompts),
      folder_(std::move(pictures)),
      found_(std::move(found)),
      shown_picture_(new QLineEdit(this)),
      browse_(new QPushButton(tr("B&rowse…"), this)),
      none_(new QPushButton(tr("&None"), this)),
      status_(new StatusLine(this)) {
  setObjectName("BodyForm");
  setWindowTitle(tr("Page Colours"));
  BuildWindow();
  SetPicture(found_.picture);
  SetBusy(false);
}

void BodyForm::BuildWindow() {
  auto* column = new FormColumn(this);
  FormGrid* grid = column->AddGrid();
  for (std::size_t i = 0; i < kColourRows.size(); ++i) {
    auto* box = new QLineEdit(ToQt(found_.*kColourRows[i].field), this);
    box->setPlaceholderText(tr("As the reader's program has it"));
    auto* sample = new QPushButton(this);
    const QString label = tr(kColourRows[i].label).remove('&').remove(':');
    sample->setAccessibleName(tr("Pick a colour: %1").arg(label));
    sample->setToolTip(tr("Pick a colour"));
    sample->setObjectName(QString(kColourRows[i].name).replace("TextBox", "Button"));
    colours_.push_back(grid->Add(kColourRows[i].name, tr(kColourRows[i].label), box, {sample}));
    samples_.push_back(sample);
    connect(box, &QLineEdit::textChanged, this, [this, i] { ShowSample(i); });
    connect(sample, &QPushButton::clicked, this, [this, i] { PickColour(i); });
    ShowSample(i);
  }
  shown_picture_->setReadOnly(true);
  shown_picture_->setPlaceholderText(tr("None"));
  browse_->setObjectName("BrowseButton");
  none_->setObjectName("NoneButton");
  grid->Add("PictureTextBox", tr("Pi&cture:"), shown_picture_, {browse_, none_});
  connect(browse_, &QPushButton::clicked, this, &BodyForm::PickPicture);
  connect(none_, &QPushButton::clicked, this, [this] {
    SetPicture({});
    SetBusy(false);
    browse_->setFocus();
  });
  column->Add(status_);
  SayWhatIsWanted();
  ok_ = column->AddButtons(QDialogButtonBox::Ok | QDialogButtonBox::Cancel)->button(QDialogButtonBox::Ok);
  colours_.front()->setFocus();
  resize(kFormWidth, sizeHint().height());
}

void BodyForm::ShowSample(std::size_t row) {
  const auto typed = FromQt(colours_.at(row)->text());
  BodyColours one = found_;
  one.*kColourRows.at(row).field = typed;
  const bool is_taken = !document::CheckBodyColours(one, found_);
  samples_.at(row)->setIcon(Sample(is_taken ? ColourIn(ToQt(typed)) : QColor(), palette()));
}

void BodyForm::SayWhatIsWanted() { status_->Say(InWords(document::WantedColour())); }

void BodyForm::PickColour(std::size_t row) {
  const QColor before = ColourIn(colours_.at(row)->text());
  const QColor colour = QColorDialog::getColor(before.isValid() ? before : QColor(Qt::black), this, tr("Colour"));
  if (colour.isValid()) colours_.at(row)->setText(colour.name().toUpper());
}

void BodyForm::SetPicture(const std::string& address) {
  picture_ = address;
  const QUrl url(ToQt(address));
  shown_picture_->setText(url.isLocalFile() ? url.toLocalFile() : ToQt(address));
}

// Copied at once, since the page may not show it from where it lies.
void BodyForm::PickPicture() {
  const auto files = prompts_.PickOpenFile({.title = "Picture", .filter = kPictureFilter});
  if (files.empty()) return;
  SetBusy(true);
  status_->Say(tr("Looking at the picture…"));
  task_.Start([this, file = files.front(), folder = folder_](const platform::CancelToken&) -> std::function<void()> {
    const auto head = ReadPictureHead(file);
    return
        [this, copy = head ? KeepPicture(*head, folder) : Result<std::filesystem::path>(head.error())] { Kept(copy); };
  });
}

void BodyForm::Kept(const Result<std::filesystem::path>& copy) {
  if (copy) SetPicture(document::FileAddress(*copy));
  SetBusy(false);
  copy ? SayWhatIsWanted() : status_->Fail(copy.error());
}

void BodyForm::SetBusy(bool busy) {
  for (QWidget* control : {static_cast<QWidget*>(browse_), static_cast<QWidget*>(ok_)}) control->setEnabled(!busy);
  none_->setEnabled(!busy && !picture_.empty());
}

BodyColours BodyForm::Choice() const {
  BodyColours choice;
  for (std::size_t i = 0; i < kColourRows.size(); ++i) choice.*kColourRows[i].field = FromQt(colours_[i]->text());
  choice.picture = picture_;
  return choice;
}

void BodyForm::accept() {
  if (!ok_->isEnabled()) return;
  const auto complaint = document::CheckBodyColours(Choice(), found_);
  if (!complaint) return QDialog::accept();
  prompts_.Warn(complaint->message);
  status_->Say(InWords(complaint->reason), NoteKind::kWarning);
  QLineEdit* box = colours_.at(static_cast<std::size_t>(*complaint->control));
  box->setFocus();
  box->selectAll();
}

}  // namespace quillcast::desktop
