// The dialog in which the font of what is selected, or of what is typed next, is chosen.
#pragma once

#include <QColor>
#include <QDialog>

class QCheckBox;
class QComboBox;
class QFontComboBox;
class QLabel;
class QPushButton;

namespace quillcast::desktop {

struct EditorState;

// As a document knows it.
struct FontChoice {
  QString family;
  int size = 3;  // 1 to 7, as HTML counts them
  QColor colour;
  bool bold = false;
  bool italic = false;
  bool underline = false;
  bool strike = false;
};

// Changes nothing: after OK the caller takes the choice.
class FontForm final : public QDialog {
  Q_OBJECT
 public:
  FontForm(const FontChoice& present, QWidget* parent);

  FontChoice Choice() const;

 private:
  void MakeWindow();
  void ChooseColour();
  void ShowSample();

  QFontComboBox* family_;
  QComboBox* size_;
  QPushButton* colour_button_;
  QCheckBox* bold_;
  QCheckBox* italic_;
  QCheckBox* underline_;
  QCheckBox* strike_;
  QLabel* sample_;
  QColor colour_;
};

// Of the place where the caret is.
FontChoice FontOf(const EditorState& state);

}  // namespace quillcast::desktop
