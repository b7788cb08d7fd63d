// How files are cut into lines of fields: quotes, delimiters, headings, and mappings that are kept.
#include <fmt/format.h>
#include <gtest/gtest.h>

#include <thread>
#include <tuple>

#include "recipients/import/file_look.h"
#include "recipients/import/find_delimiter.h"
#include "recipients/import/headings.h"
#include "recipients/import/kept_mappings.h"
#include "recipients/import/quoted_reader.h"
#include "support/temporary_folder.h"

namespace quillcast::recipients {
namespace {

// "1:a|b" for the fields a and b on line 1; "3:?" for a line with a fault.
std::string Records(std::string_view text, std::size_t piece, std::size_t most_fields = 18) {
  std::string all;
  const FieldLines::Take take = [&all](const FieldLine& line) {
    all += (all.empty() ? "" : " ") + std::to_string(line.number) + ":";
    if (line.fault != LineFault::kNone) all += line.fault == LineFault::kOpenQuote ? "open" : "long";
    for (std::size_t at = 0; at < line.fields.size(); ++at) all += (at == 0 ? "" : "|") + std::string(line.fields[at]);
    return true;
  };
  QuotedReader reader(',', most_fields, take);
  for (std::size_t at = 0; at < text.size(); at += piece) reader.Feed(text.substr(at, piece));
  reader.Finish();
  return all;
}

TEST(QuotedReader, ReadsRfc4180HoweverItComes) {
  struct Case {
    std::string text, records;
  };
  for (const Case& c : std::initializer_list<Case>{
           Case{"a,b\r\nc,d", "1:a|b 2:c|d"}, Case{"a\rb\nc\r\n\r\nd\n", "1:a 2:b 3:c 5:d"},
           Case{"\"a,b\",\"c\r\nd\"\r\ne", "1:a,b|c\r\nd 3:e"}, Case{"\"say \"\"hi\"\"\",x\n\"\"", "1:say \"hi\"|x 2:"},
           Case{"\"a\nb\rc\r\nd\"\ne", "1:a\nb\rc\r\nd 5:e"}, Case{",\n,,\n", "1:| 2:||"},
           Case{"a\"b,c\"\n", "1:a\"b|c\""}, Case{"\"a\"b\"c,d\n", "1:ab\"c|d"}, Case{" \"a\",b\n", "1: \"a\"|b"},
           Case{"a,\"b\n", "1:open"}, Case{"a\n\"", "1:a 2:open"}, Case{"\"\"\"\"\n", "1:\""}, Case{"", ""},
           Case{"\n\r\n\r", ""}, Case{"a,\xC3\xA4\n", "1:a|\xC3\xA4"}}) {
    for (const std::size_t piece : {1, 2, 3, 1000}) EXPECT_EQ(Records(c.text, piece), c.records) << c.text << piece;
  }
  EXPECT_EQ(Records("a,b,\"c,\n\",d\ne", 1, 2), "1:a|b 3:e");
}

TEST(QuotedReader, BoundsARecord) {
  const std::string most(QuotedReader::kLongestRecord - 2, 'x');
  EXPECT_EQ(Records(most + ",y\nz", 65536).size(), most.size() + 8);
  EXPECT_EQ(Records(most + ",yy\nz", 65536), "1:long 2:z");
  EXPECT_EQ(Records("\"" + most + "\n\n\n\",y\nz", 65536), "1:long 5:z");
}

TEST(FindDelimiter, CutsTheAddressOut) {
  struct Case {
    std::vector<std::string> lines;
    const char* name;
    bool is_needed, is_quoted;
  };
  for (const Case& c :
       std::initializer_list<Case>{{{"Ada,a@x.org", "Bob,b@x.org"}, "Comma", true, false},
                                   {{"Name;Mail", "Love, Ada;a@x.org", "Bee, Bob;b@x.org"}, "Semicolon", true, false},
                                   {{"Ada Love\ta@x.org\t1,5", "Bob\tb@x.org\t2,5"}, "Tab", true, false},
                                   {{"a@x.org:Ada", "b@x.org:Bob"}, "Colon", true, false},
                                   {{"Ada a@x.org", "Bob b@x.org"}, "Space", true, false},
                                   {{"\"Love; Ada\",\"a@x.org\"", "\"Bee\",\"b@x.org\""}, "Comma", true, true},
                                   {{"a@x.org", "o'b@x.org"}, "Comma", false, false},
                                   {{"http://x;a@x.org;12:30", "", "http://y;b@x.org;13:30"}, "Semicolon", true, false},
                                   {{"a;b;c", "d;e;f,g"}, "Semicolon", true, false},
                                   {{}, "Comma", false, false}}) {
    const auto found = FindDelimiter(c.lines);
    EXPECT_EQ(found.delimiter.name, c.name) << (c.lines.empty() ? "" : c.lines[0]);
    EXPECT_EQ(found.is_needed, c.is_needed) << c.name;
    EXPECT_EQ(found.is_quoted, c.is_quoted) << c.name;
  }
}

TEST(Headings, MapByWhatListsCallTheFields) {
  using Headings = std::vector<std::string_view>;
  struct Case {
    const char* from;
    Headings headings;
    const char* mapping;
    bool looks;
  };
  for (const Case& c : std::initializer_list<Case>{
           {"English", {"First Name", "Last Name", "E-mail Address"}, "Email Address=3,First Name=1,Last Name=2", true},
           {"German", Headings{"Anrede", "Vorname", "Nachname", "Straße", "PLZ", "Ort", "E-Mail-Adresse"},
            "Email Address=7,Title=1,First Name=2,Last Name=3,City=6,Address 1=4,ZIP Code=5", true},
           {"French", Headings{"CIVILITÉ", "Nom", "PRÉNOM", "Courriel", "Société"},
            "Email Address=4,Title=1,First Name=3,Last Name=2,Company=5", true},
           {"Spanish", {"Nombre", "Apellidos", "Correo electrónico"}, "Email Address=3,First Name=1,Last Name=2", true},
           {"Russian", {"Имя", "ФАМИЛИЯ", "Электронная почта"}, "Email Address=3,First Name=1,Last Name=2", true},
           {"Japanese", {"姓", "名", "メールアドレス"}, "Email Address=3,First Name=2,Last Name=1", true},
           {"a web shop",
            Headings{"Order", "Billing First Name", "billing_last_name", "Billing Email", "Shipping City"},
            "Email Address=4,First Name=2,Last Name=3,City=5", true},
           {"an address book",
            Headings{"Name", "Given Name", "Family Name", "E-mail 1 - Value", "Organization 1 - Name",
                     "Address 1 - City"},
            "Email Address=4,First Name=2,Last Name=3,City=6,Company=5", true},
           {"whole names", {"\"name\"", "EMAIL"}, "Email Address=2,First Name=1", true},
           {"a name beside a first one", {"Name", "Vorname", "Mail"}, "Email Address=3,First Name=2,Last Name=1", true},
           {"the plainest", {"Work Email", "Email", "email"}, "Email Address=2", true},
           {"data", {"Ada", "Lovelace", "ada@x.org"}, "", false},
           {"one word by chance", {"Paris", "City"}, "City=2", false},
           {"nothing", {}, "", false}}) {
    const auto found = MapByHeadings(c.headings);
    EXPECT_EQ(MappingText(found.mapping), c.mapping) << c.from;
    EXPECT_EQ(found.looks_like_headings, c.looks) << c.from;
  }
  std::vector<std::string_view> many(30, "x");
  many[24] = "Email";
  many[17] = "City";
  const auto wide = MapByHeadings(many);
  EXPECT_EQ(MappingText(wide.mapping), "City=18");
  EXPECT_EQ(wide.beyond, std::vector<std::size_t>{25});
  EXPECT_EQ(wide.columns, (std::vector<std::size_t>{25, 18}));
}

TEST(KeptMappings, AreFoundByNameUntilDeleted) {
  const test::TemporaryFolder folder;
  profile::SettingsStore settings(folder.path() / "settings.db");
  KeptMapping shop{"Web shop", *ParseMapping("Email Address=2,City=25", 25), ';', false, true, 1, "March", "KOI8-R",
                   {25, 1}};
  const KeptMapping plain{"a", *ParseMapping("Email Address=1"), '\t', true, false, 0};
  EXPECT_TRUE(ListMappingNames(settings)->empty());
  ASSERT_TRUE(KeepMapping(settings, shop) && KeepMapping(settings, plain));
  EXPECT_EQ(*FindMapping(settings, "WEB SHOP"), shop);
  EXPECT_EQ(*FindMapping(settings, "a"), plain);
  shop.skip = 3;
  ASSERT_TRUE(KeepMapping(settings, shop));
  EXPECT_EQ(*ListMappingNames(settings), (std::vector<std::string>{"Web shop", "a"}));
  EXPECT_EQ(*FindMapping(settings, "web shop"), shop);
  ASSERT_TRUE(DeleteMapping(settings, "web shop"));
  EXPECT_EQ(FindMapping(settings, "Web shop").error().failure, Failure::kUsage);
  EXPECT_EQ(DeleteMapping(settings, "Web shop").error().failure, Failure::kUsage);
  for (const std::string& name : {std::string(" "), std::string("a\nb"), std::string(101, 'x')})
    EXPECT_EQ(KeepMapping(settings, {name, {}, ',', false, false, 0}).error().failure, Failure::kUsage) << name;
  EXPECT_EQ(ListMappingNames(settings)->size(), 1U);
  // What is not there is as it is at the start.
  ASSERT_TRUE(settings.Write("Import", "Mappings", ""));
  EXPECT_TRUE(ListMappingNames(settings)->empty());
  ASSERT_TRUE(settings.Write("Import", "Mappings", R"({"x":{}})"));
  EXPECT_EQ(*FindMapping(settings, "x"), (KeptMapping{.name = "x", .mapping = {}}));
}

TEST(KeptMappings, AreLeftAsTheyAreWhereNoneOfThemCanBeRead) {
  const test::TemporaryFolder folder;
  profile::SettingsStore settings(folder.path() / "settings.db");
  for (const char* other : {R"({"a":{)", "nonsense", "[1]", "null"}) {
    ASSERT_TRUE(settings.Write("Import", "Mappings", other));
    for (const Result<void>& done :
         {KeepMapping(settings, {.name = "New", .mapping = {}}), DeleteMapping(settings, "a")}) {
      ASSERT_FALSE(done) << other;
      EXPECT_EQ(done.error().failure, Failure::kBadData);
      EXPECT_EQ(done.error().what.InEnglish(),
                "The kept mappings are damaged: \"Mappings\" of the section \"Import\" in " + settings.file().string() +
                    " cannot be read.");
      EXPECT_EQ(done.error().remedy.InEnglish(), "“Remove” forgets all of them; keep them anew then.");
    }
    EXPECT_EQ(ListMappingNames(settings).error().failure, Failure::kBadData) << other;
    EXPECT_EQ(*settings.Read("Import", "Mappings", ""), other);
    EXPECT_TRUE(*ForgetDamagedMappings(settings)) << other;
    ASSERT_TRUE(KeepMapping(settings, {.name = "New", .mapping = {}}));
    EXPECT_FALSE(*ForgetDamagedMappings(settings)) << "mended since";
    EXPECT_EQ(ListMappingNames(settings)->size(), 1U) << other;
    ASSERT_TRUE(ForgetMappings(settings));
    EXPECT_TRUE(ListMappingNames(settings)->empty()) << other;
  }
}

TEST(KeptMappings, OfTwoProgramsAreAllThere) {
  const test::TemporaryFolder folder;
  const auto keep = [&folder](const std::string& program) {
    profile::SettingsStore settings(folder.path() / "settings.db");
    for (int n = 0; n < 20; ++n) {
      EXPECT_TRUE(KeepMapping(settings, {.name = program + std::to_string(n), .mapping = {}}));
      if (n % 2 == 0) {
        EXPECT_TRUE(DeleteMapping(settings, program + std::to_string(n)));
      }
    }
  };
  std::thread other(keep, "other");
  keep("one");
  other.join();
  EXPECT_EQ(ListMappingNames(profile::SettingsStore(folder.path() / "settings.db"))->size(), 20U);
}

// A look keeps what it shows of a file, however much of it is left out.
TEST(ALook, KeepsTheLastOfManyLinesThatAreLeftOut) {
  const test::TemporaryFolder folder;
  std::string list;
  for (int n = 1; n <= 2'000; ++n) list += std::to_string(n) + "\n";
  const auto file = folder.Write("list.txt", list);
  for (const auto& [skip, first, lines] :
       {std::tuple(0, 1, 20U), {1, 1, 21U}, {5, 1, 25U}, {6, 6, 21U}, {1'990, 1'990, 11U}}) {
    const auto look = LookAtFile({.file = file, .reading = {}, .skip = skip}, "UTF-8", nullptr);
    ASSERT_TRUE(look.sample);
    EXPECT_EQ(look.sample->lines.front().number, first) << skip;
    EXPECT_EQ(look.sample->lines.size(), lines) << skip;
  }
  EXPECT_TRUE(LookAtFile({.file = file, .reading = {}, .skip = kMostSkipped}, "UTF-8", nullptr).sample->lines.empty());
}

TEST(KeptMappings, ThatAreDamagedAreRefusedAndKeepTheOthers) {
  const test::TemporaryFolder folder;
  profile::SettingsStore settings(folder.path() / "settings.db");
  for (const auto& [key, value] : {std::pair("columns", R"("1,two")"),
                                   {"columns", "25"},
                                   {"columns", R"("0")"},
                                   {"map", R"("Mail=1")"},
                                   {"map", "1"},
                                   {"delimiter", R"("Pipe")"},
                                   {"skip", R"("a")"},
                                   {"skip", "1.5"},
                                   {"skip", "-3"},
                                   {"skip", "1000000001"},
                                   {"skip", "9223372036854775807"},
                                   {"skip", "18446744073709551615"},
                                   {"quotes", "1"},
                                   {"rfc4180", R"("true")"},
                                   {"sheet", "2"},
                                   {"encoding", "null"}}) {
    const std::string stored = fmt::format(
        R"({{"Mine":{{"map":"Email Address=1","{}":{}}},"Other":{{"map":"Email Address=2"}}}})", key, value);
    // An object has each key once: the last one counts.
    ASSERT_TRUE(settings.Write("Import", "Mappings", stored));
    const auto mine = FindMapping(settings, "mine");
    ASSERT_FALSE(mine) << key << value;
    EXPECT_EQ(mine.error().failure, Failure::kBadData);
    EXPECT_EQ(mine.error().what.InEnglish(),
              fmt::format(R"(The mapping "Mine" is damaged: its "{}" cannot be read.)", key));
    EXPECT_TRUE(FindMapping(settings, "Other"));
    // Another that is kept leaves it as it is, to be mended or removed.
    ASSERT_TRUE(KeepMapping(settings, {.name = "New", .mapping = {}}));
    EXPECT_EQ(ListMappingNames(settings)->size(), 3U);
    EXPECT_FALSE(FindMapping(settings, "Mine"));
    EXPECT_TRUE(DeleteMapping(settings, "MINE"));
  }
}

}  // namespace
}  // namespace quillcast::recipients
