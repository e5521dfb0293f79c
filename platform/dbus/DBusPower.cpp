#include "platform/dbus/DBusPower.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDBusUnixFileDescriptor>
#include <memory>
#include <utility>

namespace zeb {
namespace {

constexpr int kAnswerMilliseconds = 10'000;
constexpr Duration kConnectLimit = std::chrono::seconds(10);

struct Request {
  const char* who;  // for the reason
  QDBusConnection bus;
  QDBusMessage message;
};

// The answer is kept: the system stays awake for as long as the descriptor in it is open.
void Call(QObject& owner, const Request& request, const std::function<void(const std::string&)>& refused) {
  const std::string who = request.who;
  if (!request.bus.isConnected()) return refused("no bus to " + who);
  auto* watcher =
      new QDBusPendingCallWatcher(request.bus.asyncCall(request.message, kAnswerMilliseconds), &owner);
  QObject::connect(watcher, &QDBusPendingCallWatcher::finished, &owner,
                   [who, refused](QDBusPendingCallWatcher* answered) {
                     if (answered->isError())
                       refused(who + " refuses: " + answered->error().message().simplified().toStdString());
                   });
}

}  // namespace

void DBusPower::StayAwake(const std::string& why, std::function<void(const std::string& reason)> refused) {
  // One line for both: a machine without buses has neither.
  const auto told = std::make_shared<bool>(false);
  const auto once = [told, refused = std::move(refused)](const std::string& reason) {
    if (!std::exchange(*told, true)) refused(reason);
  };
  loop_.Start(
      "stay awake", [&loop = loop_, once, text = QString::fromStdString(why), kept = std::weak_ptr(calls_)] {
        // Connecting waits for the bus.
        const bool connected = loop.RunBlocking(
            [] {
              (void)QDBusConnection::systemBus();
              (void)QDBusConnection::sessionBus();
            },
            kConnectLimit);
        const auto calls = kept.lock();
        if (!calls) return;
        if (!connected) return once("the system's buses do not answer");
        QDBusMessage awake = QDBusMessage::createMethodCall(
            "org.freedesktop.login1", "/org/freedesktop/login1", "org.freedesktop.login1.Manager", "Inhibit");
        awake << "idle"
              << "ZEB" << text << "block";
        Call(*calls, {"logind", QDBusConnection::systemBus(), awake}, once);
        QDBusMessage screen =
            QDBusMessage::createMethodCall("org.freedesktop.ScreenSaver", "/org/freedesktop/ScreenSaver",
                                           "org.freedesktop.ScreenSaver", "Inhibit");
        screen << "ZEB" << text;
        Call(*calls, {"the screen saver", QDBusConnection::sessionBus(), screen}, once);
      });
}

}  // namespace zeb
