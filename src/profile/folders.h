// Where this user's files are.
#pragma once

#include <filesystem>
#include <optional>

#include "platform/environment.h"
#include "platform/file_attributes.h"
#include "platform/result.h"

namespace quillcast::profile {

// Made once, by ResolveFolders, and handed on by reference; nothing in it need exist.
struct Folders {
  std::filesystem::path program;     // what was installed: the template Group.mdb, the help, the demonstration
  std::filesystem::path data;        // the working Group.mdb, runs.db and History; ends in a separator
  std::filesystem::path temporary;   // preview files, the import report, working copies
  std::filesystem::path settings;    // the file of the settings store
  bool program_is_installed = true;  // false when a variable names the program folder

  // The fixed names below these folders. Whether the file exists is not asked.
  std::filesystem::path Database() const { return data / "Group.mdb"; }
  std::filesystem::path DatabaseTemplate() const { return program / "Group.mdb"; }
  std::filesystem::path RunJournal() const { return data / "runs.db"; }
  std::filesystem::path Departures() const { return data / "runs.pace"; }  // when messages went out
  std::filesystem::path History() const { return data / "History"; }
  std::filesystem::path ImportBody() const { return data / "ImportBody"; }
  std::filesystem::path Pictures() const { return data / "Pictures"; }  // copies of what was picked or pasted
  std::filesystem::path Templates() const { return data / "Templates"; }
  std::filesystem::path ImportReport() const { return temporary / "ReportButton.txt"; }
  std::filesystem::path PreviewMessage() const { return temporary / "Preview.eml"; }
  std::filesystem::path PreviewBody() const { return temporary / "Preview.htm"; }

  // What a list, a letter or anything else that a person has written somewhere must not replace.
  platform::OwnFiles OwnFiles() const {
    return {.kept = {data, Database(), RunJournal(), Departures(), settings, DatabaseTemplate()},
            .free = {Templates()}};
  }
};

// QUILLCAST_PROGRAM_FOLDER, XDG_DATA_HOME, XDG_CONFIG_HOME, XDG_CACHE_HOME, HOME and Temp decide; `profile` puts the
// data, the settings and the temporary folder below one folder instead. `executable` is the path of the running
// program. Nothing is created. Without a home folder the data folder is below the program folder.
Folders ResolveFolders(const platform::Environment& environment, const std::filesystem::path& executable,
                       const std::optional<std::filesystem::path>& profile);

}  // namespace quillcast::profile
