#include "document/table_html.h"

#include <gtest/gtest.h>

namespace quillcast::document {
namespace {

struct CheckCase {
  std::string TableChoice::*field;
  const char* text;
  const char* message;  // null where it passes
  TableBox control = {};
};

TEST(TableHtml, ChecksEachFieldInOrder) {
  for (const auto& [field, text, message, control] : std::initializer_list<CheckCase>{
           {&TableChoice::border, "", "Please enter your border.", TableBox::kBorder},
           {&TableChoice::border, "0", "Please enter a valid border.", TableBox::kBorder},
           {&TableChoice::border, "1", nullptr},
           {&TableChoice::border, "99", nullptr},
           {&TableChoice::border, "100", "Please enter a valid border.", TableBox::kBorder},
           {&TableChoice::spacing, "", "Please enter your spacing.", TableBox::kSpacing},
           {&TableChoice::spacing, "0", nullptr},
           {&TableChoice::spacing, "100", "Please enter a valid spacing.", TableBox::kSpacing},
           {&TableChoice::padding, "", "Please enter your padding.", TableBox::kPadding},
           {&TableChoice::padding, "-1", "Please enter a valid padding.", TableBox::kPadding},
           {&TableChoice::rows, "", "Please enter your row.", TableBox::kRows},
           {&TableChoice::rows, "0", "Please enter a valid row.", TableBox::kRows},
           {&TableChoice::rows, "2.5", "Please enter a valid row.", TableBox::kRows},
           {&TableChoice::columns, "", "Please enter your column.", TableBox::kColumns},
           {&TableChoice::columns, "many", "Please enter a valid column.", TableBox::kColumns},
           {&TableChoice::width, "", nullptr},
       }) {
    TableChoice choice;
    choice.*field = text;
    const auto complaint = CheckTable(choice);
    ASSERT_EQ(complaint.has_value(), message != nullptr) << text;
    if (message != nullptr) {
      EXPECT_EQ(*complaint, (Complaint<TableBox>{message, control}));
    }
  }
  EXPECT_EQ(CheckTable({.border = "0", .columns = ""})->control, TableBox::kBorder) << "the first that fails";
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
