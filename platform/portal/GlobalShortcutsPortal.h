// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QDBusConnection>
#include <QObject>
#include <QString>

class QDBusMessage;
class QDBusObjectPath;
class QDBusPendingCallWatcher;

// The desktop's GlobalShortcuts portal, for sessions where a client cannot
// grab keys itself (Wayland). Every call is asynchronous: the portal may be
// started on demand and take its time. Where the desktop does not offer it,
// nothing is said and nothing else happens.
class GlobalShortcutsPortal : public QObject {
    Q_OBJECT

public:
    enum class State {
        Idle,
        Checking,
        // The desktop has no such portal.
        Absent,
        Binding,
        // The desktop holds our shortcut.
        Bound,
        // The portal answered with an error, or the user declined.
        Refused,
    };

    static constexpr const char *shortcutId = "toggle-picker";

    explicit GlobalShortcutsPortal(QDBusConnection bus = QDBusConnection::sessionBus(), QObject *parent = nullptr);

    // Asks whether the portal is offered and, if so, binds the shortcut with
    // preferredTrigger as its suggested keys (empty: the desktop asks).
    void start(const QString &preferredTrigger);
    // Binds again with new suggested keys once the session is open.
    void setPreferredTrigger(const QString &preferredTrigger);

    State state() const { return m_state; }

Q_SIGNALS:
    void stateChanged(GlobalShortcutsPortal::State state);
    // The shortcut was pressed.
    void activated();

private Q_SLOTS:
    void onResponse(uint response, const QVariantMap &results);
    void onActivated(
        const QDBusObjectPath &session, const QString &shortcut, qulonglong timestamp, const QVariantMap &options);

private:
    enum class Step { None, CreatingSession, BindingShortcut };

    void createSession();
    void bindShortcut();
    // Calls method, whose answer comes through the Request object at the
    // path that handle_token names.
    void callWithRequest(const QString &method, const QVariantList &arguments, QVariantMap options, Step step);
    void watchRequest(const QString &path);
    void setState(State state);

    QDBusConnection m_bus;
    QString m_trigger;
    QString m_sentTrigger;
    QString m_session;
    QString m_request;
    Step m_step = Step::None;
    State m_state = State::Idle;
};
