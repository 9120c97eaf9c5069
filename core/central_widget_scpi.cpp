// SPDX-License-Identifier: MIT
// The remote interface of the front panel: the server, the remote notice and the handler of
// the common, system, output and source commands.
#include "core/central_widget.h"

#include "core/device.h"
#include "core/impairment_rows.h"
#include "persist/preferences.h"
#include "remote/scpi_remote_dialog.h"
#include "remote/scpi_words.h"
#include "shell/error_queue.h"
#include "shell/version_checker.h"

#include <QHostAddress>
#include <QTcpSocket>

#include <algorithm>

namespace {

constexpr double minFrequency = 30e6;
constexpr double maxFrequency = 6e9;

}  // namespace

void CentralWidget::setUpRemote() {
  scpi.setHandler([this](Scpi* command) { handleScpiCommand(command); });
  remoteDialog = new SCPIRemoteDialog(this);
  connect(&scpiServer, &QTcpServer::newConnection, this, &CentralWidget::handleSCPIConnection);
  startScpiServer();
}

// ---- Server ---------------------------------------------------------------------------------

void CentralWidget::startScpiServer() {
  if (!preferences.scpiEnabled) return;  // an open server then stays as it is
  stopScpiServer();
  // Loopback only; a port in use leaves the program without a server, silently.
  scpiServer.listen(QHostAddress::LocalHost, static_cast<quint16>(preferences.scpiPort));
}

void CentralWidget::stopScpiServer() {
  if (scpiSocket) {
    disconnect(scpiSocket, &QTcpSocket::disconnected, this, &CentralWidget::handleSCPIDisconnect);
    disconnect(scpiSocket, &QTcpSocket::readyRead, this, &CentralWidget::readSCPISocket);
    scpiSocket->close();
    scpi.setSocket(nullptr);
  }
  scpiServer.close();
}

void CentralWidget::restartScpiServerIfIdle() {
  if (!scpiSocket || scpiSocket->state() != QAbstractSocket::ConnectedState) startScpiServer();
}

void CentralWidget::handleSCPIConnection() {
  // The former client goes later; while its command still runs (a connect waits in a nested
  // event loop) it stays alive, or the read on the stack below would use a freed socket.
  if (scpiSocket) {
    if (readingScpi)
      retiredSockets.append(scpiSocket);
    else
      scpiSocket->deleteLater();
  }
  scpiSocket = scpiServer.nextPendingConnection();
  if (!scpiSocket) return;
  scpi.setSocket(scpiSocket);
  // Lines are taken a bounded chunk at a time, so that a client that sends without end can be
  // dropped between two chunks and the event loop keeps turning.
  scpiSocket->setReadBufferSize(scpiReadChunkBytes);
  // While a client is connected nothing listens: a second client is refused, not queued.
  scpiServer.close();
  connect(scpiSocket, &QTcpSocket::disconnected, this, &CentralWidget::handleSCPIDisconnect);
  connect(scpiSocket, &QTcpSocket::readyRead, this, &CentralWidget::readSCPISocket);
}

void CentralWidget::handleSCPIDisconnect() { startScpiServer(); }

void CentralWidget::readSCPISocket() {
  // A command that runs a nested event loop can't take the next line before it has answered;
  // what arrives meanwhile is read below, once it has.
  if (readingScpi) return;
  if (!scpiSocket || scpiSocket->state() != QAbstractSocket::ConnectedState) {
    startScpiServer();
    return;
  }
  readingScpi = true;
  // The socket announces bytes once: everything buffered is read, also what came in while a
  // command ran, from this client or from the one that took its place.
  while (scpiSocket && scpiSocket->state() == QAbstractSocket::ConnectedState &&
         scpiSocket->bytesAvailable() > 0) {
    QTcpSocket* client = scpiSocket;
    const QByteArray bytes = client->readAll();
    // The text of a chunk ends at its first zero byte.
    scpi.feed(QString::fromUtf8(bytes.constData(),
                                static_cast<int>(qstrnlen(bytes.constData(), bytes.size()))));
    dropClientOwedTooMuch(client);
  }
  readingScpi = false;
  for (QTcpSocket* retired : retiredSockets) retired->deleteLater();
  retiredSockets.clear();
}

// A client that never reads its replies would make them pile up without end: past the limit
// it is dropped, as if it had left.
void CentralWidget::dropClientOwedTooMuch(QTcpSocket* client) {
  if (client == scpiSocket && client->bytesToWrite() > maxOwedReplyBytes) client->abort();
}

void CentralWidget::showRemoteDialog() {
  if (remoteDialog->isVisible()) return;
  remoteDialog->show();
  const QPoint centre = mapToGlobal(rect().center());
  remoteDialog->move(centre - QPoint(remoteDialog->width() / 2, remoteDialog->height() / 2));
}

// ---- Handler --------------------------------------------------------------------------------

void CentralWidget::handleScpiCommand(Scpi* command) {
  showRemoteDialog();
  const int id = command->commandId();
  if (id < 1 || id > scpiCommandCount) return;
  if (id <= 23)
    handleCommonCommand(*command, id);
  else if (id <= 55)
    handleSourceCommand(*command, id);
  else if (const ModeRegistry::RowHandler* handler = modeUnits.rowHandler(id))
    (*handler)(*this, *command, id);
  // Rows that no unit owns match and do nothing.
}

void CentralWidget::handleCommonCommand(Scpi& command, int id) {
  int number = 0;
  switch (id) {
    case 1: {
      QString identity = "Tarnwick,";
      if (device->isOpen())
        identity += QString::fromStdString(device->modelName()) + "," +
                    QString::fromStdString(device->serialNumberText()) + "," +
                    QString::fromStdString(device->firmwareText());
      else
        identity += ",,";
      command.addResponse(identity);
      break;
    }
    case 2:
      if (command.nextInt(number) && number >= 1 && number <= 9) saveQuickPreset(number);
      break;
    case 3:
      if (command.nextInt(number) && number >= 1 && number <= 9) loadQuickPreset(number);
      break;
    case 4: addIntResponse(command, opcGate.opcComplete() ? 1 : 0); break;
    case 5: opcGate.armOpc(); break;
    case 7:
    case 14: presetButtonPressed(); break;
    case 8: triggerPressed(); break;
    case 9: addIntResponse(command, errorLogCount()); break;
    case 10: command.addResponse(errorLogNext()); break;
    case 11: errorLogClear(); break;
    case 12: remoteDialog->done(0); break;
    case 13: emit closeWindowRequested(); break;
    case 15:
      presetButtonPressed();
      addIntResponse(command, 1);
      break;
    case 16: command.addResponse(softwareVersion()); break;
    case 17: addBoolResponse(command, device->isOpen()); break;
    case 18:
      addIntResponse(command, device->isOpen() ? 0 : static_cast<int>(device->deviceList().size()));
      break;
    case 19:
      if (!device->isOpen())
        for (int serial : device->deviceList()) addIntResponse(command, serial);
      break;
    case 20:
      if (!command.nextInt(number)) break;
      emit connectDeviceRequested(number);
      addBoolResponse(command, device->isOpen());
      break;
    case 21:
      emit disconnectDeviceRequested();
      addIntResponse(command, 1);
      break;
    case 22: addIntResponse(command, 0); break;
    default: break;  // 6 and 23 exist in the table and do nothing
  }
}

void CentralWidget::handleSourceCommand(Scpi& command, int id) {
  bool on = false;
  double value = 0.0;
  int word = 0;
  switch (id) {
    case 24:
      if (command.nextBool(on)) setRFEnabled(on);
      break;
    case 25: addBoolResponse(command, rfEnabled()); break;
    case 26:
      if (command.nextBool(on)) setModEnabled(on);
      break;
    case 27: addBoolResponse(command, modEnabled()); break;
    case 44:
      if (readScpiWord(command, scpiWords::referenceSource, word))
        setReference(word == 1 ? KrtTimebaseExternal : KrtTimebaseInternal);
      break;
    case 45:
      command.addResponse(scpiWordText(scpiWords::referenceSource, referenceEnabled() ? 1 : 0));
      break;
    case 48:
      if (command.isUp())
        increaseCenterFrequency();
      else if (command.isDown())
        decreaseCenterFrequency();
      else if (command.nextFrequency(value))
        setCenterFrequency(value);
      break;
    case 49:
      addDoubleResponse(command, command.isMin()   ? minFrequency
                                 : command.isMax() ? maxFrequency
                                                   : frequency());
      break;
    case 50:
      // MIN and MAX answer here, on the setting row, and set nothing.
      if (command.isMin())
        addDoubleResponse(command, 0.0);
      else if (command.isMax())
        addDoubleResponse(command, maxFrequency);
      else if (command.nextFrequency(value))
        setStepFrequency(value);
      break;
    case 51: addDoubleResponse(command, frequencyStep()); break;
    case 52:
      if (command.isUp())
        increaseLevel();
      else if (command.isDown())
        decreaseLevel();
      else if (command.nextDouble(value))
        setLevel(value);
      break;
    case 53:
      addDoubleResponse(command, command.isMin() ? -120.0 : command.isMax() ? 10.0 : level());
      break;
    case 54:
      if (command.nextDouble(value)) setLevelStep(value);
      break;
    case 55:
      addDoubleResponse(command, command.isMin() ? 0.0 : command.isMax() ? 100.0 : levelStep());
      break;
    default: handleImpairmentRow(*impairments, command, id); break;
  }
}
