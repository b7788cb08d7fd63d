#include "mail_file/message_xml.h"

#include <array>

#include "platform/utf8.h"

namespace quillcast::mail_file {
namespace {

constexpr std::array kTypes = {"to", "cc", "bcc"};  // by RecipientType

bool IsInXml(char32_t code) {
  return code == '\t' || code == '\n' || code == '\r' ||
         (code >= 0x20 && code != 0xFFFE && code != 0xFFFF && code != platform::kNotUtf8);
}

// CR as a reference, since readers drop it else.
void AppendEscaped(std::string& out, std::string_view text) {
  while (!text.empty()) {
    const auto [code, length] = platform::DecodeUtf8(text);
    switch (code) {
      case '&':
        out += "&amp;";
        break;
      case '<':
        out += "&lt;";
        break;
      case '>':
        out += "&gt;";
        break;
      case '"':
        out += "&quot;";
        break;
      case '\r':
        out += "&#13;";
        break;
      default:
        if (IsInXml(code)) {
          out += text.substr(0, length);
        } else {
          platform::AppendUtf8(out, 0xFFFD);
        }
    }
    text.remove_prefix(length);
  }
}

class Document {
 public:
  Document() : out_("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\r\n") {}

  void Begin(std::string_view name) { Indent() += "<" + std::string(name) + ">\r\n", ++depth_; }
  void End(std::string_view name) { --depth_, Indent() += "</" + std::string(name) + ">\r\n"; }
  void Element(std::string_view name, std::string_view text) {
    Indent().append("<").append(name) += '>';
    AppendEscaped(out_, text);
    out_.append("</").append(name) += ">\r\n";
  }
  // An element whose attributes say all: name, value, name, value.
  void Empty(std::string_view name, std::initializer_list<std::string_view> attributes) {
    Open(name, attributes);
    out_ += "/>\r\n";
  }
  void Element(std::string_view name, std::initializer_list<std::string_view> attributes, std::string_view text) {
    Open(name, attributes);
    out_ += '>';
    AppendEscaped(out_, text);
    out_.append("</").append(name) += ">\r\n";
  }
  const std::string& text() const { return out_; }

 private:
  std::string& Indent() { return out_.append(2 * depth_, ' '); }
  void Open(std::string_view name, std::initializer_list<std::string_view> attributes) {
    Indent().append("<").append(name);
    bool is_name = true;
    for (const std::string_view piece : attributes) {
      out_ += is_name ? " " : "=\"";
      AppendEscaped(out_, piece);
      if (!is_name) out_ += '"';
      is_name = !is_name;
    }
  }

  std::string out_;
  std::size_t depth_ = 0;
};

std::string_view WordOf(Marker marker) {
  if (marker == Marker::kBody) return "body";
  return marker == Marker::kAttachment ? "attachment" : "none";
}

void AddRecipients(Document& xml, const MessageFacts& facts) {
  xml.Begin("recipients");
  for (const auto& [mailbox, type] : facts.recipients) {
    xml.Empty("recipient",
              {"type", kTypes.at(static_cast<std::size_t>(type)), "name", mailbox.name, "address", mailbox.address});
  }
  xml.End("recipients");
}

void AddStamps(Document& xml, const MessageFacts& facts) {
  xml.Begin("stamps");
  for (const RelayStamp& stamp : facts.stamps) {
    xml.Empty("stamp", {"by", stamp.by, "time", stamp.time ? stamp.time->local : "", "bias",
                        stamp.time ? stamp.time->Bias() : "", "for", stamp.for_whom, "from", stamp.from, "id", stamp.id,
                        "protocol", stamp.protocol, "via", stamp.via});
  }
  xml.End("stamps");
}

Result<void> AddFields(Document& xml, const MailMessage& message) {
  xml.Begin("fields");
  auto read = message.EachField(message.parts().front(), [&](std::string_view name, std::string_view value) {
    xml.Element("field", {"name", name}, value);
  });
  xml.End("fields");
  return read;
}

void AddParts(Document& xml, const MailMessage& message) {
  xml.Begin("parts");
  for (std::size_t place = 0; place < message.parts().size(); ++place) {
    const Part& part = message.parts()[place];
    xml.Empty("part", {"number", std::to_string(place), "parent",
                       part.parent == kNoPart ? std::string() : std::to_string(part.parent), "type", part.type,
                       "charset", part.charset, "encoding", part.encoding, "name", part.name, "content-id",
                       part.content_id, "marker", WordOf(part.marker)});
  }
  xml.End("parts");
}

// What cannot be decoded is passed over where the body has another form.
bool IsRefused(const Result<std::string>& body) { return body.error().failure == Failure::kBadData; }

Result<void> AddBody(Document& xml, const MailMessage& message) {
  const auto text = message.TextBody();
  const auto page = message.HtmlBody();
  const bool has_text = message.HasBody("text/plain");
  const bool has_page = message.HasBody("text/html");
  if (!text && (!page || !has_page || !IsRefused(text))) return text.error();
  if (!page && (!text || !has_text || !IsRefused(page))) return page.error();
  xml.Begin("body");
  if (has_text && text) xml.Element("text", *text);
  if (has_page && page) xml.Element("html", *page);
  xml.End("body");
  return {};
}

}  // namespace

Result<void> WriteAsXml(const MailMessage& message, const WriteText& write) {
  const MessageFacts& facts = message.facts();
  Document xml;
  xml.Begin("message");
  xml.Element("subject", facts.subject);
  xml.Element("date", facts.date);
  xml.Empty("from", {"name", facts.from.name, "address", facts.from.address});
  AddRecipients(xml, facts);
  AddStamps(xml, facts);
  if (auto added = AddFields(xml, message); !added) return added;
  AddParts(xml, message);
  if (auto added = AddBody(xml, message); !added) return added;
  xml.End("message");
  std::string_view text = xml.text();
  text.remove_suffix(2);  // whoever writes the file ends it
  return write(text);
}

}  // namespace quillcast::mail_file
