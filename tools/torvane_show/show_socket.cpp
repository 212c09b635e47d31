#include "torvane_show/show_socket.h"

#include <sys/socket.h>
#include <unistd.h>

#include <QDir>
#include <QLocalSocket>
#include <QPointer>
#include <QStandardPaths>
#include <memory>

#include "platform/linux/private_file.h"

namespace torvane::show {
namespace {

constexpr int kMostClients = 16;
constexpr qint64 kMostWaiting = 8192;  // bytes of one client that are not read yet

// Where the engine looks, too.
QString folder() {
  const QString runtime = qEnvironmentVariable("XDG_RUNTIME_DIR");
  const QString base = runtime.isEmpty()
                           ? QStandardPaths::writableLocation(QStandardPaths::GenericCacheLocation)
                           : runtime;
  return base + QStringLiteral("/torvane/show");
}

bool isOfThisUser(const QLocalSocket& client) {
  ucred peer{};
  socklen_t size = sizeof(peer);
  const int descriptor = static_cast<int>(client.socketDescriptor());
  return ::getsockopt(descriptor, SOL_SOCKET, SO_PEERCRED, &peer, &size) == 0 &&
         peer.uid == ::getuid();
}

}  // namespace

ShowSocket::ShowSocket(Answer answer) : answer_(std::move(answer)) {
  server_.setSocketOptions(QLocalServer::UserAccessOption);
  server_.setMaxPendingConnections(kMostClients);
  connect(&server_, &QLocalServer::newConnection, this, &ShowSocket::welcome);
}

bool ShowSocket::listen() {
  if (!makePrivateFolder(QFile::encodeName(folder()).toStdString())) return false;
  const QString name = folder() + QStringLiteral("/%1").arg(::getpid());
  QLocalServer::removeServer(name);  // of an earlier process of this number
  return server_.listen(name);
}

void ShowSocket::welcome() {
  while (auto* client = server_.nextPendingConnection()) {
    connect(client, &QLocalSocket::disconnected, client, &QObject::deleteLater);
    if (!isOfThisUser(*client) || server_.findChildren<QLocalSocket*>().size() > kMostClients) {
      client->abort();
      continue;
    }
    client->setReadBufferSize(kMostWaiting);
    const auto lines = std::make_shared<LineBuffer>(kLongestQuestion);
    connect(client, &QLocalSocket::readyRead, this,
            [this, client, lines] { read(client, *lines); });
  }
}

// Who asks nonsense is not heard any more.
void ShowSocket::read(QLocalSocket* client, LineBuffer& lines) {
  const QByteArray bytes = client->readAll();
  lines.add({bytes.data(), static_cast<std::size_t>(bytes.size())});
  const QPointer<QLocalSocket> asker(client);
  while (const auto line = lines.take()) {
    const auto question = parseQuestion(*line);
    if (!question) return client->abort();
    answer_(*question, [asker](const std::string& reply) {
      if (!asker) return;
      asker->write(reply.data(), static_cast<qint64>(reply.size()));
      asker->flush();  // the program may be about to end
    });
    if (!asker) return;
  }
  if (lines.isTooLong()) client->abort();
}

}  // namespace torvane::show
