// SPDX-License-Identifier: GPL-3.0-or-later
#include "ClipboardWatcher.h"

#include "AppSettings.h"
#include "ClipboardStore.h"
#include "ClipCapture.h"
#include "PasswordManagers.h"
#include "Paste.h"
#include "Pasteboard.h"
#include "Workspace.h"

#include <QLoggingCategory>
#include <QTimer>

#include <algorithm>

namespace {

// Why a copy was not recorded, for whoever wonders; never what it held.
Q_LOGGING_CATEGORY(lcClipboard, "zettly.clipboard", QtWarningMsg)

} // namespace

ClipboardWatcher::ClipboardWatcher(Pasteboard &pasteboard, const Workspace &workspace, ClipboardStore &store,
    const AppSettings &settings, QObject *parent)
    : QObject(parent)
    , m_pasteboard(pasteboard)
    , m_workspace(workspace)
    , m_store(store)
    , m_settings(settings)
    , m_lastChange(pasteboard.changeCount())
{
    m_pasteboard.setReadScope([this] { return readScope(); });
}

ClipboardWatcher::~ClipboardWatcher()
{
    m_pasteboard.setReadScope({});
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
    handle(change);
    // What is recorded lives in the history; nothing else should linger.
    m_pasteboard.releaseData();
}

void ClipboardWatcher::handle(qint64 change)
{
    if (m_ownWriteCount) {
        const qint64 own = *std::exchange(m_ownWriteCount, std::nullopt);
        if (change == own)
            return;
    }
    if (m_pasteboard.ownerQuit()) {
        restoreAfterOwnerQuit(change);
        return;
    }
    if (m_settings.ignoreSecretApps()) {
        if (m_pasteboard.isMarkedSecret()) {
            qCDebug(lcClipboard) << "copy not recorded: marked secret";
            return;
        }
        if (isPasswordManagerInFront()) {
            qCDebug(lcClipboard) << "copy not recorded: a password manager is in front";
            return;
        }
    }
    capture(change);
}

ReadScope ClipboardWatcher::readScope() const
{
    if (!m_settings.ignoreSecretApps())
        return ReadScope::Everything;
    return isPasswordManagerInFront() ? ReadScope::TypesOnly : ReadScope::UnlessMarkedSecret;
}

bool ClipboardWatcher::isPasswordManagerInFront() const
{
    const auto front = m_workspace.frontmostApp();
    return front && front->identifier && PasswordManagers::identifiers().contains(*front->identifier);
}

void ClipboardWatcher::capture(qint64 change)
{
    const auto front = m_workspace.frontmostApp();
    const std::optional<QString> sourceApp = front ? front->identifier : std::nullopt;
    auto clip = ClipCapture(m_pasteboard, m_store.imagesDirPath()).capture(sourceApp);
    if (!clip)
        return;
    // A copy the history turned down is never put back either.
    if (const std::optional<QUuid> id = m_store.add(*clip))
        m_recorded = Recorded { change, *id };
}

void ClipboardWatcher::restoreAfterOwnerQuit(qint64 change)
{
    // Only what the clipboard held right before, and only if it was recorded:
    // a secret or a skipped copy is never brought back.
    const auto recorded = std::exchange(m_recorded, std::nullopt);
    if (!recorded || recorded->change != change - 1)
        return;
    const QList<ClipItem> &items = m_store.items();
    const auto entry
        = std::find_if(items.cbegin(), items.cend(), [&](const ClipItem &item) { return item.id == recorded->id; });
    // Removed from the history meanwhile.
    if (entry == items.cend())
        return;
    const ClipItem item = *entry;
    // Never over another program's copy, however recent.
    m_pasteboard.writeIfUnowned([&] { Paste::putOnPasteboard(item, m_store, *this); });
}
