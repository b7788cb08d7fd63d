#include "help/about_program.h"

#include <gtest/gtest.h>

#include <map>

#include "support/temporary_folder.h"

namespace quillcast::help {
namespace {

class Variables final : public platform::Environment {
 public:
  explicit Variables(std::map<std::string, std::string> values) : values_(std::move(values)) {}
  std::optional<std::string> Get(const char* name) const override {
    const auto found = values_.find(name);
    return found == values_.end() ? std::nullopt : std::optional(found->second);
  }

 private:
  std::map<std::string, std::string> values_;
};

TEST(AboutProgram, NamesNobodyWhoSitsThere) {
  const test::TemporaryFolder folder;
  std::filesystem::create_directory(folder / "real");
  std::filesystem::create_directory_symlink("real", folder / "link");
  struct Case {
    std::string home;
    std::string shown;
    std::string data = "/home/ada/x/";
  };
  for (const Case& c :
       {Case{"/home/ada", "~/x/"}, Case{"/home/ada/", "~/x/"}, Case{"/home/ad", "/home/ada/x/"},
        Case{"/", "/home/ada/x/"}, Case{"", "/home/ada/x/"}, Case{"//home/./ada", "~/x/"},
        Case{folder / "link", "~/x", folder / "real" / "x"}, Case{folder / "real", "~/x", folder / "link" / "x"}}) {
    const Variables environment({{"HOME", c.home}, {"LANG", "de_DE.UTF-8"}, {"USER", "ada"}});
    profile::Folders folders;
    folders.data = c.data;
    std::map<std::string, std::string> facts;
    for (const Fact& fact : SystemFacts(folders, environment)) facts[fact.what.InEnglish()] = fact.value;
    EXPECT_EQ(facts["Data folder"], c.shown) << c.home;
    EXPECT_EQ(facts["Language"], "de_DE.UTF-8");
    EXPECT_FALSE(facts["System"].empty() || facts["Kernel"].empty());
  }
}

}  // namespace
}  // namespace quillcast::help
