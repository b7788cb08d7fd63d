#include "desktop/single_instance.h"

#include <unistd.h>

#include <QCryptographicHash>
#include <QLocalSocket>

namespace quillcast::desktop {
namespace {

constexpr int kPatience = 300;  // milliseconds

}  // namespace

SingleInstance::SingleInstance(const QString& folder) {
  const QByteArray digest = QCryptographicHash::hash(folder.toUtf8(), QCryptographicHash::Sha256).toHex().left(16);
  name_ = QString("quillcast-%1-%2").arg(::getuid()).arg(QString::fromLatin1(digest));
  connect(&server_, &QLocalServer::newConnection, this, [this] {
    while (QLocalSocket* socket = server_.nextPendingConnection()) socket->deleteLater();
    emit Raised();
  });
}

bool SingleInstance::AnotherIsRunning() {
  QLocalSocket first;
  first.connectToServer(name_);
  if (first.waitForConnected(kPatience)) return true;
  QLocalServer::removeServer(name_);  // left behind by one that was killed
  server_.setSocketOptions(QLocalServer::UserAccessOption);
  server_.listen(name_);
  return false;
}

}  // namespace quillcast::desktop
