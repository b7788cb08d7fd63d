#include "desktop/shell/single_instance.h"

#include <QCryptographicHash>
#include <QDeadlineTimer>
#include <QLocalSocket>
#include <QStandardPaths>
#include <QThread>
#include <QTimer>

#include "desktop/widgets/qt_text.h"
#include "profile/start_message.h"

namespace quillcast::desktop {
namespace {

constexpr int kPatience = 1000;  // milliseconds until one that has just started listens
constexpr int kPause = 20;
constexpr int kAnswerPatience = 10000;  // until it answers: it may be starting
constexpr int kSpeakPatience = 3000;    // until whoever connects has said everything

QString NameFor(const QString& folder) {
  const QByteArray digest = QCryptographicHash::hash(folder.toUtf8(), QCryptographicHash::Sha256).toHex().left(16);
  return QStandardPaths::writableLocation(QStandardPaths::RuntimeLocation) + "/quillcast-" +
         QString::fromLatin1(digest);
}

}  // namespace

SingleInstance::SingleInstance(const QString& folder) : name_(NameFor(folder)), lock_(name_ + ".lock") {
  lock_.setStaleLockTime(0);  // it is stale when its process is gone, and only then
}

void SingleInstance::BeginHearing() {
  const auto hear = [this] {
    while (QLocalSocket* socket = server_.nextPendingConnection()) Hear(socket);
  };
  connect(&server_, &QLocalServer::newConnection, this, hear);
  hear();
}

bool SingleInstance::AnotherIsRunning(const std::vector<std::string>& arguments) {
  if (!IsFirst(0)) {
    handed_over_ = HandOver(arguments);
    if (handed_over_ || !IsFirst(kPatience)) return true;  // else the other one was about to end
  }
  QLocalServer::removeServer(name_);  // left behind by one that was killed
  server_.setSocketOptions(QLocalServer::UserAccessOption);
  server_.listen(name_);
  return false;
}

bool SingleInstance::IsFirst(int milliseconds) {
  return lock_.tryLock(milliseconds) || lock_.error() != QLockFile::LockFailedError;
}

bool SingleInstance::HandOver(const std::vector<std::string>& arguments) const {
  const auto message = profile::WriteStartMessage(arguments);
  if (!message) return false;
  QLocalSocket first;
  for (const QDeadlineTimer patience(kPatience); !patience.hasExpired(); QThread::msleep(kPause)) {
    first.connectToServer(name_);
    if (first.waitForConnected(kPause)) break;
  }
  first.write(QByteArray::fromStdString(*message));
  const auto expected = static_cast<qint64>(profile::kStartTaken.size());
  for (const QDeadlineTimer patience(kAnswerPatience); first.bytesAvailable() < expected;) {
    if (!first.waitForReadyRead(static_cast<int>(patience.remainingTime()))) break;
  }
  return first.readAll().toStdString() == profile::kStartTaken;
}

void SingleInstance::Hold(bool holds) {
  holds_ = holds;
  if (holds_) return;
  for (const auto& [socket, arguments] : std::exchange(held_, {})) {
    const bool still_waits = socket && socket->state() == QLocalSocket::ConnectedState;
    if (still_waits) Take(socket, arguments);
  }
}

void SingleInstance::Take(QLocalSocket* socket, const std::vector<std::string>& arguments) {
  socket->write(profile::kStartTaken.data(), static_cast<qint64>(profile::kStartTaken.size()));
  socket->flush();
  socket->disconnectFromServer();
  if (!arguments.empty()) emit Asked(arguments);
}

// Whoever says something else than a start does, too much or nothing at all is not listened to any longer.
void SingleInstance::Hear(QLocalSocket* socket) {
  connect(socket, &QLocalSocket::disconnected, socket, &QObject::deleteLater);
  auto* patience = new QTimer(socket);
  connect(patience, &QTimer::timeout, socket, &QLocalSocket::abort);
  patience->start(kSpeakPatience);
  const auto read = [this, socket, patience, said = std::string()]() mutable {
    said += socket->read(static_cast<qint64>(profile::kLargestStart + 1 - said.size())).toStdString();
    const auto message = profile::ReadStartMessage(said);
    if (message.state == profile::StartMessageState::kIncomplete) return;
    if (message.state == profile::StartMessageState::kRefused) {
      socket->abort();
      return;
    }
    patience->stop();
    disconnect(socket, &QLocalSocket::readyRead, this, nullptr);  // it has said everything
    emit Raised();
    if (holds_) {
      held_.emplace_back(socket, message.arguments);
    } else {
      Take(socket, message.arguments);
    }
  };
  connect(socket, &QLocalSocket::readyRead, this, read);
  if (socket->bytesAvailable() > 0) emit socket->readyRead();
}

}  // namespace quillcast::desktop
