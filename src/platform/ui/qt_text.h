// Between the core's UTF-8 and Qt's texts.
#pragma once

#include <QFile>
#include <QString>
#include <filesystem>
#include <string>
#include <string_view>

namespace quillcast::platform {

inline QString ToQt(std::string_view text) {
  return QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()));
}
inline QString PathToQt(const std::filesystem::path& path) {
  return QFile::decodeName(QByteArray::fromStdString(path.string()));
}
inline std::string FromQt(const QString& text) { return text.toStdString(); }
inline std::filesystem::path PathFromQt(const QString& path) { return QFile::encodeName(path).toStdString(); }

}  // namespace quillcast::platform
