// Sends N messages over one connection with libcurl, each composed for its recipient by libcurl's own MIME functions:
//   smtp_curl URL N TEXT_FILE HTML_FILE SUBJECT [ATTACHMENT]
#include <curl/curl.h>
#include <fmt/format.h>

#include <cstdlib>
#include <fstream>
#include <sstream>
#include <string>

namespace {

std::string ReadFile(const char* name) {
  std::ostringstream text;
  text << std::ifstream(name, std::ios::binary).rdbuf();
  return text.str();
}

void ReplaceAll(std::string& text, std::string_view tag, std::string_view value) {
  for (auto at = text.find(tag); at != std::string::npos; at = text.find(tag, at + value.size())) {
    text.replace(at, tag.size(), value);
  }
}

std::string Merged(std::string text, int number) {
  ReplaceAll(text, "$*MergeEmail*$", fmt::format("user{}@example.org", number));
  ReplaceAll(text, "$*MergeFirstName*$", fmt::format("Ada{}", number % 1000));
  ReplaceAll(text, "$*MergeLastName*$", "Lovelace");
  ReplaceAll(text, "$*MergeCity*$", "K\xC3\xB6ln");
  ReplaceAll(text, "$*MergeCompany*$", "Analytical Engines");
  return text;
}

void AddPart(curl_mime* mime, const std::string& text, const char* type) {
  curl_mimepart* part = curl_mime_addpart(mime);
  curl_mime_data(part, text.c_str(), text.size());
  curl_mime_type(part, type);
  curl_mime_encoder(part, "quoted-printable");
}

curl_mime* Compose(CURL* curl, const std::string& text, const std::string& html, const char* attachment) {
  curl_mime* mixed = curl_mime_init(curl);
  curl_mime* alternative = curl_mime_init(curl);
  AddPart(alternative, text, "text/plain; charset=utf-8");
  AddPart(alternative, html, "text/html; charset=utf-8");
  curl_mimepart* part = curl_mime_addpart(mixed);
  curl_mime_subparts(part, alternative);
  curl_mime_type(part, "multipart/alternative");
  if (attachment != nullptr) {
    part = curl_mime_addpart(mixed);
    curl_mime_filedata(part, attachment);
    curl_mime_encoder(part, "base64");
  }
  return mixed;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc < 6) return 64;
  const int count = std::atoi(argv[2]);
  const std::string text = ReadFile(argv[3]);
  const std::string html = ReadFile(argv[4]);
  curl_global_init(CURL_GLOBAL_DEFAULT);
  CURL* curl = curl_easy_init();
  curl_easy_setopt(curl, CURLOPT_URL, argv[1]);
  curl_easy_setopt(curl, CURLOPT_MAIL_FROM, "ada@example.org");
  for (int number = 1; number <= count; ++number) {
    const std::string to = fmt::format("user{}@example.org", number);
    curl_slist* recipients = curl_slist_append(nullptr, to.c_str());
    curl_slist* headers = curl_slist_append(nullptr, "From: Ada <ada@example.org>");
    headers = curl_slist_append(headers, ("To: " + to).c_str());
    headers = curl_slist_append(headers, ("Subject: " + Merged(argv[5], number)).c_str());
    headers = curl_slist_append(headers, fmt::format("Message-ID: <{}@example.org>", number).c_str());
    curl_mime* mime = Compose(curl, Merged(text, number), Merged(html, number), argc > 6 ? argv[6] : nullptr);
    curl_easy_setopt(curl, CURLOPT_MAIL_RCPT, recipients);
    curl_easy_setopt(curl, CURLOPT_HTTPHEADER, headers);
    curl_easy_setopt(curl, CURLOPT_MIMEPOST, mime);
    const CURLcode result = curl_easy_perform(curl);
    curl_mime_free(mime);
    curl_slist_free_all(headers);
    curl_slist_free_all(recipients);
    if (result != CURLE_OK) {
      fmt::print(stderr, "libcurl: {}\n", curl_easy_strerror(result));
      return 1;
    }
  }
  curl_easy_cleanup(curl);
  return 0;
}
