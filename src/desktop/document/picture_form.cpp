#include "desktop/document/picture_form.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDragEnterEvent>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QUrl>
#include <algorithm>
#include <array>
#include <utility>

#include "desktop/widgets/digits_filter.h"
#include "desktop/widgets/dropped_files.h"
#include "desktop/widgets/form_column.h"
#include "desktop/widgets/form_grid.h"
#include "desktop/widgets/qt_text.h"
#include "desktop/widgets/status_line.h"
#include "document/picture_sizes.h"
#include "platform/text.h"

namespace quillcast::desktop {
namespace {

constexpr int kShownHeight = 140;  // pixels
constexpr int kShownWidth = 200;
constexpr int kNumberWidth = 80;
constexpr int kLeastWidth = 520;

QLineEdit* NumberBox(int longest, QWidget* parent) {
  auto* box = new QLineEdit(parent);
  box->setValidator(new DigitsFilter(box));
  box->setMaxLength(longest);
  box->setMaximumWidth(kNumberWidth);
  return box;
}

// "4,000 × 3,000 pixels, 5.2 MB"
QString SizeInWords(profile::PixelSize size, std::uint64_t bytes) {
  return PictureForm::tr("%1 × %2 pixels, %3")
      .arg(ToQt(platform::WithThousands(size.width)), ToQt(platform::WithThousands(size.height)),
           ToQt(platform::HumanSize(bytes)));
}

}  // namespace

PictureForm::PictureForm(platform::Prompts& prompts, std::filesystem::path folder, int room, QWidget* parent)
    : QDialog(parent),
      prompts_(prompts),
      folder_(std::move(folder)),
      room_(room),
      file_(new QLineEdit(this)),
      browse_(new QPushButton(tr("&Browse…"), this)),
      shown_(new QLabel(this)),
      smaller_(new QCheckBox(this)),
      alternative_(new QLineEdit(this)),
      width_(NumberBox(4, this)),
      height_(NumberBox(4, this)),
      ratio_(new QCheckBox(tr("&Keep the ratio of its sides"), this)),
      border_(NumberBox(2, this)),
      align_(new QComboBox(this)) {
  setObjectName("PictureForm");
  setWindowTitle(tr("Picture"));
  setAcceptDrops(true);
  MakeWindow();
  ConnectControls();
  SetBusy(false);
}

void PictureForm::MakeWindow() {
  file_->setReadOnly(true);
  file_->setPlaceholderText(tr("Choose a file, or drop one here"));
  browse_->setObjectName("BrowseButton");
  alternative_->setPlaceholderText(tr("What it shows, for those who do not see it"));
  ratio_->setChecked(true);
  border_->setText("0");
  align_->addItem(tr("In the line, as a letter"), QString());
  align_->addItem(tr("Left, the text flows round it"), document::kPictureAlignments[0]);
  align_->addItem(tr("Right, the text flows round it"), document::kPictureAlignments[1]);
  align_->addItem(tr("In the line, at its middle"), document::kPictureAlignments[2]);
  shown_->setObjectName("ShownPicture");
  shown_->setAlignment(Qt::AlignCenter);
  shown_->setFixedHeight(kShownHeight);
  shown_->setText(tr("No picture yet"));
  shown_->setMinimumWidth(kShownWidth);

  auto* column = new FormColumn(this);
  FormGrid* grid = column->AddGrid();
  grid->Add("FileTextBox", tr("&File:"), file_, {browse_});
  grid->AddPlain("ShownPicture", shown_);
  grid->AddPlain("SmallerCheckBox", smaller_);
  grid->Add("AlternativeTextBox", tr("Alternative &text:"), alternative_);
  undescribed_ = grid->AddPlain("UndescribedLabel", new StatusLine(this, "UndescribedLabel"));
  undescribed_->Say(tr("Without one, readers who do not see it never hear of it. Right for what only decorates."));
  QSizePolicy keeps_its_place = undescribed_->sizePolicy();
  keeps_its_place.setRetainSizeWhenHidden(true);
  undescribed_->setSizePolicy(keeps_its_place);
  // A window's least height knows nothing of lines that wrap; the column is never narrower than the picture.
  undescribed_->setMinimumHeight(undescribed_->heightForWidth(kShownWidth));
  undescribed_->hide();
  grid->Add("WidthTextBox", tr("&Width:"), width_, {new QLabel(tr("pixels"), this)});
  grid->Add("HeightTextBox", tr("&Height:"), height_, {new QLabel(tr("pixels"), this)});
  grid->AddPlain("RatioCheckBox", ratio_);
  grid->Add("BorderTextBox", tr("B&order:"), border_, {new QLabel(tr("pixels"), this)});
  grid->Add("AlignComboBox", tr("&Alignment:"), align_);
  status_ = column->Add(new StatusLine(this));
  ok_ = column->AddButtons(QDialogButtonBox::Ok | QDialogButtonBox::Cancel)->button(QDialogButtonBox::Ok);
  smaller_->hide();
  browse_->setFocus();
  resize(kLeastWidth, sizeHint().height());
}

void PictureForm::ConnectControls() {
  connect(browse_, &QPushButton::clicked, this, &PictureForm::PickFile);
  connect(alternative_, &QLineEdit::textChanged, this, &PictureForm::TellUndescribed);
  connect(width_, &QLineEdit::textEdited, this, [this] { Follow(width_); });
  connect(height_, &QLineEdit::textEdited, this, [this] { Follow(height_); });
  connect(ratio_, &QCheckBox::clicked, this, [this] { Follow(width_); });
}

void PictureForm::Show(const PlacedPicture& placed) {
  address_ = placed.address;
  natural_ = placed.natural;
  const QUrl url(placed.address);
  file_->setText(url.isLocalFile() ? url.toLocalFile() : placed.address);
  alternative_->setText(ToQt(placed.choice.alternative));
  width_->setText(ToQt(placed.choice.width));
  height_->setText(ToQt(placed.choice.height));
  const profile::PixelSize size = {QString::fromStdString(placed.choice.width).toInt(),
                                   QString::fromStdString(placed.choice.height).toInt()};
  if (const auto allowed = document::NoLongerThanAllowed(size); allowed != size) ShowSize(allowed);
  ratio_->setChecked(document::KeepsRatio({width_->text().toInt(), height_->text().toInt()}, natural_));
  border_->setText(ToQt(placed.choice.border));
  align_->setCurrentIndex(std::max(0, align_->findData(ToQt(placed.choice.align), Qt::UserRole, Qt::MatchFixedString)));
  SetBusy(false);
  alternative_->setFocus();
  // What the page does not show, the document may not name.
  if (url.isLocalFile() && natural_.width > 0) ShowPreview(PathFromQt(url.toLocalFile()));
}

void PictureForm::ShowPreview(const std::filesystem::path& file) {
  task_.Start([this, file](const platform::CancelToken&) -> std::function<void()> {
    return [this, look = LookAtPicture(file)] {
      if (look) ShowPreview(look->shown);
    };
  });
}

void PictureForm::ShowPreview(const QImage& picture) {
  shown_->setPixmap(
      QPixmap::fromImage(picture.scaled(kLeastWidth, kShownHeight - 8, Qt::KeepAspectRatio, Qt::SmoothTransformation)));
}

void PictureForm::PickFile() {
  const auto files = prompts_.PickOpenFile({.title = "Picture", .filter = kPictureFilter});
  if (!files.empty()) Take(files.front());
}

void PictureForm::Take(const std::filesystem::path& file) {
  SetBusy(true);
  status_->Say(tr("Looking at the picture…"));
  task_.Start([this, file](const platform::CancelToken&) -> std::function<void()> {
    return [this, file, look = LookAtPicture(file)] { Taken(file, look); };
  });
}

// What is no picture leaves the form as it was.
void PictureForm::Taken(const std::filesystem::path& file, const Result<PictureLook>& look) {
  if (look) look_ = *look;
  SetBusy(false);
  if (look) {
    natural_ = look->head.size;
    file_->setText(PathToQt(file));
    ShowPreview(look->shown);
    ShowSize(document::FirstSize(natural_, room_));
    ratio_->setChecked(true);
    status_->Say({});
    ShowSmaller();
    alternative_->setFocus();
  } else {
    status_->Fail(look.error());
    browse_->setFocus();
  }
}

void PictureForm::ShowSmaller() {
  const bool is_offered = !look_->smaller.isEmpty();
  smaller_->setVisible(is_offered);
  smaller_->setChecked(is_offered);
  if (!is_offered) {
    status_->Say(SizeInWords(natural_, look_->head.bytes));
    return;
  }
  smaller_->setText(tr("Take along a s&maller one"));
  status_->Say(tr("%1, becomes %2.")
                   .arg(SizeInWords(natural_, look_->head.bytes),
                        SizeInWords(look_->smaller_size, static_cast<std::uint64_t>(look_->smaller.size()))));
}

// A box that has it already is left alone, for the caret may be in it.
void PictureForm::ShowSize(profile::PixelSize size) {
  for (const auto& [box, side] : {std::pair{width_, size.width}, std::pair{height_, size.height}}) {
    const QString text = side > 0 ? QString::number(side) : QString();
    if (box->text() != text) box->setText(text);
  }
}

void PictureForm::Follow(QLineEdit* typed) {
  const int side = typed->text().toInt();
  if (!ratio_->isChecked() || natural_.width <= 0 || side <= 0) return;
  const profile::PixelSize wanted = typed == width_ ? profile::PixelSize{side, document::HeightFor(side, natural_)}
                                                    : profile::PixelSize{document::WidthFor(side, natural_), side};
  ShowSize(document::NoLongerThanAllowed(wanted));
}

document::PictureChoice PictureForm::Choice() const {
  return {.alternative = FromQt(alternative_->text().simplified()),
          .width = FromQt(width_->text()),
          .height = FromQt(height_->text()),
          .border = FromQt(border_->text()),
          .align = FromQt(align_->currentData().toString())};
}

QString PictureForm::Html() const { return ToQt(document::PictureHtml(FromQt(address_), Choice(), natural_)); }

void PictureForm::accept() {
  if (!ok_->isEnabled()) return;
  const auto complaint = document::CheckPicture(Choice());
  if (complaint) {
    status_->Say(Translated(complaint->message), NoteKind::kFailure);
    QLineEdit* box = std::array{width_, height_, border_}.at(static_cast<std::size_t>(*complaint->control));
    box->setFocus();
    box->selectAll();
    return;
  }
  if (!look_) return QDialog::accept();  // it lies where it lay
  SetBusy(true);
  const bool smaller = smaller_->isChecked();
  task_.Start([this, look = *look_, smaller, folder = folder_](const platform::CancelToken&) -> std::function<void()> {
    return [this, copy = smaller ? KeepSmaller(look, folder) : KeepPicture(look.head, folder)] { Kept(copy); };
  });
}

void PictureForm::Kept(const Result<std::filesystem::path>& copy) {
  SetBusy(false);
  if (!copy) {
    status_->Fail(copy.error());
    return;
  }
  address_ = QString::fromLatin1(QUrl::fromLocalFile(PathToQt(*copy)).toEncoded());
  QDialog::accept();
}

// Nothing is to be changed while the file is looked at or copied.
void PictureForm::SetBusy(bool busy) {
  const bool has_picture = look_ || !address_.isEmpty();
  browse_->setEnabled(!busy);
  for (QWidget* control :
       std::initializer_list<QWidget*>{smaller_, alternative_, width_, height_, ratio_, border_, align_, ok_})
    control->setEnabled(!busy && has_picture);
  TellUndescribed();
}

void PictureForm::TellUndescribed() {
  undescribed_->setVisible(alternative_->isEnabled() && alternative_->text().trimmed().isEmpty());
}

void PictureForm::dragEnterEvent(QDragEnterEvent* event) {
  if (browse_->isEnabled() && !DroppedFiles(event->mimeData()).isEmpty()) event->acceptProposedAction();
}

void PictureForm::dropEvent(QDropEvent* event) { Take(PathFromQt(DroppedFiles(event->mimeData()).front())); }

}  // namespace quillcast::desktop
