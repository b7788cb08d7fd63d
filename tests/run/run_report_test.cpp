// The report: its lines to the letter, and what becomes of it when it cannot be written.
#include "run/run_report.h"

#include <gtest/gtest.h>

#include "run/sending_run.h"
#include "support/room_on_disk.h"
#include "support/temporary_folder.h"

namespace quillcast::run {
namespace {

smtp::Outcome FailureWith(int code, std::string reason = {}) {
  return {.code = static_cast<smtp::ResultCode>(code), .reply = {}, .reason = std::move(reason)};
}

RunReport ReportInto(const std::filesystem::path& file, std::vector<std::string>& shown,
                     Delivery delivery = Delivery::kSent) {
  return {std::move(*platform::FileWriter::CreateNew(file)),
          [&shown](std::string_view line) { shown.emplace_back(line); }, delivery};
}

TEST(RunReport, WritesItsLinesToTheLetter) {
  const test::TemporaryFolder folder;
  std::vector<std::string> shown;
  {
    RunReport report = ReportInto(folder / "r.txt", shown);
    report.Started();
    report.SendingTo(3, PartialRange{2, 4});
    report.BodyNotLoaded(2);
    report.BodyNotLoaded(77);
    report.LogLine("S: 220 ready");
    report.SubjectNotEncoded();
    report.Sent();
    report.Failed(FailureWith(9, "It is at home."));
    report.Failed(FailureWith(12));
    report.Completed({.sent = 1, .failed = 2, .not_tried = 3, .stopped = Error{Failure::kIo, "The disk is full.", ""}});
    report.Flush();
    EXPECT_FALSE(report.trouble());
  }
  EXPECT_EQ(test::ReadAll(folder / "r.txt"),
            "Personal Sending process has been started.\r\n"
            "Partial Sending to 3 recipients (from #2 to #4).\r\n"
            "Error 2: Failure reading file.\r\n\r\n"
            "S: 220 ready\r\n"
            "Error encoding subject.\r\n\r\n"
            "Message sent successfully.\r\n\r\n"
            "There was an error sending your message.\r\n"
            "Error 9: There was an error connecting to the SMTP mail server.\r\n\r\n"
            "There was an error sending your message.\r\n"
            "Error 12: Unknown Error.\r\n\r\n"
            "Personal Sending process has been completed.\r\n"
            "1 messages sent during process.\r\n"
            "2 messages failed during process.\r\n");
  EXPECT_EQ(shown[0], "Personal Sending process has been started.");
}

TEST(RunReport, SaysNowhereThatWhatWasWrittenWasSent) {
  const test::TemporaryFolder folder;
  std::vector<std::string> shown;
  RunReport report = ReportInto(folder / "r.txt", shown, Delivery::kWritten);
  report.Started();
  report.SendingTo(3, PartialRange{2, 4});
  report.SendingTo(3, {});
  report.Sent();
  report.Failed(FailureWith(8));
  report.Failed(FailureWith(1, "The disk is full.\nFree some of it."));
  report.Completed({.sent = 2});
  report.Completed({.sent = 1, .failed = 1});
  report.Completed({.failed = 1});
  report.SendingTo(1, {});
  report.SendingTo(1, PartialRange{2, 2});
  EXPECT_EQ(shown,
            (std::vector<std::string>{
                "The messages are written into files. Nothing is sent.",
                "Partial writing for 3 recipients (from #2 to #4).",
                "Writing for 3 recipients.",
                "Message written.",
                "",
                "The message was not written.",
                "Error 8: An error was reported in response to a recipient address. The SMTP server may refuse to "
                "handle mail for unknown recipients.",
                "",
                "The message was not written.",
                "The disk is full.",
                "Free some of it.",
                "",
                "The messages have been written into files. Nothing was sent.",
                "2 messages written during process.",
                "Not all messages have been written into files. Nothing was sent.",
                "1 message written during process.",
                "1 message failed during process.",
                "No message has been written into a file. Nothing was sent.",
                "1 message failed during process.",
                "Writing for 1 recipient.",
                "Partial writing for 1 recipient (from #2 to #2)."}));
}

TEST(RunReport, LeavesOutCountsOfNothing) {
  const test::TemporaryFolder folder;
  std::vector<std::string> shown;
  RunReport report = ReportInto(folder / "r.txt", shown);
  report.Started();
  report.SendingTo(1, {});
  report.Completed({.failed = 1});
  report.Completed({.sent = 1});
  EXPECT_EQ(shown, (std::vector<std::string>{
                       "Personal Sending process has been started.", "Sending to 1 recipients.",
                       "Personal Sending process has been completed.", "1 messages failed during process.",
                       "Personal Sending process has been completed.", "1 messages sent during process."}));
}

TEST(RunReport, RemembersThatItCouldNotBeWritten) {
  const test::TemporaryFolder folder;
  std::vector<std::string> shown;
  RunReport report = ReportInto(folder / "r.txt", shown);
  report.Sent();
  {
    const test::RoomOnDisk none(0);
    report.Flush();
  }
  ASSERT_TRUE(report.trouble());
  EXPECT_EQ(report.trouble()->failure, Failure::kIo);
  EXPECT_NE(report.trouble()->what.InEnglish().find("r.txt"), std::string::npos);
}

}  // namespace
}  // namespace quillcast::run
