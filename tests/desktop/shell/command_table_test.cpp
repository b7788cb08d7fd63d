#include "desktop/shell/command_table.h"

#include <gtest/gtest.h>

#include <map>
#include <set>
#include <string_view>

namespace quillcast::desktop {
namespace {

using enum CommandId;

TEST(CommandTable, CodesAndNamesAreAsPublished) {
  const std::map<CommandId, int> codes = {
      {kUndo, 5049},   {kRedo, 5033},      {kCut, 5003},       {kCopy, 5002},    {kPaste, 5032},
      {kDelete, 5004}, {kSelectAll, 5035}, {kFind, 5008},      {kBold, 5000},    {kRemoveHyperlink, 5050},
      {kItalic, 5023}, {kUnderline, 5048}, {kAlignLeft, 5025}, {kCentre, 5024},  {kRemoveFormatting, 5034},
      {kIndent, 5018}, {kOutdent, 5031},   {kBullets, 5051},   {kNumbers, 5030}, {kAlignRight, 5026}};
  const std::map<CommandId, std::string_view> names = {{kAddAttachment, "FileAttachmentButton"},
                                                       {kDeleteAttachment, "DeleteAttachmentButton"},
                                                       {kFont, "FontButton"},
                                                       {kBody, "BodyButton"},
                                                       {kLine, "LineButton"},
                                                       {kTable, "TableButton"},
                                                       {kPicture, "PictureButton"},
                                                       {kHyperlink, "HyperlinkButton"},
                                                       {kSend, "SendButton"},
                                                       {kAccount, "EmailButton"},
                                                       {kGroups, "GroupButton"},
                                                       {kHistory, "HistoryButton"},
                                                       {kSignature, "SignatureButton"},
                                                       {kPreview, "PreviewButton"},
                                                       {kMergeEmail, "MergeEmail"},
                                                       {kMergeAdditional3, "MergeAdditional3"}};
  for (const Command& row : Commands()) {
    const auto code = codes.find(row.id);
    EXPECT_EQ(row.editor_code, code == codes.end() ? 0 : code->second) << row.text;
    const auto name = names.find(row.id);
    EXPECT_EQ(row.name, name == names.end() ? row.name : name->second) << row.text;
  }
}

// The same keys twice would do nothing at all.
TEST(CommandTable, NoKeysStandForTwoCommands) {
  std::set<std::string_view> taken;
  for (const Command& row : Commands()) EXPECT_TRUE(row.keys.empty() || taken.insert(row.keys).second) << row.keys;
}

}  // namespace
}  // namespace quillcast::desktop
