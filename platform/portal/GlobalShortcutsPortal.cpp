// SPDX-License-Identifier: GPL-3.0-or-later
#include "GlobalShortcutsPortal.h"

#include <QDBusArgument>
#include <QDBusMessage>
#include <QDBusMetaType>
#include <QDBusObjectPath>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDBusVariant>
#include <QRandomGenerator>

#include <utility>

namespace {

const QString service = QStringLiteral("org.freedesktop.portal.Desktop");
const QString desktopPath = QStringLiteral("/org/freedesktop/portal/desktop");
const QString shortcutsInterface = QStringLiteral("org.freedesktop.portal.GlobalShortcuts");

// One entry of BindShortcuts' a(sa{sv}).
struct PortalShortcut {
    QString id;
    QVariantMap properties;
};

QDBusArgument &operator<<(QDBusArgument &argument, const PortalShortcut &shortcut)
{
    argument.beginStructure();
    argument << shortcut.id << shortcut.properties;
    argument.endStructure();
    return argument;
}

const QDBusArgument &operator>>(const QDBusArgument &argument, PortalShortcut &shortcut)
{
    argument.beginStructure();
    argument >> shortcut.id >> shortcut.properties;
    argument.endStructure();
    return argument;
}

QString newToken()
{
    return QStringLiteral("zettly%1").arg(QRandomGenerator::global()->generate());
}

} // namespace

Q_DECLARE_METATYPE(PortalShortcut)

GlobalShortcutsPortal::GlobalShortcutsPortal(QDBusConnection bus, QObject *parent)
    : QObject(parent)
    , m_bus(std::move(bus))
{
    qDBusRegisterMetaType<PortalShortcut>();
    qDBusRegisterMetaType<QList<PortalShortcut>>();
}

void GlobalShortcutsPortal::start(const QString &preferredTrigger)
{
    if (m_state != State::Idle)
        return;
    m_trigger = preferredTrigger;
    // No session bus at all (a bare sway): no portal either.
    if (!m_bus.isConnected()) {
        setState(State::Absent);
        return;
    }
    setState(State::Checking);
    QDBusMessage get = QDBusMessage::createMethodCall(
        service, desktopPath, QStringLiteral("org.freedesktop.DBus.Properties"), QStringLiteral("Get"));
    get.setArguments({ shortcutsInterface, QStringLiteral("version") });
    auto *watcher = new QDBusPendingCallWatcher(m_bus.asyncCall(get), this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this, [this, watcher] {
        watcher->deleteLater();
        // No portal at all, or one without this interface (older ones, and
        // every backend but KDE's): the same to us.
        if (watcher->isError()) {
            setState(State::Absent);
            return;
        }
        createSession();
    });
}

void GlobalShortcutsPortal::setPreferredTrigger(const QString &preferredTrigger)
{
    if (preferredTrigger == m_trigger)
        return;
    m_trigger = preferredTrigger;
    if (!m_session.isEmpty() && m_step == Step::None)
        bindShortcut();
}

void GlobalShortcutsPortal::createSession()
{
    callWithRequest(QStringLiteral("CreateSession"), {}, { { QStringLiteral("session_handle_token"), newToken() } },
        Step::CreatingSession);
}

void GlobalShortcutsPortal::bindShortcut()
{
    QVariantMap properties { { QStringLiteral("description"), QStringLiteral("Ouvrir Zettly") } };
    m_sentTrigger = m_trigger;
    if (!m_trigger.isEmpty())
        properties.insert(QStringLiteral("preferred_trigger"), m_trigger);
    const QList<PortalShortcut> shortcuts { { QString::fromLatin1(shortcutId), properties } };
    callWithRequest(QStringLiteral("BindShortcuts"),
        { QVariant::fromValue(QDBusObjectPath(m_session)), QVariant::fromValue(shortcuts), QString() }, {},
        Step::BindingShortcut);
    // Last: whoever hears of it may ask for new keys at once.
    setState(State::Binding);
}

void GlobalShortcutsPortal::callWithRequest(
    const QString &method, const QVariantList &arguments, QVariantMap options, Step step)
{
    const QString token = newToken();
    options.insert(QStringLiteral("handle_token"), token);
    // Watched before the call: the answer may come before the call returns.
    QString sender = m_bus.baseService().mid(1);
    sender.replace(u'.', u'_');
    watchRequest(desktopPath + QStringLiteral("/request/") + sender + u'/' + token);
    m_step = step;

    QDBusMessage call = QDBusMessage::createMethodCall(service, desktopPath, shortcutsInterface, method);
    call.setArguments(QVariantList(arguments) << options);
    auto *watcher = new QDBusPendingCallWatcher(m_bus.asyncCall(call), this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this, [this, watcher] {
        watcher->deleteLater();
        const QDBusPendingReply<QDBusObjectPath> reply = *watcher;
        if (reply.isError()) {
            m_step = Step::None;
            setState(State::Refused);
            return;
        }
        // Portals before 0.9 chose the path themselves.
        if (reply.value().path() != m_request)
            watchRequest(reply.value().path());
    });
}

void GlobalShortcutsPortal::watchRequest(const QString &path)
{
    const QString interface = QStringLiteral("org.freedesktop.portal.Request");
    const QString name = QStringLiteral("Response");
    if (!m_request.isEmpty())
        m_bus.disconnect(service, m_request, interface, name, this, SLOT(onResponse(uint, QVariantMap)));
    m_request = path;
    m_bus.connect(service, m_request, interface, name, this, SLOT(onResponse(uint, QVariantMap)));
}

void GlobalShortcutsPortal::onResponse(uint response, const QVariantMap &results)
{
    const Step step = std::exchange(m_step, Step::None);
    if (response != 0) {
        setState(State::Refused);
        return;
    }
    if (step == Step::CreatingSession) {
        // A string in the interface's first version, an object path in
        // some backends.
        const QVariant handle = results.value(QStringLiteral("session_handle"));
        m_session = handle.metaType() == QMetaType::fromType<QDBusObjectPath>() ? handle.value<QDBusObjectPath>().path()
                                                                                : handle.toString();
        if (m_session.isEmpty()) {
            setState(State::Refused);
            return;
        }
        m_bus.connect(service, desktopPath, shortcutsInterface, QStringLiteral("Activated"), this,
            SLOT(onActivated(QDBusObjectPath, QString, qulonglong, QVariantMap)));
        bindShortcut();
    } else if (step == Step::BindingShortcut) {
        // The settings changed while the desktop was asking.
        if (m_trigger != m_sentTrigger)
            bindShortcut();
        else
            setState(State::Bound);
    }
}

void GlobalShortcutsPortal::onActivated(
    const QDBusObjectPath &session, const QString &shortcut, qulonglong, const QVariantMap &)
{
    if (session.path() == m_session && shortcut == QLatin1String(shortcutId))
        Q_EMIT activated();
}

void GlobalShortcutsPortal::setState(State state)
{
    if (state == m_state)
        return;
    m_state = state;
    Q_EMIT stateChanged(state);
}
