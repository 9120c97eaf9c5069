// SPDX-License-Identifier: MIT
// A remote client for panel tests: a real TCP connection to the panel's SCPI server.
#pragma once

#include "core_test_env.h"

#include <QTcpSocket>

#include <gtest/gtest.h>

// Every wait runs the event loop, since the server lives on the test's own thread.
class ScpiClient {
public:
  explicit ScpiClient(quint16 port) {
    socket.connectToHost("127.0.0.1", port);
    connected = waitUntil([&] { return socket.state() == QAbstractSocket::ConnectedState; });
  }

  // Sends a line and returns its reply without the line feed, "<no reply>" after 3 s.
  QString query(const QString& line) {
    socket.write((line + "\n").toUtf8());
    if (!waitUntil([&] { return socket.canReadLine(); }, 3000)) return "<no reply>";
    return QString::fromUtf8(socket.readLine()).chopped(1);
  }

  // Sends a line that answers nothing and waits until the server has handled it, by
  // following it with a query on a line of its own.
  void command(const QString& line) { EXPECT_EQ(query(line + "\n:SYST:VER?"), "1.0.5") << line; }

  bool connected = false;
  QTcpSocket socket;
};
