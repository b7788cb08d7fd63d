#include "smtp/mailbox/server_play.h"

#include "platform/text.h"

namespace quillcast::smtp {
namespace {

std::string Unescape(std::string_view text) {
  std::string out;
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] != '\\' || i + 1 == text.size()) {
      out += text[i];
      continue;
    }
    const char c = text[++i];
    if (c == 'x') {
      out += static_cast<char>(std::stoi(std::string(text.substr(i + 1, 2)), nullptr, 16));
      i += 2;
      continue;
    }
    out += c == 'r' ? '\r' : c == 'n' ? '\n' : c == '0' ? '\0' : c == 't' ? '\t' : c;
  }
  return out;
}

}  // namespace

std::vector<Turn> ReadDialogue(std::string_view text) {
  std::vector<Turn> turns(1);
  for (auto line : platform::Split(text, '\n')) {
    line.remove_prefix(std::min(line.find_first_not_of(' '), line.size()));
    if (line.size() < 2) continue;
    const std::string_view said = line.size() > 3 ? line.substr(3) : std::string_view();
    if (line[0] == 'S') {
      turns.back().expected += std::string(said) + "\r\n";
      continue;
    }
    if (!turns.back().expected.empty()) turns.emplace_back();
    turns.back().sent += Unescape(said);
    if (line[0] == 'C') turns.back().sent += "\r\n";
  }
  return turns;
}

std::string TakeReplies(ServerSession& session) {
  std::string replies(session.BytesToSend());
  session.Sent(replies.size());
  return replies;
}

}  // namespace quillcast::smtp
