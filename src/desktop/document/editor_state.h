// What the toolbar shows of the place where the caret is.
#pragma once

#include <QColor>
#include <QString>
#include <QVariantMap>

#include "document/picture_choice.h"

namespace quillcast::desktop {

// A picture that stands in the message.
struct PlacedPicture {
  QString address;  // where it lies, as the page has it; empty for none
  document::PictureChoice choice;
  profile::PixelSize natural;
};

// As it stands here: a caret in plain text of the usual size.
struct EditorState {
  bool bold = false;
  bool italic = false;
  bool underline = false;
  bool bullets = false;
  bool numbers = false;
  bool left = false;
  bool center = false;
  bool right = false;
  bool strike = false;
  bool normal = false;  // and the other styles of a paragraph
  bool heading1 = false;
  bool heading2 = false;
  bool heading3 = false;
  bool quote = false;
  bool preformatted = false;
  bool in_table = false;
  bool can_undo = false;
  bool can_redo = false;
  QString font;               // as the document names it, without quotes
  int size = 3;               // 1 to 7
  QColor colour = Qt::black;  // of the text
  PlacedPicture picture;      // that is selected
  int room = 0;               // for a picture at the caret, in pixels; 0 where that is not known
  QString link;               // the address of the link round the caret, empty for none
  QString link_text;
  QString selected;  // the selected text

  // `map` is what state() of the editing script gives.
  static EditorState From(const QVariantMap& map);
};

}  // namespace quillcast::desktop
