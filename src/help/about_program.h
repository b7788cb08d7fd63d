// What the program is: its version, what it stands on and under which licences, and the system that it runs on.
#pragma once

#include <string>
#include <vector>

#include "platform/environment.h"
#include "platform/sentence.h"
#include "profile/folders.h"

namespace quillcast::help {

inline constexpr const char* kLicence = "Apache-2.0";

// A library that the program stands on. The version is that of the one that runs, where it tells it.
struct Library {
  std::string name;
  std::string version;
  std::string licence;  // SPDX
  std::string package;  // by which the build finds it; empty for one that is found in another way
};

// Of the command and the core; a face adds its own.
std::vector<Library> Libraries();

struct Fact {
  Sentence what;
  std::string value;
};

// What helps to understand a fault: the version, the system, the language, the kind of desktop, and where the files
// are, in which "~" stands for the home folder. No account, nobody's name, no recipient.
std::vector<Fact> SystemFacts(const profile::Folders& folders, const platform::Environment& environment);

// The title with the version: "Tarnwick Quillcast Classic Edition 1.0".
std::string NameWithVersion();

// All of it as lines of text, to be copied into a message.
std::string AsText(const std::vector<Fact>& facts, const std::vector<Library>& libraries);

}  // namespace quillcast::help
