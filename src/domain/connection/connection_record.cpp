#include "domain/connection/connection_record.h"

#include <algorithm>
#include <utility>

#include "platform/text.h"

namespace quillcast::domain {
namespace {

using smtp::ConnectionStep;

constexpr std::size_t kMostLines = 1000;
constexpr std::size_t kMostWays = 50;
constexpr std::size_t kLongestWord = 200;  // octets of an extension

// The names of one line, each once.
void AddWays(std::string_view names, std::vector<std::string>& ways) {
  for (const std::string_view name : platform::Split(names, ' ')) {
    if (ways.size() == kMostWays) return;
    std::string shown = platform::Printable(name, kLongestWord);
    const bool is_new = std::find(ways.begin(), ways.end(), shown) == ways.end();
    if (!name.empty() && is_new) ways.push_back(std::move(shown));
  }
}

Offer OfferOf(std::string_view reply) {
  Offer offer{.known = smtp::ParseCapabilities(reply)};
  const auto lines = platform::Split(reply, '\n');
  for (std::size_t n = 1; n < lines.size(); ++n) {
    const std::string_view line = platform::Trim(lines[n]);
    const bool is_sign_in =
        platform::StartsWithIgnoringAsciiCase(line, "AUTH ") || platform::StartsWithIgnoringAsciiCase(line, "AUTH=");
    if (is_sign_in) {
      AddWays(line.substr(5), offer.sign_in);
    } else if (!line.empty()) {
      offer.extensions.push_back(platform::Printable(line, kLongestWord));
    }
  }
  return offer;
}

std::string_view FirstLine(std::string_view bytes) {
  const std::string_view line = bytes.substr(0, bytes.find('\n'));
  return line.ends_with('\r') ? line.substr(0, line.size() - 1) : line;
}

// The conversation of a try, and before it what it failed with.
std::string ReportOf(const smtp::Outcome& outcome, const std::string& conversation) {
  if (outcome.code == smtp::ResultCode::kSuccess) return conversation;
  return smtp::ResultText(static_cast<int>(outcome.code)) + "\r\n" + conversation;
}

}  // namespace

void Retell(ConnectionTest& test, smtp::Outcome outcome) {
  if (!test.Works()) test.report.erase(0, test.report.find('\n') + 1);
  test.report = ReportOf(outcome, test.report);
  test.outcome = std::move(outcome);
}

ConnectionTest ConnectionRecord::Finish(smtp::Outcome outcome) {
  EndStep();
  ConnectionTest told;
  if (tries_.empty()) {  // no server is set up
    told_.reset();
    told.outcome = std::move(outcome);
    return told;
  }
  told_ = std::min(told_.value_or(tries_.size() - 1), tries_.size() - 1);
  tries_[*told_].test.outcome = std::move(outcome);
  std::vector<ConnectionTest> others;
  for (std::size_t n = 0; n < tries_.size(); ++n) {
    ConnectionTest& test = tries_[n].test;
    test.report = ReportOf(test.outcome, tries_[n].conversation);
    if (n == *told_) {
      told = std::move(test);
    } else {
      others.push_back(std::move(test));
    }
  }
  told.others = std::move(others);
  return told;
}

void ConnectionRecord::LogLine(std::string_view line) {
  Now().said_anything = true;
  Write(line);
}

void ConnectionRecord::Write(std::string_view line) {
  Try& now = tries_.back();
  if (++now.lines <= kMostLines) now.conversation.append(line).append("\r\n");
  if (now.lines == kMostLines + 1) now.conversation += "...\r\n";
}

void ConnectionRecord::Begins(const smtp::Server& server) {
  EndStep();
  tries_.emplace_back().test.server = server;
}

void ConnectionRecord::Begins(ConnectionStep step) {
  EndStep();
  Now().steps.push_back({step, {}});
  began_ = clock_.Monotonic();
}

void ConnectionRecord::Tried(std::span<const net::TriedAddress> addresses) {
  Now().addresses.assign(addresses.begin(), addresses.end());
}

void ConnectionRecord::Offered(std::string_view text) {
  (Now().tls ? Now().under_tls : Now().in_clear) = OfferOf(text);
}

void ConnectionRecord::Senseless(std::string_view bytes) {
  Now().odd = platform::Printable(bytes);
  LogLine("S: " + Now().odd);
}

void ConnectionRecord::Unfinished(std::string_view bytes) {
  Now().unfinished = platform::Printable(FirstLine(bytes));
  WriteOfServer(bytes);
}

void ConnectionRecord::InClear(std::string_view bytes) {
  Now().in_clear_after_starttls = true;
  WriteOfServer(bytes);
}

void ConnectionRecord::WriteOfServer(std::string_view bytes) {
  while (!bytes.empty()) {
    Write("S: " + platform::Printable(FirstLine(bytes)));
    const auto end = bytes.find('\n');
    bytes.remove_prefix(end == std::string_view::npos ? bytes.size() : end + 1);
  }
}

void ConnectionRecord::EndStep() {
  if (began_) Now().steps.back().took = clock_.Monotonic() - *began_;
  began_.reset();
}

}  // namespace quillcast::domain
