#include "cli/import_headings.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>

#include "platform/text.h"
#include "recipients/import/taken_fields.h"

namespace quillcast::cli {
namespace {

constexpr std::size_t kLongestShownHeading = 200;  // bytes of a heading

// Which headings stand too far back, and how they are mapped all the same.
std::string LeftOut(const recipients::ProposedMapping& found) {
  if (found.beyond.empty()) return {};
  std::string named;
  for (const std::size_t column : found.beyond) {
    named += fmt::format("{}\"{}\" (column {})", named.empty() ? "" : ", ",
                         platform::Printable(found.headings[column - 1], kLongestShownHeading), column);
  }
  return fmt::format(
      "Left out, for only the first eighteen columns are mapped: {}. Reorder the columns, or take these: --take {}.",
      named, recipients::ColumnsText(found.columns));
}

Error NoAddressAmong(const std::vector<std::string>& headings) {
  return {Failure::kBadData,
          Say("The heading line names no field for the address: {}.",
              platform::Printable(fmt::format("{}", fmt::join(headings, ", ")), kLongestShownHeading)),
          "`--preview` shows the fields by number, `--map` takes them by it; `--skip` leaves lines before the "
          "headings out, and `--delimiter` says how they are parted."};
}

// Where none of the first lines looks like headings, the one that cannot be read may have been them.
Error NoHeadings(const recipients::ImportSample& sample) {
  for (const auto& line : sample.lines) {
    if (line.fault == recipients::LineFault::kNone) continue;
    return {Failure::kBadData, Say("The heading line, line {}, cannot be read.", line.number),
            "A line holds 1 MiB at most, and a quote that is opened is closed; `--skip` leaves lines before the "
            "headings out."};
  }
  return NoAddressAmong(sample.lines.empty() ? std::vector<std::string>() : sample.lines.front().texts);
}

}  // namespace

Result<void> MapByHeader(const std::string& codeset, const platform::CancelToken& cancel, ImportPlan& plan) {
  auto& request = plan.request;
  auto reading = request.reading;
  reading.most_fields = recipients::kFieldsForHeadings;
  const auto sample =
      recipients::ReadSample(request.file, reading, codeset, recipients::kLinesForHeadings, request.skip, &cancel);
  if (!sample) return sample.error();
  if (!sample->facts.encoding.name.empty()) request.reading.known = sample->facts.encoding;
  const auto found = recipients::ProposeMapping(*sample, request.quotes);
  if (!found) return NoHeadings(*sample);
  request.mapping = found->mapping;
  request.skip = std::max(request.skip, found->skip);
  plan.headings = found->headings;
  plan.left_out = LeftOut(*found);
  if (request.mapping.source[recipients::kEmail] != recipients::kIgnore) return {};
  if (!found->names_address) return NoAddressAmong(found->headings);
  return Error{Failure::kBadData, "No field is mapped to the address.", plan.left_out};
}

}  // namespace quillcast::cli
