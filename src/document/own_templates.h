// The person's own templates: letters that were kept to begin others from, in "Templates" of the data folder. Each is
// NAME.htm there, readable by the person alone; copies of their pictures lie in "Pictures" beside them and stay when a
// template goes, since letters that were begun from it show them.
#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "document/picture_places.h"
#include "platform/cancel.h"
#include "platform/complaint.h"
#include "platform/prompts.h"
#include "platform/result.h"
#include "profile/folders.h"

namespace quillcast::document {

enum class TemplateNameBox : std::uint8_t { kName };

// What is wrong with a name for a template: an empty or over-long one, one that would lead out of the folder, be hidden
// in it or look like another, or that of a design.
std::optional<Complaint<TemplateNameBox>> CheckTemplateName(std::string_view name);

enum class IfThere : std::uint8_t { kFail, kReplace };

// HTML, and where it comes from.
struct LetterToKeep {
  std::string html;
  std::filesystem::path base;  // what its relative references start from
  PicturePlaces places;        // where its pictures may be taken from
};

// A letter in a file, see LoadBody, to be kept for later ones.
Result<LetterToKeep> ReadLetterToKeep(const std::filesystem::path& file, const profile::Folders& folders);

// Nothing is held: each call looks into the folder, which need not exist. No name that fails the check, and no link, is
// ever opened, so that nothing outside the folder is.
class OwnTemplates {
 public:
  explicit OwnTemplates(std::filesystem::path folder) : folder_(std::move(folder)) {}

  // Their names, in order.
  Result<std::vector<std::string>> List() const;
  bool Has(std::string_view name) const;
  // Its HTML, from which a letter can begin anywhere: pictures are named absolutely. kNoInput when there is none,
  // kBadData for one that is no text.
  Result<std::string> Read(std::string_view name) const;

  // With copies of its pictures, in UTF-8, which it names where it names no character set. kNotPermitted for a name
  // that is taken, unless it is to be replaced. A failure leaves what was there; a request by `cancel`, which may be
  // null, is one.
  Result<void> Keep(std::string_view name, const LetterToKeep& letter, IfThere if_there,
                    const platform::CancelToken* cancel = nullptr) const;
  Result<void> Rename(std::string_view name, std::string_view new_name, IfThere if_there) const;
  Result<void> Remove(std::string_view name) const;
  // To be asked before an export. kNotPermitted for the program's own files, and for a locked one that the person
  // leaves locked.
  static Result<void> MayExportTo(const std::filesystem::path& file, const profile::Folders& folders,
                                  platform::Prompts& prompts);
  // As a file that can go elsewhere, into a folder that is there, with its pictures beside it in "FILE_files".
  // Replaces the file, unless it would be one of the program's own.
  Result<void> Export(std::string_view name, const profile::Folders& folders, const std::filesystem::path& file,
                      const platform::CancelToken* cancel = nullptr) const;

  const std::filesystem::path& folder() const { return folder_; }

 private:
  Result<std::filesystem::path> FileOf(std::string_view name) const;
  Result<std::string> ReadAsKept(std::string_view name) const;

  std::filesystem::path folder_;
};

}  // namespace quillcast::document
