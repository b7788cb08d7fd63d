#include "desktop/single_instance.h"

#include <QCryptographicHash>
#include <QDeadlineTimer>
#include <QLocalSocket>
#include <QStandardPaths>
#include <QThread>

namespace quillcast::desktop {
namespace {

constexpr int kPatience = 1000;  // milliseconds until one that has just started listens
constexpr int kPause = 20;

QString NameFor(const QString& folder) {
  const QByteArray digest = QCryptographicHash::hash(folder.toUtf8(), QCryptographicHash::Sha256).toHex().left(16);
  return QStandardPaths::writableLocation(QStandardPaths::RuntimeLocation) + "/quillcast-" +
         QString::fromLatin1(digest);
}

}  // namespace

SingleInstance::SingleInstance(const QString& folder) : name_(NameFor(folder)), lock_(name_ + ".lock") {
  lock_.setStaleLockTime(0);  // it is stale when its process is gone, and only then
  connect(&server_, &QLocalServer::newConnection, this, [this] {
    while (QLocalSocket* socket = server_.nextPendingConnection()) socket->deleteLater();
    emit Raised();
  });
}

bool SingleInstance::AnotherIsRunning() {
  if (!lock_.tryLock() && lock_.error() == QLockFile::LockFailedError) {
    QLocalSocket first;
    for (const QDeadlineTimer patience(kPatience); !patience.hasExpired(); QThread::msleep(kPause)) {
      first.connectToServer(name_);
      if (first.waitForConnected(kPause)) break;
    }
    return true;
  }
  QLocalServer::removeServer(name_);  // left behind by one that was killed
  server_.setSocketOptions(QLocalServer::UserAccessOption);
  server_.listen(name_);
  return false;
}

}  // namespace quillcast::desktop
