// Between the core's UTF-8 and Qt's texts.
#pragma once

#include <QCoreApplication>
#include <QFile>
#include <QString>
#include <QStringList>
#include <QTextDocument>
#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

#include "platform/result.h"
#include "platform/text.h"

namespace quillcast::desktop {

inline QString ToQt(std::string_view text) {
  return QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()));
}
inline QString PathToQt(const std::filesystem::path& path) {
  return QFile::decodeName(QByteArray::fromStdString(path.string()));
}
inline std::string FromQt(const QString& text) { return text.toStdString(); }
inline std::filesystem::path PathFromQt(const QString& path) { return QFile::encodeName(path).toStdString(); }

// A given text of the core in the user's language, where a catalogue has it.
inline QString Translated(std::string_view text) {
  return QCoreApplication::translate("Core", std::string(text).c_str());
}

inline QString InWords(const Sentence& sentence) {
  return ToQt(sentence.In([](const std::string& pattern) { return FromQt(Translated(std::string_view(pattern))); }));
}

// One a line of a list.
inline QStringList InWords(const std::vector<Sentence>& sentences) {
  QStringList lines;
  for (const auto& sentence : sentences) lines << InWords(sentence);
  return lines;
}

// What happened and the remedy, in the user's language.
inline QString InWords(const Error& error) {
  const QString what = InWords(error.what);
  return error.remedy.empty() ? what : what + " " + InWords(error.remedy);
}

// A text of others as a tool tip. A tip that looks like HTML would be shown as such, and the files that it names
// opened. A long one is broken into lines, which only HTML is.
inline QString PlainTip(const QString& text) {
  constexpr qsizetype kOneLine = 100;
  return Qt::mightBeRichText(text) || text.size() > kOneLine
             ? "<p style='white-space:pre-wrap'>" + text.toHtmlEscaped() + "</p>"
             : text;
}

// `one` for 1, else `many` with the number in the place of its %1.
inline QString Counted(std::int64_t count, const QString& one, const QString& many) {
  return count == 1 ? one : many.arg(ToQt(platform::WithThousands(count)));
}

}  // namespace quillcast::desktop
