// A folder that a person chose, into which files go that strangers named. Nothing in it is written over, and nothing is
// written anywhere else: a link that lies in it is something that exists, wherever it leads. No file gets the name of
// one that the program keeps, or that a database of the program would take for its own.
#pragma once

#include <cstddef>
#include <filesystem>
#include <functional>
#include <map>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "platform/file.h"
#include "platform/file_attributes.h"

namespace quillcast::mail_file {

class ChosenFolder {
 public:
  // The path itself may lead there by a link. Fails for what is no folder, and for those that the program keeps.
  static Result<ChosenFolder> Open(const std::filesystem::path& path, const platform::OwnFiles& own);

  // The same of one that is made where it is missing.
  static Result<ChosenFolder> OpenOrMake(const std::filesystem::path& path, const platform::OwnFiles& own);

  // Makes a new file, 0600, calls `write` with it, and gives what it is called: `name`, or that with " (2)" and so on
  // where such a file exists. After a failure there is no file. `name` is one of SafePartName; any other that could
  // lead out of the folder is refused.
  Result<std::string> WriteNew(const std::string& name,
                               const std::function<Result<void>(int fd, const std::filesystem::path& file)>& write);

  // The same under that name and no other: fails with kCannotCreate, naming it, where something has it.
  Result<void> WriteAs(const std::string& name,
                       const std::function<Result<void>(int fd, const std::filesystem::path& file)>& write);

  const std::filesystem::path& path() const { return path_; }
  // Whether its path still leads to it.
  bool IsThere() const;

 private:
  ChosenFolder(std::filesystem::path path, platform::UniqueFd fd, const platform::OwnFiles& own)
      : path_(std::move(path)), fd_(std::move(fd)), own_(own), own_names_(platform::OwnNamesIn(path_, own)) {}
  Result<platform::UniqueFd> CreateAs(const std::string& name) const;
  Result<platform::UniqueFd> Create(const std::string& name, std::string& taken);
  Result<void> Fill(const platform::UniqueFd& fd, const std::string& taken,
                    const std::function<Result<void>(int fd, const std::filesystem::path& file)>& write) const;

  std::filesystem::path path_;
  platform::UniqueFd fd_;
  platform::OwnFiles own_;
  std::vector<std::string> own_names_;
  std::unordered_map<std::string, std::size_t>
      last_number_;  // of each name that was taken, so that none is tried twice
};

// Those that one piece of work opens again and again: what is known of the names in each is kept, so that a thousand
// messages with parts of one name are no slower each than one.
class ChosenFolders {
 public:
  explicit ChosenFolders(platform::OwnFiles own) : own_(std::move(own)) {}

  // As ChosenFolder::OpenOrMake at the first time; the same one from then on, as long as it is there.
  Result<ChosenFolder*> OpenOrMake(const std::filesystem::path& path);
  const platform::OwnFiles& own() const { return own_; }

 private:
  platform::OwnFiles own_;
  std::map<std::filesystem::path, ChosenFolder> open_;
};

// Why nothing is written there.
Error IsThereAlready(const std::filesystem::path& file, const char* remedy);

}  // namespace quillcast::mail_file
