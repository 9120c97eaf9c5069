// SPDX-License-Identifier: MIT
// A one-shot HTTP server on the loopback interface that hands out a canned response.
#pragma once

#include "shell/version_checker.h"

#include <QHostAddress>
#include <QTcpServer>
#include <QTcpSocket>
#include <QTest>

// Answers on the test's thread, so wait for answered() before anything that blocks it.
class VersionServer {
public:
  explicit VersionServer(QByteArray response) : response(std::move(response)) {
    server.listen(QHostAddress::LocalHost);
    QObject::connect(&server, &QTcpServer::newConnection, [this] {
      QTcpSocket* socket = server.nextPendingConnection();
      QObject::connect(socket, &QTcpSocket::readyRead, [this, socket] { read(socket); });
    });
  }

  static QByteArray file(const QByteArray& body) {
    return "HTTP/1.0 200 OK\r\nContent-Type: text/plain\r\n\r\n" + body;
  }

  QString url() const { return urlAt(server.serverPort()); }
  static QString urlAt(quint16 port) {
    return QString("http://127.0.0.1:%1/krt40_version.txt").arg(port);
  }
  bool answered() const { return answered_; }
  const QByteArray& request() const { return request_; }

private:
  void read(QTcpSocket* socket) {
    request_ += socket->readAll();
    if (answered_ || !request_.contains("\r\n\r\n")) return;
    socket->write(response);
    socket->flush();  // out now: the test may block its event loop right after answered()
    socket->disconnectFromHost();
    answered_ = true;
  }

  QTcpServer server;
  QByteArray response;
  QByteArray request_;
  bool answered_ = false;
};

// A loopback address where nobody listens.
inline QString closedPortUrl() {
  QTcpServer probe;
  probe.listen(QHostAddress::LocalHost);
  return VersionServer::urlAt(probe.serverPort());
}

// Starts `checker` against `url` and, if a server is given, serves until it has answered.
inline bool runCheck(VersionChecker& checker, const QString& url, VersionServer* server) {
  qputenv("KRT40_VERSION_URL", url.toUtf8());
  checker.start();
  return !server || QTest::qWaitFor([server] { return server->answered(); }, 10000);
}
