// The chosen ones of a mailing, a page at a time.
#include "run/chosen_pages.h"

#include <gtest/gtest.h>

#include "profile/folders.h"
#include "support/kept_mailing.h"
#include "support/temporary_folder.h"

namespace quillcast::run {
namespace {

TEST(ChosenPages, HaveEachAtItsNumberAndReadWhatIsAskedForAlone) {
  const test::TemporaryFolder folder;
  profile::Folders folders;
  folders.data = folder.path();
  folders.temporary = folder.path();
  const platform::SystemClock clock;
  constexpr int kPeople = 1000;
  ASSERT_TRUE(test::LeaveCutOff(folders, "Readers", false, kPeople));
  ChosenPages pages(folders, clock);
  pages.Choose(1, SetOf({ResultState::kNotTried}));  // the fifth and all behind it
  for (const int number : {0, 1, 199, 200, 995, 3}) {
    const auto row = pages.At(number);
    ASSERT_TRUE(row && *row) << number;
    EXPECT_EQ((*row)->position, number + 5);
    EXPECT_EQ((*row)->address, test::FakeRows::AddressAt(number + 5));
    EXPECT_EQ((*row)->standing, "not tried");
    EXPECT_EQ((*row)->why, "");
  }
  EXPECT_EQ(pages.reads(), 3);
  EXPECT_FALSE(*pages.At(996)) << "there is none";
  pages.Choose(1, RecipientChoice(StateSet().set(), {"45"}));
  const auto deferred = pages.At(0);
  ASSERT_TRUE(deferred && *deferred);
  EXPECT_EQ((*deferred)->position, 3);
  EXPECT_EQ((*deferred)->why.substr(0, 24), "451 4.2.0 later (Error 8");
  pages.Choose(1, SetOf({ResultState::kUnknown}));
  const auto unknown = pages.At(0);
  ASSERT_TRUE(unknown && *unknown);
  EXPECT_EQ((*unknown)->why.find("Error"), std::string::npos) << (*unknown)->why << ": nobody told of any";
  EXPECT_NE((*unknown)->why, "");
  pages.Choose(7, StateSet().set());
  EXPECT_FALSE(pages.At(0));
}

}  // namespace
}  // namespace quillcast::run
