// What the properties dialog says of a document, and the tables that it and the account read.
#include "document/message_properties.h"

#include <gtest/gtest.h>

#include <random>

#include "document/character_settings.h"
#include "document/offered_charsets.h"
#include "document/phrase_search.h"
#include "document/property_tables.h"
#include "support/temporary_folder.h"

namespace quillcast::document {
namespace {

// FNV-1a over "first TAB second LF" of every row, so that a changed letter or order anywhere is seen. The expected sums
// come from a script of its own.
template <typename Table, typename First, typename Second>
std::uint64_t SumOf(const Table& table, First first, Second second) {
  std::uint64_t sum = 0xcbf29ce484222325;
  const auto add = [&](std::string_view text) {
    for (const char c : text) sum = (sum ^ static_cast<unsigned char>(c)) * 0x100000001b3;
  };
  for (const auto& row : table) add(row.*first), add("\t"), add(row.*second), add("\n");
  return sum;
}

TEST(Tables, AreWholeAndInOrder) {
  EXPECT_EQ(kOfferedCharsets.size(), 37U);
  EXPECT_EQ(SumOf(kOfferedCharsets, &OfferedCharset::display_name, &OfferedCharset::mime_name), 0x8b8e21ca97e37f72U);
  EXPECT_EQ(kDocumentCharsets.size(), 22U);
  EXPECT_EQ(SumOf(kDocumentCharsets, &PropertyRow::searched, &PropertyRow::shown), 0x1bc7d6cbeda5e9a9U);
  EXPECT_EQ(kLanguages.size(), 142U);
  EXPECT_EQ(SumOf(kLanguages, &PropertyRow::searched, &PropertyRow::shown), 0x1e65984b4882231dU);
}

TEST(Properties, TellOfAnEmptyDocumentThatThereIsNothing) {
  EXPECT_EQ(PropertiesLoad("", "", ""), (MessageProperties{"Unsaved", "Not Available", "None", "None", "None"}));
  EXPECT_EQ(PropertiesLoad("/a/b.html", " ", "<p>"), (MessageProperties{"/a/b.html", " ", "None", "None", "None"}));
}

TEST(Properties, TakeTheFirstRowThatOccursAnywhere) {
  struct Case {
    const char *html, *direction, *language, *charset;
  };
  for (const Case& c : std::initializer_list<Case>{
           {"<p dir=\"ltr\">", "Left to Right", "None", "None"},
           {"<P DIR=\"RTL\" LANG=\"HE\">", "Right to Left", "Hebrew", "None"},
           {"<p dir=\"rtl\"><p dir=\"ltr\">", "Right to Left", "None", "None"},
           {"<p dir='rtl' lang='he'><p dir=rtl lang=he><p dir = \"rtl\">", "None", "None", "None"},
           {"<p lang=\"ro-mo\">", "None", "Romanian (Moldavia)", "None"},
           {"<p lang=\"ro-mo\"><p lang=\"ro\">", "None", "Romanian", "None"},
           {"<p lang=\"zu\"><p lang=\"sq\">", "None", "Albanian", "None"},
           {"<p lang=\"pt\"><p lang=\"pt-br\">", "None", "Portuguese (Brazilian)", "None"},
           {"<p lang=\"en\" title=\"no-ny\">en-us", "None", "None", "None"},
           {"the words \"is\" and \"or\"", "None", "Icelandic", "None"},
           {"a\"\"en-us\"\"", "None", "English (United States)", "None"},
           {"<p lang=\"\xE2\x84\xAAok\">", "None", "None", "None"},  // the Kelvin sign is no "k"
           {"charset=UnicodeFFFE", "None", "None", "Unicode (Big-Endian)"},
           {"unicode unicodefffe", "None", "None", "Unicode (Big-Endian)"},
           {"unicodeffff", "None", "None", "Unicode"},
           {"<p>only told of: utf-8</p>", "None", "None", "Unicode (UTF-8)"},
           {"unicode, in utf-8", "None", "None", "Unicode"},
           {"shift-jis", "None", "None", "None"},
           {"charset=Shift_JIS", "None", "None", "Japanese (Shift-JIS)"},
           {"windows-1252 windows-125 windows-1258", "None", "None", "US/Western European"},
           {"windows-windows-874", "None", "None", "Thai"},
           {"iso-8859-15 iso-8859-2", "None", "None", "Central European (ISO 8859-2)"},
           {"ks_c_5601-198ks_c_5601-1987", "None", "None", "Korean"},
       }) {
    EXPECT_EQ(PropertiesLoad("", "", c.html),
              (MessageProperties{"Unsaved", "Not Available", c.direction, c.language, c.charset}))
        << c.html;
  }
}

// One pass finds what searching for each phrase on its own finds, with phrases that overlap and hold each other.
TEST(PhraseSearch, FindsWhatSearchingOneByOneFinds) {
  std::mt19937 random(20260704);
  const auto word = [&](std::size_t longest) {
    std::string text(1 + random() % longest, 'a');
    for (char& c : text) c = static_cast<char>('a' + random() % 3);
    return text;
  };
  for (int round = 0; round < 2000; ++round) {
    std::vector<std::string> phrases;
    while (phrases.size() < 6) {
      auto phrase = word(5);
      if (std::find(phrases.begin(), phrases.end(), phrase) == phrases.end()) phrases.push_back(std::move(phrase));
    }
    const std::string text = word(30);
    const auto occurring = PhraseSearch(phrases).Occurring(text);
    for (std::size_t i = 0; i < phrases.size(); ++i)
      ASSERT_EQ(occurring[i], text.find(phrases[i]) != std::string::npos) << phrases[i] << " in " << text;
  }
}

TEST(Title, IsTheOneThatBrowsersShow) {
  for (const auto& [html, title] : std::initializer_list<std::pair<const char*, const char*>>{
           {"", ""},
           {"<p>no title", ""},
           {"<html><head><TITLE>\n Spring\t papers &amp; inks \n</title></head>", "Spring papers & inks"},
           {"<title>one</title><title>two</title>", "one"},
           {"<title></title><title>two</title>", ""},
           {"<title>a <b>bold</b> one</title>", "a <b>bold</b> one"},
           {"<!-- <title>no</title> --><script>'<title>no</title>'</script><title>yes</title>", "yes"},
           {"<svg><title>icon</title></svg><svg/><title>letter</title>", "letter"},
           {"<title>never ends", "never ends"},
           {"<titles>no</titles><p title=\"no\">", ""},
       }) {
    EXPECT_EQ(TitleOf(html), title) << html;
  }
}

TEST(CharacterSettings, LookUpTheStoredNameToTheLetter) {
  const test::TemporaryFolder folder;
  profile::SettingsStore store(folder / "settings.db");
  EXPECT_EQ(*CharacterSettings(store), "Windows-1252") << "nothing is stored";
  for (const auto& [stored, name] : std::initializer_list<std::pair<const char*, const char*>>{
           {"Western European (Windows)", "Windows-1252"},
           {"Western European (windows)", ""},
           {"Korean", "iso-ir-149"},
           {"Japanese (Shift-JIS)", "shift-jis"},
           {" Korean", ""},
           {"", ""},
       }) {
    ASSERT_TRUE(store.Write("Account", "CharSet", stored));
    EXPECT_EQ(*CharacterSettings(store), name) << stored;
  }
}

}  // namespace
}  // namespace quillcast::document
