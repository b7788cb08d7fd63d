#include "document/own_templates.h"

#include <algorithm>
#include <cerrno>
#include <iterator>

#include "document/body_file.h"
#include "document/declared_charset.h"
#include "document/designs.h"
#include "document/document_pictures.h"
#include "document/message_document.h"
#include "platform/file.h"
#include "platform/file_attributes.h"
#include "platform/text.h"
#include "platform/unseen_signs.h"
#include "platform/utf8.h"

namespace quillcast::document {
namespace {

namespace fs = std::filesystem;

constexpr std::size_t kLongestName = 100;  // bytes; names of files end at 255
constexpr const char* kEnding = ".htm";
constexpr const char* kPictures = "Pictures";

std::string ShownName(std::string_view name) { return platform::Printable(name, kLongestName); }

bool IsDesign(std::string_view name) {
  return std::any_of(kDesigns.begin(), kDesigns.end(),
                     [&](std::string_view design) { return platform::EqualsIgnoringAsciiCase(design, name); });
}

// A link could lead anywhere.
bool IsFile(const fs::path& path) { return fs::symlink_status(path, IgnoreErrors()).type() == fs::file_type::regular; }

// The program never puts one there; nothing where the name is free or a template's.
std::optional<Error> SomethingElse(const fs::path& path, Failure failure = Failure::kNotPermitted) {
  const auto type = fs::symlink_status(path, IgnoreErrors()).type();
  if (type == fs::file_type::regular || type == fs::file_type::not_found || type == fs::file_type::none) return {};
  auto what = Say("{} is a pipe or a device, no template.", path.string());
  if (type == fs::file_type::directory) what = Say("{} is a folder, no template.", path.string());
  if (type == fs::file_type::symlink) what = Say("{} is a link, no template.", path.string());
  return Error{failure, std::move(what), "Move it away, or take another name."};
}

Error NoSuch(std::string_view name, const fs::path& file) {
  if (auto other = SomethingElse(file, Failure::kNoInput)) return *std::move(other);
  return {Failure::kNoInput, Say("There is no template \"{}\".", ShownName(name)), "Choose one that is listed."};
}

Error IsTaken(std::string_view name, const fs::path& file) {
  if (auto other = SomethingElse(file)) return *std::move(other);
  return {Failure::kNotPermitted, Say("There is a template \"{}\" already.", ShownName(name)),
          "Take another name, or say that it is to be replaced."};
}

// Of a text in UTF-8.
struct LookOfName {
  bool hides = false;  // holds what is not seen
  bool ends_blank = false;
  bool is_blank = true;  // from end to end
  bool begins_blank = false;
};

LookOfName LookAtName(std::string_view name) {
  LookOfName look;
  look.hides = platform::Printable(name, name.size()) != name;
  look.begins_blank = platform::IsBlank(platform::DecodeUtf8(name).code);
  while (!name.empty()) {
    const auto [code, length] = platform::DecodeUtf8(name);
    look.hides = look.hides || platform::IsUnseen(code);
    look.ends_blank = platform::IsBlank(code);
    look.is_blank = look.is_blank && look.ends_blank;
    name.remove_prefix(length);
  }
  return look;
}

}  // namespace

Result<LetterToKeep> ReadLetterToKeep(const fs::path& file, const profile::Folders& folders) {
  MessageDocument document;
  const auto loaded = LoadBody(document, file);
  if (!loaded) return loaded.error();
  const fs::path folder = fs::absolute(file, IgnoreErrors()).parent_path();
  return LetterToKeep{std::move(document.html), folder, PicturePlaces(folders).WithOwnFolder(folder)};
}

std::optional<Complaint<TemplateNameBox>> CheckTemplateName(std::string_view name) {
  const auto complain = [](const char* text) {
    return Complaint<TemplateNameBox>{text, TemplateNameBox::kName, Sentence(text)};
  };
  if (name.empty()) return complain("Please enter a name for the template.");
  if (name.size() > kLongestName) return complain("Please enter a shorter name for the template.");
  if (!platform::IsUtf8(name)) return complain("The name of a template is UTF-8, and this is not.");
  const LookOfName look = LookAtName(name);
  if (look.is_blank) return complain("Please enter a name for the template.");
  if (platform::HoldsControl(name) || name.find_first_of("/\\") != std::string_view::npos) {
    return complain("The name of a template holds neither slashes nor control characters.");
  }
  if (look.hides) {
    return complain("The name of a template holds no characters that are not seen or turn the line.");
  }
  if (name.front() == '.' || look.begins_blank || look.ends_blank) {
    return complain("The name of a template begins with no dot and no blank, and ends with no blank.");
  }
  if (IsDesign(name)) return complain("That is the name of a design. Please enter another one.");
  return {};
}

Result<fs::path> OwnTemplates::FileOf(std::string_view name) const {
  if (const auto complaint = CheckTemplateName(name)) {
    return Error{Failure::kUsage, complaint->reason, Say("The name was \"{}\".", ShownName(name))};
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
    return Error{Failure::kUsage, Say("\"{}\" is a design, not a template of your own.", ShownName(name)),
                 "Designs are Government, Health, Legal, Sports and Travel, in this spelling."};
  }
  const auto file = FileOf(name);
  if (!file) return file.error();
  if (!IsFile(*file)) return NoSuch(name, *file);
  auto body = ReadLetterFile(*file);
  return body ? Result<std::string>(std::move(body->text)) : body.error();
}

Result<std::string> OwnTemplates::Read(std::string_view name) const {
  const auto html = ReadAsKept(name);
  return html ? Result<std::string>(WithAbsolutePictures(*html, folder_)) : html;
}

Result<void> OwnTemplates::Keep(std::string_view name, const LetterToKeep& letter, IfThere if_there,
                                const platform::CancelToken* cancel) const {
  const auto file = FileOf(name);
  if (!file) return file.error();
  if (const auto other = SomethingElse(*file)) return *other;
  if (if_there == IfThere::kFail && Has(name)) return IsTaken(name, *file);
  auto made = platform::EnsureFolder(folder_);
  if (!made) return made;
  const auto html = CopyPictures(WithCharset(letter.html, BodyEncoding::kUtf8), letter.base, letter.places,
                                 {folder_ / kPictures, kPictures}, cancel);
  if (!html) return html.error();
  if (if_there == IfThere::kReplace) return platform::ReplaceFile(*file, *html);
  const auto written = platform::WriteFileIfAbsent(*file, *html);
  if (!written) return written.error();
  return *written ? Result<void>() : IsTaken(name, *file);
}

Result<void> OwnTemplates::Rename(std::string_view name, std::string_view new_name, IfThere if_there) const {
  const auto from = FileOf(name);
  if (!from) return from.error();
  const auto to = FileOf(new_name);
  if (!to) return to.error();
  if (!IsFile(*from)) return NoSuch(name, *from);
  if (name == new_name) return {};
  if (const auto other = SomethingElse(*to)) return *other;
  if (if_there == IfThere::kFail) {
    const auto renamed = platform::RenameIfAbsent(*from, *to);
    if (!renamed) return renamed.error();
    return *renamed ? Result<void>() : IsTaken(new_name, *to);
  }
  std::error_code failed;
  fs::rename(*from, *to, failed);
  return failed ? platform::SystemError("rename", *from, failed.value()) : Result<void>();
}

Result<void> OwnTemplates::Remove(std::string_view name) const {
  const auto file = FileOf(name);
  if (!file) return file.error();
  if (!IsFile(*file)) return NoSuch(name, *file);
  std::error_code failed;
  fs::remove(*file, failed);
  return failed ? platform::SystemError("remove", *file, failed.value()) : Result<void>();
}

Result<void> OwnTemplates::MayExportTo(const fs::path& file, const profile::Folders& folders,
                                       platform::Prompts& prompts) {
  const auto may_write = platform::MayWriteTo(file, folders.OwnFiles(), prompts);
  if (!may_write) return may_write.error();
  if (*may_write) return {};
  return Error{Failure::kNotPermitted, platform::LeftLocked(file), "Name another file."};
}

Result<void> OwnTemplates::Export(std::string_view name, const profile::Folders& folders, const fs::path& file,
                                  const platform::CancelToken* cancel) const {
  const auto kept = ReadAsKept(name);
  if (!kept) return kept.error();
  const platform::OwnFiles own = folders.OwnFiles();
  if (auto other = platform::CheckIsNotOwn(file, own); !other) return other;
  const fs::path folder = file.parent_path();
  std::error_code failed;
  if (!fs::is_directory(folder, failed)) {
    return platform::SystemError("create", folder, failed ? failed.value() : ENOTDIR);
  }
  const std::string beside = file.stem().string() + "_files";
  const auto html =
      CopyPictures(*kept, folder_, PicturePlaces(folders), {folder / beside, platform::PercentEncoded(beside)}, cancel);
  return html ? platform::ReplaceChosenFile(file, own, *html) : html.error();
}

}  // namespace quillcast::document
