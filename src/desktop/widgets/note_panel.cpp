#include "desktop/widgets/note_panel.h"

#include <QApplication>
#include <QEvent>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>

#include "desktop/widgets/breakable.h"
#include "desktop/widgets/icons.h"

namespace quillcast::desktop {
namespace {

constexpr int kSign = 20;               // pixels
constexpr int kLongestWordOfNote = 60;  // a path may be one word

}  // namespace

NotePanel::NotePanel(NoteKind kind, const char* name, const char* label, QWidget* parent, OfferPlace place)
    : QFrame(parent), kind_(kind), sentence_(new QLabel(this)), sign_(new QLabel(this)), offers_(new QHBoxLayout()) {
  setObjectName(name);
  setFrameShape(QFrame::StyledPanel);
  setAutoFillBackground(true);
  sentence_->setObjectName(label);
  sentence_->setWordWrap(true);
  sentence_->setTextFormat(Qt::PlainText);
  auto* column = new QVBoxLayout();
  column->addWidget(sentence_, 1);
  auto* line = new QHBoxLayout(this);
  line->setContentsMargins(10, 6, 8, 6);
  line->addWidget(sign_, 0, Qt::AlignTop);
  line->addLayout(column, 1);
  if (place == OfferPlace::kBeside) {
    line->addLayout(offers_);
  } else {
    offers_->addStretch(1);
    column->addLayout(offers_);
  }
  TakeColours();
}

void NotePanel::SetText(const QString& sentence) { sentence_->setText(Breakable(sentence, kLongestWordOfNote)); }
QString NotePanel::text() const { return sentence_->text(); }

QPushButton* NotePanel::AddOffer(const char* name, const QString& text, std::function<void()> action) {
  auto* button = new QPushButton(text, this);
  button->setObjectName(name);
  button->setAutoDefault(false);
  connect(button, &QPushButton::clicked, this, [does = std::move(action)] { does(); });
  const bool has_stretch = offers_->count() > 0 && offers_->itemAt(offers_->count() - 1)->spacerItem() != nullptr;
  offers_->insertWidget(offers_->count() - (has_stretch ? 1 : 0), button);
  return button;
}

void NotePanel::changeEvent(QEvent* event) {
  QFrame::changeEvent(event);
  if (event->type() == QEvent::PaletteChange) TakeColours();
}

void NotePanel::TakeColours() {
  const NoteColours colours = PanelColours(kind_, QApplication::palette());
  QPalette own = palette();
  if (own.color(QPalette::Window) == colours.ground && own.color(QPalette::WindowText) == colours.text) return;
  own.setColor(QPalette::Window, colours.ground);
  own.setColor(QPalette::WindowText, colours.text);
  setPalette(own);
  sign_->setPixmap(Icon(SignName(kind_), colours.sign).pixmap(kSign));
}

}  // namespace quillcast::desktop
