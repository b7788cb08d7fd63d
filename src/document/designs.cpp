#include "document/designs.h"

#include <fmt/format.h>

#include <algorithm>

#include "document/document_pictures.h"
#include "document/link_trouble.h"
#include "html/html_to_text.h"
#include "html/local_pictures.h"
#include "platform/file.h"
#include "platform/text.h"
#include "recipients/check_email.h"

namespace quillcast::document {
namespace {

namespace fs = std::filesystem;

constexpr std::uint64_t kLongestDesign = std::uint64_t{1024} * 1024;
constexpr std::size_t kLongestShownValue = 100;
constexpr std::size_t kNeverWrapped = 1'000'000;  // columns

struct DesignRule {
  const std::string DesignChoice::*field;
  const char* message;
  DesignBox box;
};
constexpr auto kDesignRules = std::to_array<DesignRule>({
    {&DesignChoice::design, "Please select a template.", DesignBox::kList},
    {&DesignChoice::company, "Please enter your company name.", DesignBox::kCompany},
    {&DesignChoice::web_site, "Please enter your web site.", DesignBox::kWebSite},
    {&DesignChoice::unsubscribe_address, "Please enter unsubscribe email.", DesignBox::kAddress},
    {&DesignChoice::unsubscribe_subject, "Please enter unsubscribe subject.", DesignBox::kSubject},
});

std::string PictureName(std::size_t design) { return fmt::format("Template{}.jpg", design + 1); }

std::string ShownValue(std::string_view value) { return platform::Printable(value, kLongestShownValue); }

// As readers show it, where that is not what was typed.
std::optional<Sentence> NoteOnCompany(const std::string& company) {
  if (company.find_first_of("<&") == std::string::npos) return {};
  const std::string text = html::HtmlToText(company, kNeverWrapped);
  const std::string_view seen = platform::Trim(text);
  if (seen == platform::Trim(company)) return {};
  return Say(
      R"(The company name reads as "{}" in the letter. "<" and "&" that are meant as such are written &lt; and &amp;.)",
      ShownValue(seen));
}

std::optional<Sentence> NoteOnWebSite(const std::string& site) {
  for (const std::string_view scheme : {"https://", "http://"}) {
    if (!platform::StartsWithIgnoringAsciiCase(site, scheme)) continue;
    return Say(
        R"(The designs write https:// before the web site themselves, so its links would lead nowhere. Enter "{}".)",
        ShownValue(std::string_view(site).substr(scheme.size())));
  }
  if (site.find_first_of(" \t\r\n\"<>") == std::string::npos) {
    if (!LinkTrouble("https://" + site, "web")) return {};
    return Say(R"(The web site "{}" is no complete address. Enter it as in www.example.org.)", ShownValue(site));
  }
  return Say(R"(The web site "{}" holds a blank, a quotation mark or an angle bracket, where its links would end.)",
             ShownValue(site));
}

std::optional<Sentence> NoteOnAddress(const std::string& address) {
  if (recipients::CheckEmail(address) && address.find_first_of(" \t\r\n\"<>?&#%,;:") == std::string::npos) return {};
  return Say(
      R"("{}" is not one bare mail address, so that the link to unsubscribe may not work. Enter it as in news@example.org.)",
      ShownValue(address));
}

// What stands in a link's query as it is, or is written for it already (RFC 6068 2).
bool FitsIntoLink(std::string_view subject) {
  constexpr std::string_view kPlain = "-._~!$*'():@/,;";
  for (std::size_t at = 0; at < subject.size(); ++at) {
    const std::string_view three = subject.substr(at, 3);
    const bool escape =
        three.size() == 3 && three[0] == '%' && platform::PercentDecoded(three).value_or("").size() == 1;
    if (escape) {
      at += 2;
    } else if (!platform::AsciiIsAlnum(subject[at]) && kPlain.find(subject[at]) == std::string_view::npos) {
      return false;
    }
  }
  return true;
}

std::optional<Sentence> NoteOnSubject(const std::string& subject) {
  if (FitsIntoLink(subject)) return {};
  return Say(R"(The unsubscribe subject stands in a link, where some programs read only a part of "{}". Enter "{}".)",
             ShownValue(subject), ShownValue(platform::PercentEncoded(subject)));
}

// A folder's name can mean something in an address.
std::optional<Sentence> NoteOnPicture(const fs::path& picture) {
  const auto found = html::FindLocalPictures(fmt::format("<img src=\"{}\">", picture.string()));
  if (!found.empty() && found.front().path == picture.string()) return {};
  return Say("The letter cannot name its picture {}: a folder on the way has a character that addresses use otherwise.",
             ShownValue(picture.string()));
}

}  // namespace

std::vector<Sentence> SamplesLeft(std::string_view letter) {
  std::vector<Sentence> left;
  if (letter.find(kSampleStreet) != std::string_view::npos) {
    left.push_back(Say("“{}” stands in the letter still. Write your postal address there; many countries ask for it.",
                       kSampleStreet));
  }
  for (const auto sample : {kSampleCompany, kSampleWebSite}) {
    if (letter.find(sample) == std::string_view::npos) continue;
    left.push_back(Say("“{}” stands in the letter still. Write your own there.", sample));
  }
  return left;
}

std::optional<Complaint<DesignBox>> CheckDesign(const DesignChoice& choice) {
  for (const DesignRule& rule : kDesignRules) {
    if ((choice.*rule.field).empty()) return Complaint<DesignBox>{rule.message, rule.box};
  }
  return {};
}

std::optional<std::size_t> FindDesign(std::string_view name) {
  const auto* const found = std::find(kDesigns.begin(), kDesigns.end(), name);
  if (found == kDesigns.end()) return {};
  return static_cast<std::size_t>(found - kDesigns.begin());
}

Result<std::string> ReadDesign(std::size_t design, const fs::path& program_folder) {
  const fs::path file = program_folder / "templates" / fmt::format("{}.html", kDesigns[design]);
  if (fs::exists(file, IgnoreErrors())) return platform::ReadFile(file, kLongestDesign);
  return Error{Failure::kNoInput, Say("The design {} is not there: {}", kDesigns[design], file.string()),
               "Install the program again, or let QUILLCAST_PROGRAM_FOLDER name the folder that it is in."};
}

std::string FilledDesign(std::string html, std::size_t design, const fs::path& program_folder,
                         const DesignChoice& choice) {
  const std::string picture = PictureName(design);
  html = platform::ReplaceAll(html, picture, (program_folder / picture).string());
  html = platform::ReplaceAll(html, kSampleCompany, choice.company);
  html = platform::ReplaceAll(html, kSampleWebSite, choice.web_site);
  html = platform::ReplaceAll(html, kSampleMailbox, choice.unsubscribe_address);
  return platform::ReplaceAll(html, kSampleSubject, choice.unsubscribe_subject);
}

Result<std::string> LetterFrom(const DesignChoice& choice, const fs::path& program_folder) {
  const auto design = FindDesign(choice.design);
  if (!design) {
    return Error{Failure::kUsage, Say("There is no design \"{}\".", ShownValue(choice.design)),
                 "They are Government, Health, Legal, Sports and Travel."};
  }
  auto html = ReadDesign(*design, program_folder);
  if (!html) return html;
  return FilledDesign(*std::move(html), *design, program_folder, choice);
}

std::vector<Sentence> DesignNotes(const DesignChoice& choice, const fs::path& program_folder) {
  std::vector<Sentence> notes;
  const auto design = FindDesign(choice.design);
  for (auto& note : {NoteOnCompany(choice.company), NoteOnWebSite(choice.web_site),
                     NoteOnAddress(choice.unsubscribe_address), NoteOnSubject(choice.unsubscribe_subject),
                     design ? NoteOnPicture(program_folder / PictureName(*design)) : std::nullopt}) {
    if (note) notes.push_back(*note);
  }
  return notes;
}

}  // namespace quillcast::document
