#include "document/own_templates.h"

#include <algorithm>

#include "document/body_file.h"
#include "document/designs.h"
#include "document/document_pictures.h"
#include "platform/file.h"
#include "platform/text.h"
#include "platform/utf8.h"

namespace quillcast::document {
namespace {

namespace fs = std::filesystem;

constexpr std::size_t kLongestName = 100;  // bytes; names of files end at 255
constexpr const char* kEnding = ".htm";
constexpr const char* kPictures = "Pictures";

std::string Shown(std::string_view name) { return platform::Printable(name, kLongestName); }

bool IsDesign(std::string_view name) {
  return std::any_of(kDesigns.begin(), kDesigns.end(),
                     [&](std::string_view design) { return platform::EqualsIgnoringAsciiCase(design, name); });
}

// A link could lead anywhere.
bool IsFile(const fs::path& path) { return fs::symlink_status(path, IgnoreErrors()).type() == fs::file_type::regular; }

Error NoSuch(std::string_view name) {
  return {Failure::kNoInput, Say("There is no template \"{}\".", Shown(name)), "Choose one that is listed."};
}

Error IsTaken(std::string_view name) {
  return {Failure::kNotPermitted, Say("There is a template \"{}\" already.", Shown(name)),
          "Take another name, or say that it is to be replaced."};
}

}  // namespace

std::optional<Complaint<TemplateNameBox>> CheckTemplateName(std::string_view name) {
  const auto complain = [](const char* text) {
    return Complaint<TemplateNameBox>{text, TemplateNameBox::kName, Sentence(text)};
  };
  if (platform::Trim(name).empty()) return complain("Please enter a name for the template.");
  if (name.size() > kLongestName) return complain("Please enter a shorter name for the template.");
  if (!platform::IsUtf8(name) || platform::HoldsControl(name) || name.find_first_of("/\\") != std::string_view::npos) {
    return complain("The name of a template holds neither slashes nor control characters.");
  }
  if (name.front() == '.' || platform::Trim(name) != name) {
    return complain("The name of a template begins with no dot and no blank, and ends with no blank.");
  }
  if (IsDesign(name)) return complain("That is the name of a design. Please enter another one.");
  return {};
}

Result<fs::path> OwnTemplates::FileOf(std::string_view name) const {
  if (const auto complaint = CheckTemplateName(name)) {
    return Error{Failure::kUsage, complaint->reason, Say("The name was \"{}\".", Shown(name))};
  }
  return folder_ / (std::string(name) + kEnding);
}

Result<std::vector<std::string>> OwnTemplates::List() const {
  std::vector<std::string> names;
  std::error_code failed;
  fs::directory_iterator entry(folder_, failed);
  for (; !failed && entry != fs::directory_iterator(); entry.increment(failed)) {
    const fs::path& path = entry->path();
    std::string name = path.stem().string();
    if (path.extension() == kEnding && IsFile(path) && !CheckTemplateName(name)) names.push_back(std::move(name));
  }
  if (failed && failed != std::errc::no_such_file_or_directory) {
    return platform::SystemError("read", folder_, failed.value());
  }
  std::sort(names.begin(), names.end());
  return names;
}

bool OwnTemplates::Has(std::string_view name) const {
  const auto file = FileOf(name);
  return file && IsFile(*file);
}

Result<std::string> OwnTemplates::ReadAsKept(std::string_view name) const {
  if (IsDesign(name)) {
    return Error{Failure::kUsage, Say("\"{}\" is a design, not a template of your own.", Shown(name)),
                 "Designs are Government, Health, Legal, Sports and Travel, in this spelling."};
  }
  const auto file = FileOf(name);
  if (!file) return file.error();
  if (!IsFile(*file)) return NoSuch(name);
  auto body = ReadBodyFile(*file);
  if (!body) return body.error();
  return std::move(body->text);
}

Result<std::string> OwnTemplates::Read(std::string_view name) const {
  const auto html = ReadAsKept(name);
  return html ? Result<std::string>(WithAbsolutePictures(*html, folder_)) : html;
}

Result<void> OwnTemplates::Keep(std::string_view name, const LetterToKeep& letter, IfThere if_there) const {
  const auto file = FileOf(name);
  if (!file) return file.error();
  if (if_there == IfThere::kFail && Has(name)) return IsTaken(name);
  auto made = platform::EnsureFolder(folder_);
  if (!made) return made;
  const auto html = CopyPictures(letter.html, letter.base, letter.places, {folder_ / kPictures, kPictures});
  if (!html) return html.error();
  if (if_there == IfThere::kReplace) return platform::ReplaceFile(*file, *html);
  const auto written = platform::WriteFileIfAbsent(*file, *html);
  if (!written) return written.error();
  return *written ? Result<void>() : IsTaken(name);
}

Result<void> OwnTemplates::Rename(std::string_view name, std::string_view new_name, IfThere if_there) const {
  const auto from = FileOf(name);
  if (!from) return from.error();
  const auto to = FileOf(new_name);
  if (!to) return to.error();
  if (!IsFile(*from)) return NoSuch(name);
  if (name == new_name) return {};
  if (if_there == IfThere::kFail) {
    const auto renamed = platform::RenameIfAbsent(*from, *to);
    if (!renamed) return renamed.error();
    return *renamed ? Result<void>() : IsTaken(new_name);
  }
  std::error_code failed;
  fs::rename(*from, *to, failed);
  return failed ? platform::SystemError("rename", *from, failed.value()) : Result<void>();
}

Result<void> OwnTemplates::Remove(std::string_view name) const {
  const auto file = FileOf(name);
  if (!file) return file.error();
  if (!IsFile(*file)) return NoSuch(name);
  std::error_code failed;
  fs::remove(*file, failed);
  return failed ? platform::SystemError("remove", *file, failed.value()) : Result<void>();
}

Result<void> OwnTemplates::Export(std::string_view name, const PicturePlaces& places, const fs::path& file,
                                  const platform::OwnFiles& own) const {
  const auto kept = ReadAsKept(name);
  if (!kept) return kept.error();
  if (auto other = platform::CheckIsNotOwn(file, own); !other) return other;
  const std::string beside = file.stem().string() + "_files";
  const auto html =
      CopyPictures(*kept, folder_, places, {file.parent_path() / beside, platform::PercentEncoded(beside)});
  return html ? platform::ReplaceChosenFile(file, own, *html) : html.error();
}

}  // namespace quillcast::document
