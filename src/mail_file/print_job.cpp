#include "mail_file/print_job.h"

#include <fmt/format.h>

#include <charconv>
#include <limits>
#include <type_traits>

#include "platform/text.h"

namespace quillcast::mail_file {
namespace {

// One list for both ways, whether the struct is const or not.
template <typename Job, typename Visit>
void EachField(Job& job, const Visit& visit) {
  visit("file", job.form.file);
  visit("left", job.form.left);
  visit("top", job.form.top);
  visit("right", job.form.right);
  visit("format", job.form.format);
  visit("heading", job.form.heading);
  visit("centred", job.form.is_centred);
  visit("bold", job.form.is_bold);
  visit("underlined", job.form.is_underlined);
  visit("mode", job.mode);
  visit("printer", job.printer);
  visit("target", job.target);
  visit("pages", job.pages);
}

int NumberIn(std::string_view text) {
  int number = 0;
  std::from_chars(text.data(), text.data() + text.size(), number);
  return number;
}

template <typename Value>
std::string TextOfValue(const Value& value) {
  if constexpr (std::is_same_v<Value, std::string>) {
    return value;
  } else {
    return std::to_string(static_cast<int>(value));
  }
}

template <typename Value>
void Put(std::string_view text, Value& value) {
  if constexpr (std::is_same_v<Value, std::string>) {
    value = text;
  } else {
    value = static_cast<Value>(NumberIn(text));
  }
}

// "name=value" in two.
std::pair<std::string_view, std::string_view> Parted(std::string_view text) {
  const std::size_t end = std::min(text.find('='), text.size());
  return {text.substr(0, end), text.substr(std::min(end + 1, text.size()))};
}

// The words stay in one line.
std::string LineOf(std::string_view name, const Sentence& words) {
  return fmt::format("{}={}\n", name, platform::Printable(words.InEnglish(), std::numeric_limits<std::size_t>::max()));
}

}  // namespace

std::vector<std::string> AsArguments(const PrintJob& job) {
  std::vector<std::string> arguments = {std::string(kPrintJob)};
  EachField(job, [&](std::string_view name, const auto& value) {
    arguments.push_back(fmt::format("{}={}", name, TextOfValue(value)));
  });
  return arguments;
}

PrintJob ReadArguments(std::span<const std::string> arguments) {
  PrintJob job;
  for (const std::string& argument : arguments) {
    const auto [name, text] = Parted(argument);
    EachField(job, [&name = name, &text = text](std::string_view field, auto& value) {
      if (field == name) Put(text, value);
    });
  }
  return job;
}

std::string LineOfPage(int page, int of) { return fmt::format("page={}\nof={}\n", page, of); }

std::string LinesOfEnd(const PrintedMessage& printed) {
  std::string lines;
  for (const Sentence& words : printed.left_out) lines += LineOf("left out", words);
  if (printed.error) {
    lines += fmt::format("failure={}\n", static_cast<int>(printed.error->failure));
    lines += LineOf("what", printed.error->what) + LineOf("remedy", printed.error->remedy);
  }
  return lines + fmt::format("pages={}\ncode={}\n", printed.pages, static_cast<int>(printed.code));
}

void TakeLine(std::string_view line, PrintNews& news) {
  const auto [name, text] = Parted(line);
  PrintedMessage& printed = news.printed;
  if (name == "page") news.page = NumberIn(text);
  if (name == "of") news.of = NumberIn(text);
  if (name == "left out") printed.left_out.emplace_back(std::string(text));
  if (name == "failure") printed.error = Error{static_cast<Failure>(NumberIn(text)), ""};
  if (name == "what" && printed.error) printed.error->what = std::string(text);
  if (name == "remedy" && printed.error) printed.error->remedy = std::string(text);
  if (name == "pages") printed.pages = NumberIn(text);
  if (name != "code") return;
  printed.code = static_cast<PrintCode>(NumberIn(text));
  news.has_ended = true;
}

}  // namespace quillcast::mail_file
