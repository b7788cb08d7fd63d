// Accounts of other mail programs, out of profiles that are made here; nobody's own are looked at.
#include "account/import/account_import.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <fstream>
#include <functional>

#include "account/import/find_accounts.h"
#include "account/import/preferences.h"
#include "account/import/program_readers.h"
#include "support/temporary_folder.h"

namespace quillcast::account {
namespace {

namespace fs = std::filesystem;

// One line an account: everything of it but where it stands, parted by "|"; then what was passed over.
std::string Told(const FoundAccounts& found, const fs::path& home) {
  std::string lines;
  for (const auto& a : found.accounts) {
    for (const auto& text : {a.account_name, a.name, a.email, a.server, a.port, a.security, a.user_name})
      lines += text + "|";
    lines += std::string(a.program) + "\n";
  }
  for (const auto& why : found.passed_over) {
    std::string text = why.InEnglish();
    for (auto at = text.find(home.string()); at != std::string::npos; at = text.find(home.string()))
      text.replace(at, home.string().size(), "~");
    lines += "! " + text + "\n";
  }
  return lines;
}

std::string FindIn(const fs::path& home) {
  const platform::CancelToken never;
  return Told(FindAccounts(AccountRoots(home), never), home);
}

std::string Pref(const std::string& name, const std::string& value) {
  return "user_pref(\"mail." + name + "\", " + value + ");\n";
}

// A profile of one account, with its own server.
std::string PrefsOf(const std::string& who) {
  return "// Mozilla User Preferences\n" + Pref("accountmanager.accounts", R"("a1")") +
         Pref("account.a1.identities", R"("id1")") + Pref("account.a1.server", R"("s1")") +
         Pref("server.s1.name", "\"" + who + "'s\"") + Pref("identity.id1.fullName", "\"" + who + "\"") +
         Pref("identity.id1.useremail", "\"" + who + "@example.org\"") + Pref("identity.id1.smtpServer", R"("m1")") +
         Pref("smtpserver.m1.hostname", "\"mail." + who + ".example\"");
}

constexpr const char* kClawsAccount =
    "[Account: 1]\naccount_name=Home\nname=Ada\naddress=ada@example.org\nsmtp_server=mail.example.org\n";

TEST(AccountImport, ThunderbirdAccountsComeInTheirOrder) {
  const test::TemporaryFolder home;
  home.Write(
      ".thunderbird/profiles.ini",
      "[Profile1]\nName=other\nIsRelative=1\nPath=Profiles/other\n\n[Profile0]\r\nName=default\r\nIsRelative=0\r\n"
      "Path=" +
          (home / "elsewhere").string() +
          "\r\nDefault=1\r\n[General]\nVersion=2\n\n"
          "[InstallFDC34C9F024745EB]\nDefault=Profiles/installed\nLocked=1\n[Profile2]\nPath=Profiles/installed\n"
          "[Profile3]\nPath=Profiles/gone\n");
  home.Write(".thunderbird/Profiles/installed/prefs.js",
             Pref("accountmanager.accounts", R"("a2,local,a1,a2, a3")") + Pref("account.local.server", R"("s9")") +
                 Pref("account.a2.identities", R"("id3,id2")") + Pref("account.a2.server", R"("s2")") +
                 Pref("account.a1.identities", R"("id1")") + Pref("account.a3.identities", R"("id4")") +
                 Pref("server.s2.name", R"("W\u00f6rk \"A\" \ud83d\ude00")") +
                 Pref("identity.id1.fullName", R"("Bob")") + Pref("identity.id1.useremail", R"("bob@example.net")") +
                 Pref("identity.id2.fullName", R"('Ada L.')") + Pref("identity.id2.useremail", R"("ada@example.org")") +
                 Pref("identity.id2.smtpServer", R"("m2")") + Pref("identity.id3.fullName", R"("Ada")") +
                 Pref("identity.id3.useremail", R"("a@example.org")") + Pref("identity.id3.smtpServer", R"("gone")") +
                 Pref("identity.id4.fullName", R"("No address")") + Pref("smtpservers", R"("m1,m2")") +
                 Pref("smtp.defaultserver", R"("m1")") + Pref("smtpserver.m1.hostname", R"("first.example")") +
                 Pref("smtpserver.m1.port", "465") + Pref("smtpserver.m1.try_ssl", "3") +
                 Pref("smtpserver.m1.authMethod", "1") + Pref("smtpserver.m1.username", R"("nobody")") +
                 Pref("smtpserver.m2.hostname", R"("second.example")") + Pref("smtpserver.m2.port", "70000") +
                 Pref("smtpserver.m2.try_ssl", "2") + Pref("smtpserver.m2.username", R"("ada")") +
                 Pref("smtpserver.m2.authMethod", "3"));
  home.Write(".thunderbird/Profiles/installed/user.js", Pref("identity.id1.fullName", R"("Bob by user.js")"));
  home.Write(".thunderbird/Profiles/other/prefs.js", PrefsOf("carol"));
  home.Write("elsewhere/prefs.js", PrefsOf("dan"));
  EXPECT_EQ(FindIn(home.path()),
            "Wörk \"A\" 😀|Ada|a@example.org|first.example|465|TLS||Thunderbird\n"
            "Wörk \"A\" 😀|Ada L.|ada@example.org|second.example||STARTTLS|ada|Thunderbird\n"
            "|Bob by user.js|bob@example.net|first.example|465|TLS||Thunderbird\n"
            "dan's|dan|dan@example.org|mail.dan.example||||Thunderbird\n"
            "carol's|carol|carol@example.org|mail.carol.example||||Thunderbird\n"
            "! 1 account was left out for want of a name, an address or a server: "
            "~/.thunderbird/Profiles/installed/prefs.js.\n"
            "! A profile is not where it should be: ~/.thunderbird/Profiles/gone.\n");
}

TEST(AccountImport, EvolutionSourcesAreJoined) {
  const test::TemporaryFolder home;
  const auto write = [&](const char* uid, const char* content) {
    home.Write(std::string(".config/evolution/sources/") + uid + ".source", content);
  };
  write("b",
        "[Data Source]\nDisplayName=Work\nDisplayName[de]=Arbeit\nEnabled=true\nParent=acc\n\n[Mail Identity]\n"
        "Address=ada@example.org\nName=Ada\\sL.\n\n[Mail Submission]\nTransportUid=way\nSentFolder=x\n");
  write("a",
        "[Data Source]\nDisplayName=Old\nEnabled=false\n[Mail Identity]\nAddress=old@example.org\nName=Old\n"
        "[Mail Submission]\nTransportUid=way\n");
  write("c",
        "[Data Source]\nDisplayName=Lost\n[Mail Identity]\nAddress=lost@example.org\nName=Lost\n"
        "[Mail Submission]\nTransportUid=nowhere\n");
  write("way",
        "[Data Source]\nDisplayName=Work\n[Mail Transport]\nBackendName=smtp\n[Authentication]\nHost=out.example\n"
        "Port=587\nUser=ada\nMethod=PLAIN\n[Security]\nMethod=starttls-on-standard-port\n");
  EXPECT_EQ(FindIn(home.path()),
            "Work|Ada L.|ada@example.org|out.example|587|STARTTLS|ada|Evolution\n"
            "! 1 account was left out for want of a name, an address or a server: ~/.config/evolution/sources.\n");
}

TEST(AccountImport, ClawsMailSectionsAreAccounts) {
  const test::TemporaryFolder home;
  home.Write(".claws-mail/accountrc",
             "\xEF\xBB\xBF[Account: 1]\naccount_name=Twin\nname=Ada\naddress=ada@example.org\nsmtp_server=one.example\n"
             "set_smtpport=1\nsmtp_port=465\nssl_smtp=1\nuse_smtp_auth=1\nuser_id=fetches\nsmtp_user_id=\n"
             "smtp_password=!secret\n\n[Account: 2]\naccount_name=Twin\nname=Bob\naddress=bob@example.org\n"
             "smtp_server=two.example\nset_smtpport=0\nsmtp_port=2525\nssl_smtp=2\nuse_smtp_auth=1\nuser_id=fetches\n"
             "smtp_user_id=sends\n[Account: 3]\nname=Eve\naddress=eve@example.org\nsmtp_server=three.example\n"
             "ssl_smtp=0\nuse_smtp_auth=0\nuser_id=fetches\n[Account: 4]\nname=News\nsmtp_server=\n[Other]\nname=x\n");
  EXPECT_EQ(FindIn(home.path()),
            "Twin|Ada|ada@example.org|one.example|465|TLS|fetches|Claws Mail\n"
            "Twin|Bob|bob@example.org|two.example||STARTTLS|sends|Claws Mail\n"
            "|Eve|eve@example.org|three.example||None||Claws Mail\n"
            "! 1 account was left out for want of a name, an address or a server: ~/.claws-mail/accountrc.\n");
}

TEST(AccountImport, PackagedProgramsHaveTheirPlaces) {
  const test::TemporaryFolder home;
  for (const char* place : {".var/app/org.example.Mail/.thunderbird", "snap/thunderbird/common/.thunderbird",
                            ".mozilla-thunderbird", "snap/other/x1/.thunderbird"}) {
    home.Write(std::string(place) + "/profiles.ini", "[Profile0]\nPath=p\n");
    home.Write(std::string(place) + "/p/prefs.js", PrefsOf(std::string(place).substr(0, 6)));
  }
  fs::create_symlink("x1", home / "snap/other/current");
  fs::create_symlink("../other/x1", home / "snap/thunderbird/current");  // one place, read once
  home.Write(".var/app/org.example.Claws/config/claws-mail/accountrc", kClawsAccount);
  home.Write(".var/app/org.example.Evo/config/evolution/sources/a.source",
             "[Mail Identity]\nName=Evo\nAddress=e@example.org\n[Authentication]\nHost=h\n");
  EXPECT_EQ(FindIn(home.path()),
            ".mozil's|.mozil|.mozil@example.org|mail..mozil.example||||Thunderbird\n"
            "Home|Ada|ada@example.org|mail.example.org||||Claws Mail\n"
            "|Evo|e@example.org|h||||Evolution\n"
            ".var/a's|.var/a|.var/a@example.org|mail..var/a.example||||Thunderbird\n"
            "snap/o's|snap/o|snap/o@example.org|mail.snap/o.example||||Thunderbird\n"
            "snap/t's|snap/t|snap/t@example.org|mail.snap/t.example||||Thunderbird\n");
  EXPECT_EQ(FindIn(home / "nobody"), "");
}

// Each stands where the program keeps its accounts, beside one that is whole and is found all the same.
TEST(AccountImport, WhatCannotBeReadIsToldAndHoldsNobodyUp) {
  using Make = std::function<void(const fs::path&)>;
  const auto write = [](std::string text) {
    return [text = std::move(text)](const fs::path& file) { std::ofstream(file, std::ios::binary) << text; };
  };
  struct Case {
    const char* name;
    Make make;
    const char* told;
  };
  const std::string claws = "[Account: 1]\nname=A\naddress=a@b.org\nsmtp_server=";
  for (const Case& c : {
           Case{"missing", [](const fs::path&) {}, ""},
           Case{"empty", write(""), ""},
           Case{"a folder", [](const fs::path& file) { fs::create_directory(file); }, "! "},
           Case{"a pipe that nobody writes", [](const fs::path& file) { ::mkfifo(file.c_str(), 0600); }, "! "},
           Case{"a device", [](const fs::path& file) { fs::create_symlink("/dev/zero", file); }, "! "},
           Case{"a link to nothing", [](const fs::path& file) { fs::create_symlink("nowhere", file); }, "! "},
           Case{"a link to itself", [](const fs::path& file) { fs::create_symlink(file.filename(), file); }, "! "},
           Case{"too large",
                [](const fs::path& file) {
                  std::ofstream(file).close();
                  fs::resize_file(file, 1LL << 40);
                },
                "! "},
           Case{"zero bytes", write(std::string(5000, '\0')), ""},
           Case{"Latin-1", write(claws + "caf\xE9.example\n"), "! 1 account was left out because its text is damaged"},
           Case{"UTF-16", write(std::string("\xFF\xFE[\0A\0]\0", 8)), ""},
           Case{"a control character", write(claws + "a\x1B[2J.example\n"), "! 1 account was left out because"},
           Case{"256 characters", write(claws + std::string(256, 'x') + "\n"), "! 1 account was left out because"},
           Case{"no address", write("[Account: 1]\nname=A\naddress=nobody\nsmtp_server=m.example\n"),
                "! 1 account was left out because its address is none"},
           Case{"cut off", write("[Account: 1]\nname=A\naddress"), "! 1 account was left out for want"},
       }) {
    SCOPED_TRACE(c.name);
    const test::TemporaryFolder home;
    fs::create_directories(home / ".claws-mail");
    c.make(home / ".claws-mail/accountrc");
    home.Write(".config/claws-mail/accountrc", kClawsAccount);
    const std::string told = FindIn(home.path());
    EXPECT_EQ(told.substr(0, told.find('\n') + 1), "Home|Ada|ada@example.org|mail.example.org||||Claws Mail\n");
    const std::string rest = told.substr(told.find('\n') + 1);
    EXPECT_TRUE(*c.told == '\0' ? rest.empty() : rest.starts_with(c.told)) << rest;
  }
}

TEST(AccountImport, DamagedPreferencesLoseThemselvesAlone) {
  for (const char* damaged : {"user_pref(\"mail.x\", \"cut", "user_pref(\"mail.x\", \"\\u12",
                              "user_pref(\"mail.x\", \"\\ud800 alone\");", "user_pref(\"mail.x\" 5);",
                              "user_pref(\"mail.x\", five);", "user_pref(\"mail.x\", 5", "user_pref(mail.x, 5);"}) {
    SCOPED_TRACE(damaged);
    Preferences preferences;
    EXPECT_FALSE(ReadPreferences(std::string(damaged) + "\nuser_pref(\"mail.y\", -5);\n", "mail.", preferences));
    EXPECT_EQ(preferences, (Preferences{{"mail.y", "-5"}}));
  }
  Preferences preferences;
  EXPECT_FALSE(ReadPreferences(std::string_view("\xFF\xFEu\0s\0", 6), "mail.", preferences))
      << "none is read, and told";
  EXPECT_TRUE(ReadPreferences("\xEF\xBB\xBFuser_pref(\"mail.y\", 1);", "mail.", preferences));
  EXPECT_EQ(std::exchange(preferences, {}), (Preferences{{"mail.y", "1"}}));
  EXPECT_TRUE(
      ReadPreferences("# user_pref(\"mail.x\", 1);\n//user_pref(\"mail.x\", 1);\nuser_pref(\"other.x\", bad\n"
                      "  sticky_pref( 'mail.x' , \"\\x41\\n\\'\\\\\" ) ; // seen\npref(\"mail.z\", true);",
                      "mail.", preferences));
  EXPECT_EQ(preferences, (Preferences{{"mail.x", "A\n'\\"}, {"mail.z", "true"}}));
}

// What a listing would show otherwise than it is, and what would be more than one server or address.
TEST(AccountImport, TakesNoAccountThatIsNotWhatItSeems) {
  const FoundAccount sound{"Work", "Ada", "ada@example.org", "mail.example.org", "", "", "ada"};
  platform::CancelToken cancel;
  const auto takes = [&](auto change) {
    FoundAccount account = sound;
    change(account);
    FoundAccountList list(cancel);
    list.Add(account);
    return list.Take().accounts.size() == 1;
  };
  EXPECT_TRUE(takes([](FoundAccount&) {}));
  EXPECT_FALSE(takes([](FoundAccount& a) { a.name = "Ada \u202Eevil"; }));
  EXPECT_FALSE(takes([](FoundAccount& a) { a.server = "a.example;evil.example:25"; }));
  EXPECT_FALSE(takes([](FoundAccount& a) { a.email = "a@x.example, b@y.example"; }));
}

TEST(AccountImport, ManyAccountsAreListedAndOnlySoMany) {
  const test::TemporaryFolder home;
  std::string names;
  std::string prefs = Pref("smtpservers", R"("m")") + Pref("smtpserver.m.hostname", R"("m.example")");
  for (int i = 0; i < 10000; ++i) {
    const std::string n = std::to_string(i);
    names += (names.empty() ? "a" : ",a") + n;
    prefs += Pref("account.a" + n + ".identities", "\"i" + n + "\"") + Pref("identity.i" + n + ".fullName", R"("N")") +
             Pref("identity.i" + n + ".useremail", "\"" + n + "@example.org\"");
  }
  home.Write(".thunderbird/profiles.ini", "[Profile0]\nPath=p\n");
  home.Write(".thunderbird/p/prefs.js", prefs + Pref("accountmanager.accounts", "\"" + names + "\""));
  platform::CancelToken cancel;
  const auto roots = AccountRoots(home.path());
  const auto found = FindAccounts(roots, cancel);
  ASSERT_EQ(found.accounts.size(), 10000U);
  EXPECT_EQ(found.accounts.back().email, "9999@example.org");
  FoundAccountList full(cancel);
  for (std::size_t i = 0; i < kMostAccounts + 5; ++i) full.Add(found.accounts.front());
  EXPECT_TRUE(full.is_over());
  EXPECT_EQ(full.Take().accounts.size(), kMostAccounts);
  FoundAccountList told(cancel);
  for (std::size_t i = 0; i < kMostTold + 7; ++i) told.PassOver("x");
  EXPECT_EQ(told.Take().also_passed_over, 7);
  cancel.Request();
  EXPECT_TRUE(FindAccounts(roots, cancel).accounts.empty());
}

TEST(AccountImport, WritesWhatIsGivenAndWhatWasTicked) {
  struct Case {
    const char* name;
    TakenBeside beside;
    FoundAccount account;
    const char* written;
    const char* server_before = "before.example.org";
  };
  const FoundAccount whole{"Work", "Ada", "ada@example.org", "mail.example.org", "587", "STARTTLS", "ada"};
  const FoundAccount bare{"", "Ada", "ada@example.org", "mail.example.org", "", "", ""};
  FoundAccount same_user = whole;
  same_user.user_name = "before";
  const std::string given = "Name=Ada Email=ada@example.org Server=mail.example.org ";
  for (const Case& c :
       {Case{"nothing ticked", {}, whole, "Port=25"}, Case{"port", {.port = true}, whole, "Port=587"},
        Case{"security", {.security = true}, whole, "Port=25 Security=STARTTLS"},
        Case{"user", {.user_name = true}, whole, "Port=25 Auth=1 Username=ada Password="},
        Case{"another server's", {.user_name = true}, same_user, "Port=25 Auth=1 Username=before Password="},
        Case{"the same user", {.user_name = true}, same_user, "Port=25 Auth=1 Username=before", "Mail.Example.org"},
        Case{"another there", {.user_name = true}, whole, "Port=25 Auth=1 Username=ada Password=", "mail.example.org"},
        Case{"what it lacks", {true, true, true}, bare, "Port=25"}}) {
    SCOPED_TRACE(c.name);
    const test::TemporaryFolder folder;
    profile::SettingsStore store(folder / "settings.db");
    for (const auto& [key, value] : std::vector<std::pair<const char*, const char*>>{{"Port", "2525"},
                                                                                     {"Server", c.server_before},
                                                                                     {"Username", "before"},
                                                                                     {"Password", "secret"},
                                                                                     {"PasswordFrom", "Keyring"},
                                                                                     {"Auth", "0"},
                                                                                     {"Security", "TLS"},
                                                                                     {"Wrap", "70"}})
      ASSERT_TRUE(store.Write(kAccountSection, key, value));
    const auto before = AccountSettings::Load(store);
    const auto keys = ImportAccount(store, c.account, c.beside);
    ASSERT_TRUE(keys);
    auto expected = *before;
    const auto after = AccountSettings::Load(store);
    std::string written;
    for (const AccountKey key : *keys) {
      written += (written.empty() ? "" : " ") + std::string(RowOf(key).name) + "=" + (*after)[key];
      expected.Set(key, (*after)[key]);
    }
    EXPECT_EQ(written, given + c.written);
    for (const auto& row : AccountKeyRows()) EXPECT_EQ((*after)[row.key], expected[row.key]) << row.name;
  }
}

// What another program takes for a server may be none that a run could ask.
TEST(AccountImport, LeavesTheAccountWhereTheServerIsNone) {
  const test::TemporaryFolder folder;
  profile::SettingsStore store(folder / "settings.db");
  ASSERT_TRUE(store.Write(kAccountSection, "Server", "before.example.org"));
  for (const auto& [server, said] : {std::pair("http://h/", "Server: \"http://h/\" is no name of a mail server."),
                                     std::pair("h:x", "Server: \"h:x\" names no port of a mail server.")}) {
    const auto keys = ImportAccount(store, {.name = "Ada", .email = "ada@example.org", .server = server}, {});
    ASSERT_FALSE(keys) << server;
    EXPECT_TRUE(keys.error().what.InEnglish().starts_with(said)) << keys.error().what.InEnglish();
  }
  EXPECT_EQ((*AccountSettings::Load(store))[AccountKey::kServer], "before.example.org");
}

TEST(AccountImport, IsChosenByNumberOrName) {
  const std::vector<FoundAccount> accounts = {{"Work", "1"}, {"Twin", "2"}, {"Twin", "3"}, {"1", "4"}, {"17", "5"}};
  for (const auto& [given, comes_to] :
       std::vector<std::pair<const char*, const char*>>{{"1", "1"},
                                                        {"3", "3"},
                                                        {"Work", "1"},
                                                        {"17", "5"},
                                                        {"Twin", "2 accounts are called \"Twin\"."},
                                                        {"0", "No account found has the number or the name \"0\"."},
                                                        {"work", "No account found has the number or the"}}) {
    const auto chosen = ChooseAccount(accounts, given);
    const std::string told = chosen ? chosen->name : chosen.error().what.InEnglish();
    EXPECT_TRUE(told.starts_with(comes_to)) << given << ": " << told;
  }
}

}  // namespace
}  // namespace quillcast::account
