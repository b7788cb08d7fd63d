// What an extraction writes, where, and what becomes of the rest when one thing fails.
#include "mail_file/extraction.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include "support/room_on_disk.h"
#include "support/temporary_folder.h"

namespace quillcast::mail_file {
namespace {

namespace fs = std::filesystem;

constexpr const char* kLetter =
    "Received: from a.example (a.example [192.0.2.1]) by b.example with ESMTP id 7 for <ada@example.org>;"
    " Sat, 14 Nov 2026 22:40:05 +0530\r\n"
    "Received: by a.example\r\n"
    "From: Bob <bob@example.org>\r\nTo: \"Ada, L.\" <ada@example.org>, eve@example.org\r\nCc: =?utf-8?q?a=0Aname?= "
    "<c@example.org>\r\nBcc: d@example.org\r\nSubject: =?utf-8?q?Gr=C3=BC=C3=9Fe?=\r\n"
    "Content-Type: multipart/mixed; boundary=b\r\n\r\n"
    "--b\r\nContent-Type: text/plain; charset=utf-8\r\n\r\nGr\xC3\xBC\xC3\x9F\x65 \xE2\x82\xAC\r\n"
    "--b\r\nContent-Disposition: attachment; filename=\"../a.bin\"\r\nContent-Transfer-Encoding: base64\r\n\r\nAAEC\r\n"
    "--b\r\nContent-Type: image/png\r\nContent-Disposition: attachment\r\nContent-Transfer-Encoding: "
    "base64\r\n\r\niVBO\r\n"
    "--b\r\nContent-Disposition: attachment; filename=a.bin\r\n\r\nplain\r\n"
    "--b--\r\n";

struct Scene {
  test::TemporaryFolder place;
  ExtractionRequest request;
  platform::OwnFiles own;
  platform::CancelToken cancel;

  Scene() {
    for (const char* folder : {"parts", "page"}) fs::create_directory(place / folder);
    request.file = place.Write("letter.eml", kLetter).string();
  }
  std::string In(const char* name) const { return (place / name).string(); }
  void AskForAll() {
    request.parts_folder = In("parts");
    request.body_file = In("body");
    request.second_folder = In("page");
    request.recipients_file = In("recipients");
    request.stamps_file = In("stamps");
  }
  ExtractionOutcome Extract() {
    const auto loading = Load(request.file, {});
    ChosenFolders folders(own);
    return mail_file::Extract(*loading->message, request, folders, cancel);
  }
  std::string Read(const char* name) const { return test::ReadAll(place / name); }
};

TEST(Extraction, ComplainsInOrder) {
  struct Row {
    const char* file;
    const char* body;
    const char* recipients;
    const char* stamps;
    const char* message;
  };
  for (const Row& row : {
           Row{"", "", "", "", "Please specify a file."},
           Row{"f", "", "", "", "There is nothing to export."},
           Row{"f", "a", "a", "a", "You cannot assign a single file for both Message Body and Recipients."},
           Row{"f", "a", "b", "a", "You cannot assign a single file for both Message Body and Timestamps."},
           Row{"f", "a", "b", "b", "You cannot assign a single file for both Recipients and Timestamps."},
           Row{"f", "", "b", "b", "You cannot assign a single file for both Recipients and Timestamps."},
           Row{"f", "a", "A", "./a", ""},
           Row{"f", "a", "", "", ""},
       }) {
    const auto complaint = CheckExtraction(
        {.file = row.file, .body_file = row.body, .recipients_file = row.recipients, .stamps_file = row.stamps});
    EXPECT_EQ(complaint ? complaint->message : "", row.message);
    EXPECT_EQ(complaint && complaint->control, *row.file == '\0');
  }
}

TEST(Extraction, WritesAllFive) {
  Scene scene;
  scene.AskForAll();
  const auto outcome = scene.Extract();
  EXPECT_EQ(outcome.failed, 0U);
  EXPECT_EQ(outcome.parts, (std::vector<std::string>{"a.bin", "Part 3.png", "a (2).bin"}));
  EXPECT_EQ(ExtractionNews(scene.request, outcome).at(1).InEnglish(),
            "Written: " + scene.In("body") + ", " + scene.In("recipients") + ", " + scene.In("stamps") + ", " +
                scene.In("page/index.html") + ".");
  EXPECT_EQ(scene.Read("parts/a.bin"), std::string("\0\1\2", 3));
  EXPECT_EQ(scene.Read("parts/a (2).bin"), "plain");
  EXPECT_EQ(scene.Read("body"), "Grüße €\r\n");
  EXPECT_NE(scene.Read("page/index.html").find("Grüße"), std::string::npos);
  EXPECT_EQ(scene.Read("recipients"),
            "Name: Ada, L.\r\nAddress: ada@example.org\r\nType: Normal recipient\r\n-\r\n"
            "Name: \r\nAddress: eve@example.org\r\nType: Normal recipient\r\n-\r\n"
            "Name: a?name\r\nAddress: c@example.org\r\nType: Carbon copy recipient\r\n-\r\n"
            "Name: \r\nAddress: d@example.org\r\nType: Blind carbon copy recipient\r\n-\r\n");
  EXPECT_EQ(
      scene.Read("stamps"),
      "By: b.example\r\nDateTime: 2026-11-14 22:40:05\r\nFor: ada@example.org\r\n"
      "From: a.example (a.example [192.0.2.1])\r\nID: 7\r\nProtocol: ESMTP\r\nTimeZoneBias: +330\r\nVia: \r\n-\r\n"
      "By: a.example\r\nDateTime: \r\nFor: \r\nFrom: \r\nID: \r\nProtocol: \r\nTimeZoneBias: \r\nVia: \r\n-\r\n");
  for (const char* file : {"parts/a.bin", "body", "page/index.html", "recipients", "stamps"}) {
    struct stat status {};
    ::stat((scene.place / file).c_str(), &status);
    EXPECT_EQ(status.st_mode & 0777, 0600U) << file;
  }
}

TEST(Extraction, TakesBodyPartsWhenAskedAndMakesNoEmptyStamps) {
  Scene scene;
  scene.request.file = scene.place.Write("plain.eml", "Subject: x\r\n\r\nHello\r\n").string();
  scene.request.parts_folder = scene.In("parts");
  scene.request.stamps_file = scene.In("stamps");
  EXPECT_TRUE(scene.Extract().parts.empty());
  scene.request.with_body_parts = true;
  EXPECT_EQ(scene.Extract().parts, std::vector<std::string>{"Part 0.txt"});
  EXPECT_FALSE(fs::exists(scene.place / "stamps"));
  scene.place.Write("stamps", "of another");
  const auto told = ExtractionNews(scene.request, scene.Extract());
  EXPECT_EQ(told.back().InEnglish(),
            "The message has no stamps: " + scene.In("stamps") + " is of an earlier time, and was left as it is.");
  EXPECT_EQ(scene.Read("stamps"), "of another");
}

TEST(Extraction, ReplacesTheTextsAndCountsWhatTheirSetLacks) {
  Scene scene;
  scene.request.body_file = scene.place.Write("body", "a longer text that was there before").string();
  scene.request.code_page = "ISO-8859-1";
  const auto outcome = scene.Extract();
  EXPECT_EQ(scene.Read("body"), "Gr\xFC\xDF\x65 ?\r\n");
  EXPECT_EQ(outcome.lost, 1U);
  ASSERT_EQ(ExtractionTroubles(outcome, "ISO-8859-1").size(), 1U);
  EXPECT_EQ(ExtractionTroubles(outcome, "ISO-8859-1").front().InEnglish(),
            "1 character is not in ISO-8859-1 and was written as \"?\".");
}

TEST(Extraction, GoesOnPastWhatFails) {
  Scene scene;
  scene.AskForAll();
  scene.request.parts_folder = scene.In("letter.eml") + "/parts";
  scene.request.second_folder = scene.In("letter.eml");
  fs::permissions(scene.place.Write("recipients", "kept"), fs::perms::owner_read);
  scene.own.kept = {scene.place / "body"};
  const auto outcome = scene.Extract();
  EXPECT_EQ(outcome.failed, 4U);
  EXPECT_EQ(outcome.files, std::vector<std::string>{scene.In("stamps")});
  EXPECT_EQ(scene.Read("recipients"), "kept");
  EXPECT_FALSE(fs::exists(scene.place / "body"));
}

TEST(Extraction, LeavesTheMessageFileAsItIs) {
  Scene scene;
  fs::create_symlink(scene.request.file, scene.place / "link");
  for (const std::string& file : {scene.request.file, scene.In("link")}) {
    scene.request.body_file = file;
    EXPECT_EQ(scene.Extract().failed, 1U) << file;
    EXPECT_EQ(test::ReadAll(scene.request.file), kLetter);
  }
}

TEST(Extraction, LeavesNothingHalfOnAFullDisk) {
  Scene scene;
  std::string letter = kLetter;
  for (int i = 0; i < 30; ++i)
    letter.insert(letter.rfind("--b--"), "--b\r\nContent-Type: x/x; name=x\r\n\r\nlarge\r\n");
  scene.place.Write("letter.eml", letter);
  scene.request.parts_folder = scene.In("parts/made/for it");
  scene.request.body_file = scene.In("body");
  const auto outcome = [&] {
    const test::RoomOnDisk small(4);
    return scene.Extract();
  }();
  EXPECT_EQ(outcome.parts, (std::vector<std::string>{"a.bin", "Part 3.png"}));
  EXPECT_EQ(outcome.failed, 32U);
  const auto told = ExtractionTroubles(outcome, {});
  ASSERT_EQ(told.size(), 2U) << "once, and how many more";
  EXPECT_NE(told[0].InEnglish().find("parts/made/for it/a (2).bin"), std::string::npos) << told[0].InEnglish();
  EXPECT_EQ(told[1].InEnglish(), "31 more files were not written.");
  EXPECT_EQ(std::distance(fs::directory_iterator(scene.request.parts_folder), {}), 2);
  EXPECT_FALSE(fs::exists(scene.place / "body"));
}

TEST(Extraction, IsGivenUp) {
  Scene scene;
  scene.AskForAll();
  scene.cancel.Request();
  const auto outcome = scene.Extract();
  EXPECT_TRUE(outcome.is_cancelled);
  EXPECT_EQ(outcome.failed, 0U) << "what was not tried did not fail";
  EXPECT_TRUE(fs::is_empty(scene.place / "parts") && !fs::exists(scene.place / "body"));
}

}  // namespace
}  // namespace quillcast::mail_file
