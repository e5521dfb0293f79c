#include "platform/qt/QtMessages.h"

#include <QString>
#include <QtGlobal>

namespace zeb {
namespace {

LineWriter* receiver = nullptr;

void PassOn(QtMsgType, const QMessageLogContext&, const QString& message) {
  QString text = message;
  for (QChar& c : text)
    if (c.category() == QChar::Other_Control) c = ' ';
  receiver->Write({"", "", "Qt: " + text.toStdString()});
}

}  // namespace

void SendQtMessagesTo(LineWriter& journal) {
  receiver = &journal;
  qInstallMessageHandler(PassOn);
}

}  // namespace zeb
