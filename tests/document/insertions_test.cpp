// The pieces of HTML that dialogs make: tables, lines, dates.
#include <gtest/gtest.h>

#include "document/date_time.h"
#include "document/line_html.h"
#include "document/table_html.h"

namespace quillcast::document {
namespace {

template <typename Choice, typename Box>
struct CheckCase {
  std::string Choice::*field;
  std::string text;
  const char* message;  // null where it passes
  Box control = {};
};

template <typename Choice, typename Box>
void ExpectChecks(std::optional<Complaint<Box>> (*check)(const Choice&),
                  std::initializer_list<CheckCase<Choice, Box>> cases) {
  for (const auto& [field, text, message, control] : cases) {
    Choice choice;
    choice.*field = text;
    const auto complaint = check(choice);
    ASSERT_EQ(complaint.has_value(), message != nullptr) << text.substr(0, 50);
    if (message != nullptr) {
      EXPECT_EQ(*complaint, (Complaint<Box>{message, control}));
    }
  }
}

const std::string kLong(100'000, '9');
constexpr const char* kArabicSeven = "\u0667";

TEST(Insertions, TableChecksEachFieldInOrder) {
  ExpectChecks<TableChoice, TableBox>(
      CheckTable, {
                      {&TableChoice::border, "", "Please enter your border.", TableBox::kBorder},
                      {&TableChoice::border, "0", "Please enter a valid border.", TableBox::kBorder},
                      {&TableChoice::border, "0.9", "Please enter a valid border.", TableBox::kBorder},
                      {&TableChoice::border, "1", nullptr},
                      {&TableChoice::border, "1.5", nullptr},
                      {&TableChoice::border, "99.00", nullptr},
                      {&TableChoice::border, "99.01", "Please enter a valid border.", TableBox::kBorder},
                      {&TableChoice::border, "100", "Please enter a valid border.", TableBox::kBorder},
                      {&TableChoice::spacing, "", "Please enter your spacing.", TableBox::kSpacing},
                      {&TableChoice::spacing, "0", nullptr},
                      {&TableChoice::spacing, "100", "Please enter a valid spacing.", TableBox::kSpacing},
                      {&TableChoice::padding, "", "Please enter your padding.", TableBox::kPadding},
                      {&TableChoice::padding, "100", "Please enter a valid padding.", TableBox::kPadding},
                      {&TableChoice::padding, "-1", "Please enter a valid padding.", TableBox::kPadding},
                      {&TableChoice::padding, "1.", "Please enter a valid padding.", TableBox::kPadding},
                      {&TableChoice::padding, ".5", "Please enter a valid padding.", TableBox::kPadding},
                      {&TableChoice::padding, "1.5.5", "Please enter a valid padding.", TableBox::kPadding},
                      {&TableChoice::rows, "", "Please enter your row.", TableBox::kRows},
                      {&TableChoice::rows, "0", "Please enter a valid row.", TableBox::kRows},
                      {&TableChoice::rows, "2.5", "Please enter a valid row.", TableBox::kRows},
                      {&TableChoice::rows, kLong, "Please enter a valid row.", TableBox::kRows},
                      {&TableChoice::columns, "", "Please enter your column.", TableBox::kColumns},
                      {&TableChoice::columns, "0", "Please enter a valid column.", TableBox::kColumns},
                      {&TableChoice::columns, "100", "Please enter a valid column.", TableBox::kColumns},
                      {&TableChoice::columns, kArabicSeven, "Please enter a valid column.", TableBox::kColumns},
                      {&TableChoice::width, "", nullptr},
                  });
  TableChoice choice = {.border = "", .spacing = "", .padding = "", .rows = "", .columns = ""};
  for (const auto& [field, control] : std::initializer_list<std::pair<std::string TableChoice::*, TableBox>>{
           {&TableChoice::border, TableBox::kBorder},
           {&TableChoice::spacing, TableBox::kSpacing},
           {&TableChoice::padding, TableBox::kPadding},
           {&TableChoice::rows, TableBox::kRows},
           {&TableChoice::columns, TableBox::kColumns}}) {
    EXPECT_EQ(CheckTable(choice)->control, control) << "the first that fails";
    choice.*field = "1";
  }
}

TEST(Insertions, TablesAreRowsOfCells) {
  EXPECT_EQ(TableHtml({.align = "Center", .border = "2", .spacing = "3", .padding = "4", .rows = "2", .columns = "3"}),
            "<Table align=\"Center\" cellspacing=\"3\" cellpadding=\"4\" border=\"2\" width=100%>\r\n"
            "   <TR>\r\n      <TD>&nbsp;</TD>\r\n      <TD>&nbsp;</TD>\r\n      <TD>&nbsp;</TD>\r\n   </TR>\r\n"
            "   <TR>\r\n      <TD>&nbsp;</TD>\r\n      <TD>&nbsp;</TD>\r\n      <TD>&nbsp;</TD>\r\n   </TR>\r\n"
            "</Table>\r\n");
  EXPECT_EQ(TableHtml({.rows = "1", .columns = "1", .width = "300", .in_percent = false}),
            "<Table cellspacing=\"0\" cellpadding=\"4\" border=\"1\" width=300>\r\n"
            "   <TR>\r\n      <TD>&nbsp;</TD>\r\n   </TR>\r\n</Table>\r\n");
}

TEST(Insertions, LineChecksWidthThenHeight) {
  ExpectChecks<LineChoice, LineBox>(
      CheckLine, {
                     {&LineChoice::width, "", "Please enter your width.", LineBox::kWidth},
                     {&LineChoice::width, "0", nullptr},
                     {&LineChoice::width, "100", nullptr},
                     {&LineChoice::width, "101", "Please enter a valid width.", LineBox::kWidth},
                     {&LineChoice::width, "50.5", "Please enter a valid width.", LineBox::kWidth},
                     {&LineChoice::width, " 5", "Please enter a valid width.", LineBox::kWidth},
                     {&LineChoice::width, kLong, "Please enter a valid width.", LineBox::kWidth},
                     {&LineChoice::height, "", "Please enter your height.", LineBox::kHeight},
                     {&LineChoice::height, "0.5", nullptr},
                     {&LineChoice::height, "100.0", nullptr},
                     {&LineChoice::height, "100.1", "Please enter a valid height.", LineBox::kHeight},
                     {&LineChoice::height, "1e1", "Please enter a valid height.", LineBox::kHeight},
                 });
  EXPECT_EQ(CheckLine({.width = "150", .unit = "Pixels", .height = ""})->message, "Please enter a valid width.");
}

TEST(Insertions, LinesLeaveOutWhatIsUsual) {
  for (const auto& [choice, html] : std::initializer_list<std::pair<LineChoice, const char*>>{
           {{}, "<hr>"},
           {{.align = "Left"}, "<hr align=\"left\">"},
           {{.align = "Right", .is_solid = true}, "<hr align=\"right\" noshade>"},
           {{.width = "99"}, "<hr width=\"99%\">"},
           {{.width = "100.0"}, "<hr width=\"100.0%\">"},
           {{.width = "100", .unit = "Pixels"}, "<hr width=\"100\">"},
           {{.height = "02"}, "<hr size=\"02\">"},
           {{.width = "5", .unit = "Pixels", .height = "3", .align = "Left", .is_solid = true},
            "<hr align=\"left\" noshade width=\"5\" size=\"3\">"},
       }) {
    EXPECT_EQ(LineHtml(choice), html);
  }
}

std::tm Moment(int hour) {
  std::tm moment{};
  moment.tm_year = 105;
  moment.tm_mon = 1;
  moment.tm_mday = 3;
  moment.tm_wday = 4;
  moment.tm_hour = hour;
  moment.tm_min = 7;
  moment.tm_sec = 9;
  return moment;
}

TEST(Insertions, DatesAndTimesAreWrittenInEachFormat) {
  std::vector<std::string> dates;
  for (const char* format : kDateFormats) dates.push_back(Written(Moment(0), format));
  EXPECT_EQ(dates, (std::vector<std::string>{"2/3/05", "02/03/2005", "2005/02/03", "Thursday, February 03, 2005"}));
  for (const auto& [hour, texts] : std::initializer_list<std::pair<int, std::vector<std::string>>>{
           {0, {"12:07:09 AM", "00:07:09", "12:07 AM", "00:07", "12:07 AM", "12 AM"}},
           {9, {"09:07:09 AM", "09:07:09", "09:07 AM", "09:07", "9:07 AM", "9 AM"}},
           {12, {"12:07:09 PM", "12:07:09", "12:07 PM", "12:07", "12:07 PM", "12 PM"}},
           {23, {"11:07:09 PM", "23:07:09", "11:07 PM", "23:07", "11:07 PM", "11 PM"}},
       }) {
    std::vector<std::string> times;
    for (const char* format : kTimeFormats) times.push_back(Written(Moment(hour), format));
    EXPECT_EQ(times, texts);
  }
  EXPECT_EQ(CheckDateTime({})->message, "Please select date format.");
  EXPECT_EQ(CheckDateTime({"2/3/05", ""}), (Complaint<DateTimeBox>{"Please select time format.", DateTimeBox::kTime}));
  EXPECT_FALSE(CheckDateTime({"2/3/05", "9 AM"}));
  EXPECT_EQ(DateTimeText({"2/3/05", "9 AM"}), "2/3/05 - 9 AM");
}

}  // namespace
}  // namespace quillcast::document
