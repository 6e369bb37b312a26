#include "window/keyring_probe.hpp"

#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QDBusReply>

namespace qiro_plugin::debugger {

bool is_keyring_available() {
    const QString service = QStringLiteral("org.freedesktop.secrets");
    QDBusConnection bus = QDBusConnection::sessionBus();
    if (!bus.isConnected() || bus.interface() == nullptr) {
        return false;
    }
    if (bus.interface()->isServiceRegistered(service).value()) {
        return true;
    }
    QDBusMessage request = QDBusMessage::createMethodCall(
        QStringLiteral("org.freedesktop.DBus"), QStringLiteral("/org/freedesktop/DBus"),
        QStringLiteral("org.freedesktop.DBus"), QStringLiteral("ListActivatableNames"));
    const QDBusReply<QStringList> names = bus.call(request, QDBus::Block, 1000);
    return names.isValid() && names.value().contains(service);
}

} // namespace qiro_plugin::debugger
