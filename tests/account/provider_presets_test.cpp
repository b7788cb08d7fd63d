// What is offered for an address, and what it fills in.
#include "account/provider_presets.h"

#include <gtest/gtest.h>

namespace quillcast::account {
namespace {

TEST(ProviderPresets, AreFoundByTheDomain) {
  EXPECT_EQ(PresetFor("ada@gmail.com")->server, "smtp.gmail.com");
  EXPECT_EQ(PresetFor(" Ada@GMX.de ")->server, "mail.gmx.net");
  for (const char* none : {"ada@example.org", "ada@mail.gmail.com", "gmail.com", "", "ada@"}) {
    EXPECT_FALSE(PresetFor(none)) << none;
  }
}

TEST(ProviderPresets, FillInTheServerAndKeepTheUser) {
  using enum AccountKey;
  AccountSettings shown;
  shown.Set(kEmail, "ada@gmail.com");
  const auto preset = PresetToOffer(shown);
  ASSERT_TRUE(preset);
  const AccountSettings filled = FilledIn(shown, *preset);
  EXPECT_EQ(
      filled[kServer] + ":" + filled[kPort] + " " + filled[kSecurity] + " " + filled[kAuth] + " " + filled[kUsername],
      "smtp.gmail.com:587 STARTTLS 1 ada@gmail.com");
  EXPECT_FALSE(PresetToOffer(filled)) << "it stands there already";
  shown.Set(kUsername, "ada");
  EXPECT_EQ(FilledIn(shown, *preset)[kUsername], "ada");
}

}  // namespace
}  // namespace quillcast::account
