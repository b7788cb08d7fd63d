#include "document/table_html.h"

#include <gtest/gtest.h>

namespace quillcast::document {
namespace {

struct CheckCase {
  std::string TableChoice::*field;
  const char* text;
  const char* message;  // null where it passes
  const char* control = "";
};

TEST(TableHtml, ChecksEachFieldInOrder) {
  for (const auto& [field, text, message, control] : std::initializer_list<CheckCase>{
           {&TableChoice::border, "", "Please enter your border.", "BorderTextBox"},
           {&TableChoice::border, "0", "Please enter a valid border.", "BorderTextBox"},
           {&TableChoice::border, "1", nullptr},
           {&TableChoice::border, "99", nullptr},
           {&TableChoice::border, "100", "Please enter a valid border.", "BorderTextBox"},
           {&TableChoice::spacing, "", "Please enter your spacing.", "SpacingTextBox"},
           {&TableChoice::spacing, "0", nullptr},
           {&TableChoice::spacing, "100", "Please enter a valid spacing.", "SpacingTextBox"},
           {&TableChoice::padding, "", "Please enter your padding.", "PaddingTextBox"},
           {&TableChoice::padding, "-1", "Please enter a valid padding.", "PaddingTextBox"},
           {&TableChoice::rows, "", "Please enter your row.", "RowsTextBox"},
           {&TableChoice::rows, "0", "Please enter a valid row.", "RowsTextBox"},
           {&TableChoice::rows, "2.5", "Please enter a valid row.", "RowsTextBox"},
           {&TableChoice::columns, "", "Please enter your column.", "ColumnsTextBox"},
           {&TableChoice::columns, "many", "Please enter a valid column.", "ColumnsTextBox"},
           {&TableChoice::width, "", nullptr},
       }) {
    TableChoice choice;
    choice.*field = text;
    const auto complaint = CheckTable(choice);
    ASSERT_EQ(complaint.has_value(), message != nullptr) << text;
    if (message != nullptr) {
      EXPECT_EQ(*complaint, (Complaint{message, control}));
    }
  }
  EXPECT_EQ(CheckTable({.border = "0", .columns = ""})->control, "BorderTextBox") << "the first that fails";
}

TEST(TableHtml, WritesRowsOfCells) {
  EXPECT_EQ(TableHtml({.align = "Center", .border = "2", .spacing = "3", .padding = "4", .rows = "2", .columns = "3"}),
            "<Table align=\"Center\" cellspacing=\"3\" cellpadding=\"4\" border=\"2\" width=100%>\r\n"
            "   <TR>\r\n      <TD>&nbsp;</TD>\r\n      <TD>&nbsp;</TD>\r\n      <TD>&nbsp;</TD>\r\n   </TR>\r\n"
            "   <TR>\r\n      <TD>&nbsp;</TD>\r\n      <TD>&nbsp;</TD>\r\n      <TD>&nbsp;</TD>\r\n   </TR>\r\n"
            "</Table>\r\n");
  EXPECT_EQ(TableHtml({.rows = "1", .columns = "1", .width = "300", .in_percent = false}),
            "<Table cellspacing=\"0\" cellpadding=\"4\" border=\"1\" width=300>\r\n"
            "   <TR>\r\n      <TD>&nbsp;</TD>\r\n   </TR>\r\n</Table>\r\n");
}

}  // namespace
}  // namespace quillcast::document
