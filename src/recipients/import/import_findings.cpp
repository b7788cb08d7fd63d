#include "recipients/import/import_findings.h"

#include "platform/text.h"
#include "recipients/import/taken_fields.h"

namespace quillcast::recipients {
namespace {

constexpr std::size_t kLongestShown = 100;  // bytes of a value

}  // namespace

void ImportFindings::NoteCut(std::string_view address) {
  if (++cut_addresses == 1) first_cut = address;
}

void ImportFindings::NoteInText(std::string_view value) {
  if (++addresses_in_text == 1) first_in_text = value;
}

void ImportFindings::NoteInBlanks(std::string_view value) {
  if (++addresses_in_blanks == 1) first_in_blanks = value;
}

void ImportFindings::NoteFault(const FieldLine& line) {
  if (line.fault == LineFault::kOpenQuote) {
    open_quote_line = line.number;
  } else if (++long_lines == 1) {
    first_long_line = line.number;
  }
}

std::vector<Sentence> Describe(const ImportFindings& findings) {
  std::vector<Sentence> told;
  if (findings.cut_addresses > 0) {
    told.push_back(SayOf(
        findings.cut_addresses,
        "{} address was cut, the first to {}: a harvest takes letters, digits, “.”, “_” and “-”, and five letters "
        "at the end. A recipient from each line keeps an address as it stands.",
        "{} addresses were cut, the first to {}: a harvest takes letters, digits, “.”, “_” and “-”, and five "
        "letters at the end. A recipient from each line keeps an address as it stands.",
        platform::Printable(findings.first_cut, kLongestShown)));
  }
  if (findings.addresses_in_text > 0) {
    told.push_back(SayOf(findings.addresses_in_text,
                         "{} address has other text around it, which is stored with it: “{}”.",
                         "{} addresses have other text around them, which is stored with them; the first is “{}”.",
                         platform::Printable(findings.first_in_text, kLongestShown)));
  }
  if (findings.addresses_in_blanks > 0) {
    told.push_back(SayOf(findings.addresses_in_blanks,
                         "{} address has blanks around it, which are stored with it: “{}”.",
                         "{} addresses have blanks around them, which are stored with them; the first is “{}”.",
                         platform::Printable(findings.first_in_blanks, kLongestShown)));
  }
  if (findings.fitting) told.push_back(Say("The delimiter “{}” would fit this file.", findings.fitting->name));
  if (findings.quotes_unread)
    told.emplace_back(
        "Its fields stand in quotes; reading quotes as spreadsheets write them (RFC 4180) takes them off.");
  if (findings.quotes_left)
    told.emplace_back("Quotes are taken off delimited text alone; the fields of this file were taken as they are.");
  if (findings.long_lines > 0) {
    told.push_back(SayOf(findings.long_lines, "{} line is longer than 1 MiB and was ignored, line {}.",
                         "{} lines are longer than 1 MiB and were ignored, the first is line {}.",
                         findings.first_long_line));
  }
  if (findings.open_quote_line > 0) {
    told.push_back(
        Say("A quote in the record that begins on line {} is never closed; what stands behind it was not "
            "taken.",
            findings.open_quote_line));
  }
  if (findings.missing_fields && !findings.fitting) told.push_back(*findings.missing_fields);
  return told;
}

std::vector<Sentence> Describe(const FileFacts& facts) {
  std::vector<Sentence> told;
  if (facts.encoding.is_utf16_unmarked) {
    told.push_back(
        Say("The file has no mark of its encoding; it was read as {} for the zeros in it.", facts.encoding.name));
  }
  if (facts.encoding.bad_bytes > 0) {
    told.push_back(SayOf(facts.encoding.bad_bytes,
                         "{} byte is not UTF-8, on line {}: “\uFFFD” stands for it. The rest was read as UTF-8.",
                         "{} bytes are not UTF-8, the first on line {}: “\uFFFD” stands for each. The rest was read as "
                         "UTF-8.",
                         facts.encoding.first_bad_line));
  }
  if (facts.sheets_left_unread > 0) {
    told.push_back(SayOf(facts.sheets_left_unread, "{} more sheet of the file was not read.",
                         "{} more sheets of the file were not read."));
  }
  if (!facts.lacking_columns.empty()) {
    told.push_back(SayOf(static_cast<std::int64_t>(facts.lacking_columns.size()),
                         "{} column that is taken stands in no line that was read: {}.",
                         "{} columns that are taken stand in no line that was read: {}.",
                         ColumnsText(facts.lacking_columns)));
  }
  return told;
}

}  // namespace quillcast::recipients
