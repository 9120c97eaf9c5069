// SPDX-License-Identifier: MIT
// Start-up check for a newer software version, fetched once in the background.
#include "shell/version_checker.h"

#include <QByteArray>
#include <QStringList>
#include <QTcpSocket>
#include <QUrl>

#include <pthread.h>

#include <string>

namespace {

const char* const kThreadName = "KRT40 Get Version Thread";
const char* const kAgent = "MyAgent";

// Limit for the connection and for each wait for data.
constexpr int kReceiveTimeoutMs = 5000;
// Body bytes taken at most; a version text has 5 to 14, so a 15th byte rules the file out.
constexpr int kMaxBytes = 15;
constexpr int kMinTextBytes = 5;
constexpr int kMaxTextBytes = 14;
// A server that sends endless headers must not keep the thread for long.
constexpr int kMaxHeaderBytes = 8192;

int versionPart(const QString& part) {
  // QString::toInt forgives surrounding blanks, but a line break after the patch must give 0.
  bool ok = false;
  const int value = part.toInt(&ok);
  return ok && part.trimmed().size() == part.size() ? value : 0;
}

QByteArray requestFor(const QUrl& url) {
  QByteArray path = url.path(QUrl::FullyEncoded).toLatin1();
  if (path.isEmpty()) path = "/";
  if (url.hasQuery()) path += "?" + url.query(QUrl::FullyEncoded).toLatin1();
  QByteArray host = url.host(QUrl::FullyEncoded).toLatin1();
  if (url.port() != -1) host += ":" + QByteArray::number(url.port());
  // HTTP/1.0 keeps the body free of chunk framing and ends it with the connection. The
  // no-cache headers make proxies on the way fetch the file afresh; nothing is stored here.
  return "GET " + path + " HTTP/1.0\r\nHost: " + host + "\r\nUser-Agent: " + kAgent +
         "\r\nCache-Control: no-cache\r\nPragma: no-cache\r\nConnection: close\r\n\r\n";
}

// Position of the first body byte, or -1 while the header is incomplete.
int bodyStart(const QByteArray& response) {
  const int end = response.indexOf("\r\n\r\n");
  return end < 0 ? -1 : end + 4;
}

// True once the header and kMaxBytes of body are in: no more is needed.
bool haveEnough(const QByteArray& response) {
  const int start = bodyStart(response);
  return start >= 0 && response.size() - start >= kMaxBytes;
}

// Receives until there is enough, the server closes, or no data comes for the limit. False
// on a timeout or a transport error.
bool receive(QTcpSocket& socket, QByteArray& response) {
  while (true) {
    response += socket.readAll();
    if (haveEnough(response)) return true;
    if (bodyStart(response) < 0 && response.size() > kMaxHeaderBytes) return false;
    if (!socket.waitForReadyRead(kReceiveTimeoutMs)) break;
  }
  response += socket.readAll();
  return socket.error() == QAbstractSocket::RemoteHostClosedError;
}

bool isSuccessStatus(const QByteArray& response) {
  const QList<QByteArray> statusLine = response.left(response.indexOf('\r')).split(' ');
  return statusLine.size() >= 2 && statusLine[0].startsWith("HTTP/") &&
         statusLine[1].startsWith('2');
}

// One plain HTTP GET of the version file; false if the text could not be fetched.
bool fetchVersionText(const QString& address, QString& text) {
  const QUrl url(address);
  if (!url.isValid() || url.scheme() != "http" || url.host().isEmpty()) return false;
  QTcpSocket socket;
  socket.connectToHost(url.host(), quint16(url.port(80)));
  if (!socket.waitForConnected(kReceiveTimeoutMs)) return false;
  socket.write(requestFor(url));
  if (!socket.waitForBytesWritten(kReceiveTimeoutMs)) return false;
  QByteArray response;
  if (!receive(socket, response) || !isSuccessStatus(response)) return false;
  const int start = bodyStart(response);
  if (start < 0) return false;
  const QByteArray body = response.mid(start, kMaxBytes);
  if (body.size() < kMinTextBytes || body.size() > kMaxTextBytes) return false;
  // Read as a C string, as from a zero-filled buffer: a NUL byte ends the text.
  text = QString::fromLatin1(body.constData());
  return true;
}

}  // namespace

const char* softwareVersion() { return "1.0.5"; }

bool parseVersionText(const QString& text, VersionNumber& version) {
  const QStringList parts = text.split('.', Qt::SkipEmptyParts);
  if (parts.size() != 3) return false;
  version = {versionPart(parts[0]), versionPart(parts[1]), versionPart(parts[2])};
  return true;
}

bool isNewerVersion(const VersionNumber& published, const VersionNumber& running) {
  const bool majorAtLeast = published.majorPart >= running.majorPart;
  return (published.patchPart > running.patchPart && published.minorPart >= running.minorPart &&
          majorAtLeast) ||
         (published.minorPart > running.minorPart && majorAtLeast) ||
         published.majorPart > running.majorPart;
}

VersionChecker::VersionChecker(QObject* parent) : QObject(parent) {}

VersionChecker::~VersionChecker() {
  if (thread.joinable()) thread.join();
}

void VersionChecker::start() {
  if (started) return;
  started = true;
  const QByteArray fromEnvironment = qgetenv("KRT40_VERSION_URL");
  const QString url = fromEnvironment.isEmpty() ? QStringLiteral(KRT40_VERSION_URL)
                                                : QString::fromLocal8Bit(fromEnvironment);
  thread = std::thread([this, url] { run(url); });
}

bool VersionChecker::isNewVersionAvailable() {
  if (thread.joinable()) thread.join();
  return newVersionAvailable.load(std::memory_order_relaxed);
}

void VersionChecker::run(const QString& url) {
  // Linux refuses thread names of more than 15 characters.
  pthread_setname_np(pthread_self(), std::string(kThreadName).substr(0, 15).c_str());
  QString text;
  if (!fetchVersionText(url, text)) {
    connectionFailed_.store(true, std::memory_order_relaxed);
    return;
  }
  VersionNumber published;
  if (!parseVersionText(text, published)) return;
  const bool newer = isNewerVersion(published);
  newVersionAvailable.store(newer, std::memory_order_relaxed);
  if (newer) emit broadcastNewVersionAvailable();
}
