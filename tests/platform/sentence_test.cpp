// Sentences whose pattern can be found in another language before their values go in.
#include "platform/sentence.h"

#include <gtest/gtest.h>

#include <map>

namespace quillcast {
namespace {

TEST(Sentence, PutsValuesIntoItsPatternInAnyLanguage) {
  const std::map<std::string, std::string> german = {
      {"It was cancelled.", "Es wurde abgebrochen."},
      {"{} of {} were read.", "Von {1} wurden {0} gelesen."},
      {"{} (#{})", "{} (Nr. {})"},
      {"{} is gone.", "{7} ist {weg}."},
  };
  struct Case {
    Sentence sentence;
    const char* english;
    const char* translated;
  };
  const Case cases[] = {
      {"It was cancelled.", "It was cancelled.", "Es wurde abgebrochen."},
      {std::string("It was cancelled."), "It was cancelled.", "It was cancelled."},  // a server's words stay its own
      {Say("{} of {} were read.", 3, std::string("{}")), "3 of {} were read.", "Von {} wurden 3 gelesen."},
      {Say("{} (#{})", Sentence("It was cancelled."), 7), "It was cancelled. (#7)", "Es wurde abgebrochen. (Nr. 7)"},
      {Say("{} is gone.", "It"), "It is gone.", "{7} ist {weg}."},
      {"{ and }", "{ and }", "{ and }"},
      {Sentence(), "", ""},
  };
  for (const Case& c : cases) {
    EXPECT_EQ(c.sentence.InEnglish(), c.english);
    EXPECT_EQ(c.sentence.In([&](const std::string& pattern) {
      const auto found = german.find(pattern);
      return found == german.end() ? pattern : found->second;
    }),
              c.translated);
  }
}

}  // namespace
}  // namespace quillcast
