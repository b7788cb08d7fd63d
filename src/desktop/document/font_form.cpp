#include "desktop/document/font_form.h"

#include <QCheckBox>
#include <QColorDialog>
#include <QComboBox>
#include <QFontComboBox>
#include <QLabel>
#include <QPushButton>
#include <algorithm>
#include <array>

#include "desktop/document/editor_state.h"
#include "desktop/widgets/form_column.h"
#include "desktop/widgets/form_grid.h"

namespace quillcast::desktop {
namespace {

// The sizes that HTML knows, 1 to 7, in points.
constexpr std::array<int, 7> kPoints = {8, 10, 12, 14, 18, 24, 36};
constexpr int kSampleHeight = 80;  // pixels
constexpr int kFontFormWidth = 420;

}  // namespace

FontForm::FontForm(const FontChoice& present, QWidget* parent)
    : QDialog(parent),
      family_(new QFontComboBox(this)),
      size_(new QComboBox(this)),
      colour_button_(new QPushButton(tr("&Change…"), this)),
      bold_(new QCheckBox(tr("&Bold"), this)),
      italic_(new QCheckBox(tr("&Italic"), this)),
      underline_(new QCheckBox(tr("&Underlined"), this)),
      strike_(new QCheckBox(tr("S&truck out"), this)),
      sample_(new QLabel(tr("Dear reader"), this)),
      colour_(present.colour) {
  setObjectName("FontForm");
  setWindowTitle(tr("Font"));
  family_->setCurrentFont(QFont(present.family));
  family_->setEditText(present.family);
  for (const int points : kPoints) size_->addItem(tr("%1 points").arg(points));
  size_->setCurrentIndex(std::clamp(present.size, 1, 7) - 1);
  bold_->setChecked(present.bold);
  italic_->setChecked(present.italic);
  underline_->setChecked(present.underline);
  strike_->setChecked(present.strike);
  MakeWindow();
  ShowSample();
}

void FontForm::MakeWindow() {
  auto* column = new FormColumn(this);
  FormGrid* grid = column->AddGrid();
  grid->Add("FamilyComboBox", tr("&Font:"), family_);
  grid->Add("SizeComboBox", tr("&Size:"), size_);
  grid->Add("ColourButton", tr("C&olour:"), colour_button_);
  grid->AddPlain("BoldCheckBox", bold_);
  grid->AddPlain("ItalicCheckBox", italic_);
  grid->AddPlain("UnderlineCheckBox", underline_);
  grid->AddPlain("StrikeCheckBox", strike_);
  sample_->setObjectName("SampleLabel");
  sample_->setFixedHeight(kSampleHeight);
  sample_->setAlignment(Qt::AlignCenter);
  sample_->setAutoFillBackground(true);
  QPalette paper;  // as the letter has it, in every theme
  paper.setColor(QPalette::Window, Qt::white);
  sample_->setPalette(paper);
  column->Add(sample_);
  column->AddButtons(QDialogButtonBox::Ok | QDialogButtonBox::Cancel);
  resize(kFontFormWidth, sizeHint().height());
  connect(colour_button_, &QPushButton::clicked, this, &FontForm::ChooseColour);
  connect(family_, &QComboBox::currentTextChanged, this, &FontForm::ShowSample);
  connect(size_, &QComboBox::currentIndexChanged, this, &FontForm::ShowSample);
  for (const QCheckBox* box : {bold_, italic_, underline_, strike_})
    connect(box, &QCheckBox::toggled, this, &FontForm::ShowSample);
}

void FontForm::ChooseColour() {
  const QColor colour = QColorDialog::getColor(colour_, this, tr("Text Colour"));
  if (colour.isValid()) colour_ = colour;
  ShowSample();
}

void FontForm::ShowSample() {
  const FontChoice choice = Choice();
  QFont font(choice.family, kPoints.at(static_cast<std::size_t>(choice.size) - 1));
  font.setBold(choice.bold);
  font.setItalic(choice.italic);
  font.setUnderline(choice.underline);
  font.setStrikeOut(choice.strike);
  sample_->setFont(font);
  QPalette paper = sample_->palette();
  paper.setColor(QPalette::WindowText, colour_);
  sample_->setPalette(paper);
  QPixmap colour(16, 16);
  colour.fill(colour_);
  colour_button_->setIcon(colour);
}

FontChoice FontForm::Choice() const {
  return {.family = family_->currentText().trimmed(),
          .size = size_->currentIndex() + 1,
          .colour = colour_,
          .bold = bold_->isChecked(),
          .italic = italic_->isChecked(),
          .underline = underline_->isChecked(),
          .strike = strike_->isChecked()};
}

FontChoice FontOf(const EditorState& state) {
  return {.family = state.font,
          .size = state.size,
          .colour = state.colour,
          .bold = state.bold,
          .italic = state.italic,
          .underline = state.underline,
          .strike = state.strike};
}

}  // namespace quillcast::desktop
