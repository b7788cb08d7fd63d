// Where the pictures of a message may be taken from, and shown from in the editor. A page from elsewhere can name any
// file of this machine; only what lies beside it, what the program keeps itself, and what the person allowed counts.
#pragma once

#include <filesystem>
#include <set>
#include <vector>

#include "profile/folders.h"

namespace quillcast::document {

// Whether the path begins with that of the folder, as both are written.
bool IsBelow(const std::filesystem::path& file, const std::filesystem::path& folder);

// A value: a run's copy keeps the answers that were given before it.
class PicturePlaces {
 public:
  PicturePlaces() = default;  // nowhere
  // An imported body's folder, the program's own, and those of pictures that were picked, pasted or dropped, and of
  // templates.
  explicit PicturePlaces(const profile::Folders& folders);

  // With everything below it.
  void AllowFolder(const std::filesystem::path& folder);
  // The folder that a document lies in. None for a document without one; the root of the file system is nobody's own.
  PicturePlaces WithOwnFolder(const std::filesystem::path& folder) const;
  // What the person answered about single files.
  void AllowFile(const std::filesystem::path& file);
  void LeaveOut(const std::filesystem::path& file);
  // The same answer for each of them.
  void Answer(const std::vector<std::filesystem::path>& files, bool take);
  bool IsLeftOut(const std::filesystem::path& file) const;

  // Whether the file, with all links and ".." resolved, really lies in one of these places. False for one that is not
  // there. The file is not opened.
  bool Hold(const std::filesystem::path& file) const { return Hold(file, RealFolders()); }
  // For many files: the folders that are there, without links, looked up once.
  std::vector<std::filesystem::path> RealFolders() const;
  bool Hold(const std::filesystem::path& file, const std::vector<std::filesystem::path>& real_folders) const;

  bool operator==(const PicturePlaces&) const = default;

 private:
  std::vector<std::filesystem::path> folders_;
  std::set<std::filesystem::path> allowed_;  // these without links
  std::set<std::filesystem::path> left_out_;
};

}  // namespace quillcast::document
