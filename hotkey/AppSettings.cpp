// SPDX-License-Identifier: GPL-3.0-or-later
#include "AppSettings.h"

#include <QStandardPaths>

namespace {
const QString hotkeyKey = QStringLiteral("zettly.hotkey");
const QString historyLimitKey = QStringLiteral("zettly.historyLimit");
const QString autoPasteKey = QStringLiteral("zettly.autoPaste");
const QString ignoreSecretAppsKey = QStringLiteral("zettly.ignoreSecretApps");
} // namespace

AppSettings::AppSettings(const QString &filePath, QObject *parent)
    : QObject(parent)
    , m_defaults(filePath)
{
    if (const auto json = m_defaults.data(hotkeyKey)) {
        if (const auto stored = HotKeyConfig::fromJson(*json))
            m_hotkey = *stored;
    }
    // A stored 0 is as good as a missing key.
    if (const qint64 limit = m_defaults.integer(historyLimitKey); limit != 0)
        m_historyLimit = limit;
    m_autoPaste = m_defaults.boolean(autoPasteKey).value_or(true);
    m_ignoreSecretApps = m_defaults.boolean(ignoreSecretAppsKey).value_or(true);
}

AppSettings &AppSettings::shared()
{
    static AppSettings instance(standardFilePath());
    return instance;
}

QString AppSettings::standardFilePath()
{
    return QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation)
        + QStringLiteral("/Zettly/defaults.json");
}

template<typename T> void AppSettings::assign(T &field, const T &value)
{
    Q_EMIT aboutToChange();
    field = value;
    save();
    Q_EMIT changed();
}

void AppSettings::setHotkey(const HotKeyConfig &hotkey)
{
    assign(m_hotkey, hotkey);
    Q_EMIT hotkeyChanged(m_hotkey);
}

void AppSettings::setHistoryLimit(qint64 limit)
{
    assign(m_historyLimit, limit);
}

void AppSettings::setAutoPaste(bool enabled)
{
    assign(m_autoPaste, enabled);
}

void AppSettings::setIgnoreSecretApps(bool enabled)
{
    assign(m_ignoreSecretApps, enabled);
}

void AppSettings::save()
{
    m_defaults.setData(hotkeyKey, m_hotkey.toJson());
    m_defaults.setInteger(historyLimitKey, m_historyLimit);
    m_defaults.setBoolean(autoPasteKey, m_autoPaste);
    m_defaults.setBoolean(ignoreSecretAppsKey, m_ignoreSecretApps);
    m_defaults.write();
}
