// The editing commands by the codes that the command table gives them.
#pragma once

namespace quillcast::desktop {

enum class EditorCommand : int {
  kBold = 5000,
  kCopy = 5002,
  kCut = 5003,
  kDelete = 5004,
  kFindText = 5008,
  kIndent = 5018,
  kItalic = 5023,
  kAlignCentre = 5024,
  kAlignLeft = 5025,
  kAlignRight = 5026,
  kNumberedList = 5030,
  kOutdent = 5031,
  kPaste = 5032,
  kRedo = 5033,
  kRemoveFormatting = 5034,
  kSelectAll = 5035,
  kUnderline = 5048,
  kUndo = 5049,
  kRemoveHyperlink = 5050,
  kBulletedList = 5051,
};

// Changes of the table that the caret is in.
enum class TableEdit {
  kRowAbove,
  kRowBelow,
  kColumnLeft,
  kColumnRight,
  kDeleteRow,
  kDeleteColumn,
  kDeleteTable,
};

}  // namespace quillcast::desktop
