// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QDBusArgument>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusMetaType>
#include <QDBusObjectPath>
#include <QDBusVariant>
#include <QDBusVirtualObject>

#include <gtest/gtest.h>

// A desktop portal offering GlobalShortcuts, on a connection of its own to
// the test's bus: it grants every request at once and records the shortcuts
// bound.
class FakeShortcutsPortal : public QDBusVirtualObject {
public:
    struct Binding {
        QString session;
        QString id;
        QVariantMap properties;
    };

    static constexpr const char *sessionPath = "/org/freedesktop/portal/desktop/session/test/s1";
    // Every shortcut bound so far, in order.
    QList<Binding> bindings;

    FakeShortcutsPortal()
        : m_bus(QDBusConnection::connectToBus(QDBusConnection::SessionBus, QStringLiteral("fake-portal")))
    {
        EXPECT_TRUE(m_bus.registerVirtualObject(desktopPath(), this));
        EXPECT_TRUE(m_bus.registerService(QStringLiteral("org.freedesktop.portal.Desktop")));
    }
    ~FakeShortcutsPortal() override
    {
        m_bus.unregisterService(QStringLiteral("org.freedesktop.portal.Desktop"));
        m_bus.unregisterObject(desktopPath());
        QDBusConnection::disconnectFromBus(QStringLiteral("fake-portal"));
    }

    void activate(const QString &session, const QString &id)
    {
        QDBusMessage signal = QDBusMessage::createSignal(
            desktopPath(), QStringLiteral("org.freedesktop.portal.GlobalShortcuts"), QStringLiteral("Activated"));
        signal << QVariant::fromValue(QDBusObjectPath(session)) << id << qulonglong(1) << QVariantMap();
        m_bus.send(signal);
    }

    QString introspect(const QString &) const override { return {}; }

    bool handleMessage(const QDBusMessage &message, const QDBusConnection &) override
    {
        const QVariantList arguments = message.arguments();
        if (message.member() == QLatin1String("Get")) {
            m_bus.send(message.createReply(QVariant::fromValue(QDBusVariant(1u))));
        } else if (message.member() == QLatin1String("CreateSession")) {
            respond(message, qdbus_cast<QVariantMap>(arguments.at(0)),
                { { QStringLiteral("session_handle"), QString::fromLatin1(sessionPath) } });
        } else if (message.member() == QLatin1String("BindShortcuts")) {
            const QString session = arguments.at(0).value<QDBusObjectPath>().path();
            const auto shortcuts = arguments.at(1).value<QDBusArgument>();
            shortcuts.beginArray();
            while (!shortcuts.atEnd()) {
                Binding binding { session, {}, {} };
                shortcuts.beginStructure();
                shortcuts >> binding.id >> binding.properties;
                shortcuts.endStructure();
                bindings.append(binding);
            }
            shortcuts.endArray();
            respond(message, qdbus_cast<QVariantMap>(arguments.at(3)), {});
        } else {
            return false;
        }
        return true;
    }

private:
    static QString desktopPath() { return QStringLiteral("/org/freedesktop/portal/desktop"); }

    // Answers with the Request object's path, then that object's Response.
    void respond(const QDBusMessage &call, const QVariantMap &options, const QVariantMap &results)
    {
        const QString request = desktopPath() + QStringLiteral("/request/") + call.service().mid(1).replace(u'.', u'_')
            + u'/' + options.value(QStringLiteral("handle_token")).toString();
        m_bus.send(call.createReply(QVariant::fromValue(QDBusObjectPath(request))));
        QDBusMessage response = QDBusMessage::createSignal(
            request, QStringLiteral("org.freedesktop.portal.Request"), QStringLiteral("Response"));
        response << 0u << results;
        m_bus.send(response);
    }

    QDBusConnection m_bus;
};
