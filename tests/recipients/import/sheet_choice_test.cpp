// Which sheet of a spreadsheet is read, and what is told of one that the file lacks.
#include "recipients/import/sheet_choice.h"

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <tuple>
#include <vector>

#include "recipients/import/file_look.h"
#include "support/stored_archive.h"
#include "support/temporary_folder.h"

namespace quillcast::recipients {
namespace {

TEST(SheetChoice, HoldsWhatWasPickedThroughEveryLook) {
  using Step = std::function<bool(SheetChoice&)>;  // whether it tells that a sheet is lacking
  const auto pick = [](const char* sheet) { return Step([=](SheetChoice& all) { return all.Pick(sheet), false; }); };
  const auto want = [](const char* sheet) { return Step([=](SheetChoice& all) { return all.Want(sheet), false; }); };
  const auto look = [](const char* sheet) {
    return Step([=](SheetChoice& all) { return all.Take(sheet).has_value(); });
  };
  struct Row {
    const char* name;
    std::vector<Step> steps;
    const char* to_read;
    const char* picked;
    bool tells = false;  // by the last step
  };
  const Row rows[] = {
      {"nothing is chosen before a look", {}, "", ""},
      {"what is shown is read again", {look("One")}, "One", ""},
      {"what was shown is gone", {look("One"), look("New")}, "New", "", true},
      {"picked, then read as a text and back",
       {look("One"), pick("Two"), look("Two"), look(""), look("Two")},
       "Two",
       "Two"},
      {"wanted, read as a text first", {want("Two"), look("")}, "Two", ""},
      {"wanted and there", {look("One"), want("Two"), look("Two")}, "Two", "Two"},
      {"wanted and lacking before any look", {want("Nope"), look("One")}, "One", "", true},
      {"wanted and lacking beside a picked one", {pick("Two"), want("Nope"), look("Two")}, "Two", "Two", true},
      {"picked after it was wanted", {want("Nope"), pick("Two")}, "Two", "Two"},
      {"picked and gone", {pick("Two"), look("One")}, "One", "", true},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.name);
    SheetChoice choice;
    bool tells = false;
    for (const Step& step : row.steps) tells = step(choice);
    EXPECT_EQ(choice.ToRead(), row.to_read);
    EXPECT_EQ(choice.picked(), row.picked);
    EXPECT_EQ(tells, row.tells);
  }
}

TEST(SheetChoice, ALookFallsBackOnTheOtherSheet) {
  const test::TemporaryFolder folder;
  const auto book = folder.Write("book.xlsx", test::StoredArchive(test::TwoSheets()));
  for (const auto& [wanted, other, read] :
       {std::tuple("", "", "One"), {"T&wo", "One", "T&wo"}, {"Nope", "T&wo", "T&wo"}, {"Nope", "None", "One"}}) {
    const auto look = LookAtFile({.file = book, .reading = {.sheet = wanted}, .other_sheet = other}, "UTF-8", nullptr);
    ASSERT_TRUE(look.sample) << wanted;
    EXPECT_EQ(look.sample->facts.sheet, read) << wanted;
    EXPECT_EQ(look.sheets, (std::vector<std::string>{"One", "T&wo"})) << wanted;
  }
}

}  // namespace
}  // namespace quillcast::recipients
