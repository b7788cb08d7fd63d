// What Save and Print of a report box ask, and what they write.
#include "domain/report_output.h"

#include <gtest/gtest.h>

#include "support/scripted_prompts.h"
#include "support/temporary_folder.h"

namespace quillcast::domain {
namespace {

namespace fs = std::filesystem;
using platform::Answer;

constexpr const char* kLocked = "ask: The output file is locked.\r\nWould you like to unlock it now?";

struct Desk {
  test::TemporaryFolder folder;
  test::ScriptedPrompts prompts;
  platform::OwnFiles own{{folder / "kept"}, {}};

  // The words for the status line; empty where nothing is said.
  std::string Save(std::string_view text, const char* code_page = "UTF-8") {
    prompts.shown.clear();
    const auto saved = SaveReport(text, code_page, own, prompts);
    if (!saved) return InOneLine(saved.error());
    return *saved ? (*saved)->InEnglish() : std::string();
  }
};

TEST(ReportOutput, WritesTheTextInTheCodePageWithOneLineEndMore) {
  struct Case {
    const char *name, *text, *code_page, *written, *said;
  };
  for (const Case& c : std::initializer_list<Case>{
           {"lines of LF", "one\ntwo", "UTF-8", "one\r\ntwo\r\n", "The report is in "},
           {"lines of CRLF", "one\r\ntwo\r\n", "C", "one\r\ntwo\r\n\r\n", "The report is in "},
           {"a code page",
            "Gr\xC3\xBC\xC3\x9F"
            "e",
            "ISO-8859-1",
            "Gr\xFC\xDF"
            "e\r\n",
            "The report is in "},
           {"what it lacks", "\xD0\x9F 1", "ISO-8859-1", "? 1\r\n", "1 character is not in ISO-8859-1"},
           {"UTF-8", "\xD0\x9F", "UTF-8", "\xD0\x9F\r\n", "The report is in "}}) {
    SCOPED_TRACE(c.name);
    Desk desk;
    desk.prompts.files = {desk.folder.Write("out.txt", "a longer text than what comes in its place")};
    EXPECT_EQ(desk.Save(c.text, c.code_page).find(c.said), 0U);
    EXPECT_EQ(test::ReadAll(desk.folder / "out.txt"), c.written);
    EXPECT_EQ(desk.prompts.shown, std::vector<std::string>{"save: Save"});
  }
}

TEST(ReportOutput, IsShownInLinesThatABoxCanLayOut) {
  const auto umlauts = [](int count) {
    std::string text;
    for (int n = 0; n < count; ++n) text += "\xC3\xBC";
    return text;
  };
  struct Case {
    std::string text, shown;
  };
  for (const Case& c : {Case{"", ""}, Case{"a\tb\r\n\r\nc\rd\n", "a\tb\n\nc\nd\n"},
                        Case{std::string("\t\0\x1B[2J\xE2\x80\xAE\xFF", 10), "\t??[2J??"},
                        Case{umlauts(2000) + "\n", umlauts(2000) + "\n"},
                        Case{umlauts(4001), umlauts(2000) + "\n" + umlauts(2000) + "\n" + umlauts(1)}}) {
    EXPECT_EQ(ShownReport(c.text), c.shown);
  }
  const std::string blank = ShownReport(std::string(std::size_t{1} << 20, '\n'));
  EXPECT_TRUE(blank == std::string(20000, '\n') + "[1,028,577 more lines: Save and Print have them]") << blank.size();
}

TEST(ReportOutput, AsksBeforeItWrites) {
  Desk desk;
  EXPECT_EQ(desk.Save(""), "");
  EXPECT_EQ(desk.prompts.shown, std::vector<std::string>{"warn: There is no data to save."});
  EXPECT_EQ(desk.Save("x"), "");  // no file is chosen
  EXPECT_EQ(desk.prompts.last_file_question.filter, "Text Files (*.txt)|*.txt|All Files (*.*)|*.*");
  EXPECT_TRUE(desk.prompts.last_file_question.ask_before_overwriting);

  const auto file = desk.folder.Write("out.txt", "old");
  fs::permissions(file, fs::perms::owner_read);
  desk.prompts.files = {file};
  EXPECT_NE(desk.Save("x").find("is locked and was left as it is"), std::string::npos);
  EXPECT_EQ(desk.prompts.shown, (std::vector<std::string>{"save: Save", kLocked}));
  EXPECT_EQ(test::ReadAll(file), "old");
  desk.prompts.answers = {Answer::kYes};
  desk.Save("x");
  EXPECT_EQ(test::ReadAll(file), "x\r\n");

  for (const char* nowhere : {"missing/out.txt", "kept"}) {
    desk.prompts.files = {desk.folder / nowhere};
    EXPECT_NE(desk.Save("x").find("Cannot "), std::string::npos) << nowhere;
    EXPECT_FALSE(fs::exists(desk.folder / nowhere));
  }
}

TEST(ReportOutput, AsksBeforeItPrints) {
  Desk desk;
  EXPECT_FALSE(MayPrintReport("", desk.prompts));
  desk.prompts.answers = {Answer::kNo, Answer::kYes};
  EXPECT_FALSE(MayPrintReport("x", desk.prompts));
  EXPECT_TRUE(MayPrintReport("x", desk.prompts));
  const std::string question =
      "ask: Do you still want to print this document?\r\nPlease consider your environmental responsibility before "
      "printing.";
  EXPECT_EQ(desk.prompts.shown, (std::vector<std::string>{"warn: There is no data to print.", question, question}));
  EXPECT_EQ(PrintedReport("one\ntwo\n"),
            "Tarnwick Quillcast Classic 1.0\n------------------------------------\none\ntwo\n");
}

}  // namespace
}  // namespace quillcast::domain
