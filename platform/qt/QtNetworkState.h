// What the sockets of one QtNetwork share. Private to platform/qt.
#pragma once

#include <QList>
#include <QSslCertificate>
#include <memory>
#include <set>
#include <string>

#include "platform/qt/QtLoop.h"
#include "platform/qt/QtStream.h"

namespace zeb {

struct QtNetworkState : QtStreams {
  using QtStreams::QtStreams;

  // With the system's own, once there are others: Qt then no longer looks the system's up by itself.
  QList<QSslCertificate> authorities;
  std::set<std::shared_ptr<void>> leavingConnections;  // closed by their users, still sending
  std::string piece;                                   // the buffer of whoever reads
};

}  // namespace zeb
