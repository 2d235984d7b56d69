// SPDX-License-Identifier: GPL-3.0-or-later
#include "ClipboardWatcher.h"

#include "AppSettings.h"
#include "ClipboardStore.h"
#include "ClipCapture.h"
#include "PasswordManagers.h"
#include "Pasteboard.h"
#include "PasteboardTypes.h"
#include "Workspace.h"

#include <QTimer>

ClipboardWatcher::ClipboardWatcher(Pasteboard &pasteboard, const Workspace &workspace, ClipboardStore &store,
    const AppSettings &settings, QObject *parent)
    : QObject(parent)
    , m_pasteboard(pasteboard)
    , m_workspace(workspace)
    , m_store(store)
    , m_settings(settings)
    , m_lastChange(pasteboard.changeCount())
{
}

void ClipboardWatcher::start()
{
    delete m_timer;
    m_timer = new QTimer(this);
    m_timer->setTimerType(Qt::PreciseTimer);
    m_timer->setInterval(pollInterval);
    connect(m_timer, &QTimer::timeout, this, &ClipboardWatcher::tick);
    m_timer->start();
    // Queued: paste-back marks its write in ownWriteCount right after the
    // write that sends the notice, and the tick must see that mark.
    connect(&m_pasteboard, &Pasteboard::changed, this, &ClipboardWatcher::tick,
        Qt::ConnectionType(Qt::QueuedConnection | Qt::UniqueConnection));
}

void ClipboardWatcher::tick()
{
    const qint64 change = m_pasteboard.changeCount();
    if (change == m_lastChange)
        return;
    // Looked at once, whatever comes of it.
    m_lastChange = change;

    if (m_ownWriteCount) {
        const qint64 own = *std::exchange(m_ownWriteCount, std::nullopt);
        if (change == own)
            return;
    }
    if (m_settings.ignoreSecretApps() && isSecret())
        return;
    capture();
}

bool ClipboardWatcher::isSecret() const
{
    const QStringList types = m_pasteboard.types();
    if (types.contains(PasteboardTypes::concealed) || types.contains(PasteboardTypes::transient))
        return true;
    // A hint that could not be read is taken for a secret: better a password
    // missing from the history than one kept in it.
    if (types.contains(PasteboardTypes::passwordManagerHint)
        && m_pasteboard.data(PasteboardTypes::passwordManagerHint).value_or("secret").trimmed() == "secret")
        return true;
    const auto front = m_workspace.frontmostApp();
    return front && front->identifier && PasswordManagers::identifiers().contains(*front->identifier);
}

void ClipboardWatcher::capture()
{
    const auto front = m_workspace.frontmostApp();
    const std::optional<QString> sourceApp = front ? front->identifier : std::nullopt;
    if (auto clip = ClipCapture(m_pasteboard, m_store.imagesDirPath()).capture(sourceApp))
        m_store.add(*clip);
}
