// The five designs that letters begin with, and what a person fills into them. They lie in the program folder, each
// with its picture.
#pragma once

#include <array>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/complaint.h"
#include "platform/result.h"

namespace quillcast::document {

// In the order of the list; the picture of the first is Template1.jpg.
inline constexpr std::array<std::string_view, 5> kDesigns = {"Government", "Health", "Legal", "Sports", "Travel"};

// What stands in a design for what is filled in. The mailbox must not hold the web address: that is replaced first.
inline constexpr std::string_view kSampleCompany = "TARNWICKCo";
inline constexpr std::string_view kSampleWebSite = "www.tarnwickco.example";
inline constexpr std::string_view kSampleMailbox = "unsubscribe@tarnwickco.example";
inline constexpr std::string_view kSampleSubject = "UnsubscribeNow";

// What the person writes over in the letter itself.
inline constexpr std::string_view kSampleStreet = "[your street, postcode and town]";

// What was chosen and typed.
struct DesignChoice {
  std::string design;  // one of kDesigns, or empty
  std::string company;
  std::string web_site;
  std::string unsubscribe_address;
  std::string unsubscribe_subject;
};
enum class DesignBox : std::uint8_t { kList, kCompany, kWebSite, kAddress, kSubject };

// A sentence for each of these that stands in a letter still.
std::vector<Sentence> SamplesLeft(std::string_view letter);

// The first thing that is missing.
std::optional<Complaint<DesignBox>> CheckDesign(const DesignChoice& choice);

// Letter case counts; nothing for any other name.
std::optional<std::size_t> FindDesign(std::string_view name);

// The HTML of a design as it is kept. kNoInput when the program folder lacks it.
Result<std::string> ReadDesign(std::size_t design, const std::filesystem::path& program_folder);

// The design with what was filled in. The replacements run one after the other over the growing text: its picture, the
// company, the web site, the address, the subject. A company name that holds the sample web site gets the person's own.
// Values go in as they stand.
std::string FilledDesign(std::string html, std::size_t design, const std::filesystem::path& program_folder,
                         const DesignChoice& choice);

// ReadDesign and FilledDesign of a choice that passed the check.
Result<std::string> LetterFrom(const DesignChoice& choice, const std::filesystem::path& program_folder);

// Which values a link or the HTML would take for something else, and how they are written so that it does not.
std::vector<Sentence> DesignNotes(const DesignChoice& choice, const std::filesystem::path& program_folder);

}  // namespace quillcast::document
