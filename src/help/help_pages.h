// The help: one page of HTML for each topic, in a folder that is installed with the program. The window shows them;
// here they are listed, found, searched, and read as text.
#pragma once

#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

#include "platform/result.h"

namespace quillcast::help {

// Where everybody begins; its links are the contents.
inline constexpr const char* kWelcomeTopic = "Welcome.htm";

struct Page {
  std::string topic;  // the name of its file: "Group Manager 1.htm"
  std::string title;
  std::string html = {};
};

// All of them: Welcome, then in the order in which it names them last, then those that it does not name, by topic. A
// page of more than 1 MiB is left out. Fails with kNoInput where the folder does not hold Welcome.
Result<std::vector<Page>> LoadPages(const std::filesystem::path& folder);

// The page of a topic, with or without ".htm", or of a title, whatever its capitals; else those whose topic or title
// holds the words. Pointers into `pages`.
std::vector<const Page*> PagesNamed(const std::vector<Page>& pages, std::string_view words);

// As a terminal shows it: wrapped, with the descriptions of pictures in their places, and its links as topics to ask
// for.
std::string TextOf(const Page& page);

struct Hit {
  const Page* page = nullptr;
  std::string excerpt;  // one line round the first word that was found
};

// The pages that hold all the words, whatever their capitals; those whose title has them first. Without a word, none.
std::vector<Hit> Search(const std::vector<Page>& pages, std::string_view words);

// What a link in a page leads to: the topic without the place in it; empty where it leads out of the help or stays on
// its page.
std::string TopicOfLink(std::string_view href);

}  // namespace quillcast::help
