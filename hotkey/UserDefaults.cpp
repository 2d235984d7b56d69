// SPDX-License-Identifier: GPL-3.0-or-later
#include "UserDefaults.h"

#include "PrivateFiles.h"

#include <QFile>
#include <QFileInfo>
#include <QJsonDocument>
#include <QLoggingCategory>
#include <QVariant>

#include <cmath>

Q_LOGGING_CATEGORY(lcSettings, "zettly.settings", QtWarningMsg)

namespace {
const QString dataMember = QStringLiteral("data");
}

UserDefaults::UserDefaults(QString filePath)
    : m_filePath(std::move(filePath))
{
    PrivateFiles::removeInterruptedWrites(m_filePath);
    QFile file(m_filePath);
    if (!file.exists())
        return;
    if (file.open(QIODevice::ReadOnly)) {
        QJsonParseError error;
        const QJsonDocument document = QJsonDocument::fromJson(file.readAll(), &error);
        if (error.error == QJsonParseError::NoError && document.isObject()) {
            m_values = document.object();
            return;
        }
    }
    const QString aside = PrivateFiles::moveAsideUnreadable(m_filePath);
    // Writing over a file that could not be moved away would destroy it.
    m_writesBlocked = aside.isEmpty();
    qCInfo(lcSettings) << "unreadable settings file moved to" << aside;
}

std::optional<QByteArray> UserDefaults::data(const QString &key) const
{
    const QJsonValue value = m_values.value(key);
    if (!value.isObject())
        return std::nullopt;
    const QJsonValue encoded = value.toObject().value(dataMember);
    if (!encoded.isString())
        return std::nullopt;
    auto decoded
        = QByteArray::fromBase64Encoding(encoded.toString().toLatin1(), QByteArray::AbortOnBase64DecodingErrors);
    if (!decoded)
        return std::nullopt;
    return *decoded;
}

qint64 UserDefaults::integer(const QString &key) const
{
    const QJsonValue value = m_values.value(key);
    switch (value.type()) {
    case QJsonValue::Bool:
        return value.toBool() ? 1 : 0;
    case QJsonValue::Double: {
        const QVariant number = value.toVariant();
        if (number.typeId() == QMetaType::LongLong)
            return number.toLongLong();
        const double truncated = std::trunc(number.toDouble());
        // Out of range counts as unusable, like a missing key.
        if (!(std::abs(truncated) < 9.2e18))
            return 0;
        return static_cast<qint64>(truncated);
    }
    case QJsonValue::String: {
        bool ok = false;
        const qint64 parsed = value.toString().trimmed().toLongLong(&ok);
        return ok ? parsed : 0;
    }
    default:
        return 0;
    }
}

std::optional<bool> UserDefaults::boolean(const QString &key) const
{
    const QJsonValue value = m_values.value(key);
    if (!value.isBool())
        return std::nullopt;
    return value.toBool();
}

void UserDefaults::setData(const QString &key, const QByteArray &value)
{
    m_values.insert(key, QJsonObject { { dataMember, QString::fromLatin1(value.toBase64()) } });
}

void UserDefaults::setInteger(const QString &key, qint64 value)
{
    m_values.insert(key, value);
}

void UserDefaults::setBoolean(const QString &key, bool value)
{
    m_values.insert(key, value);
}

bool UserDefaults::write()
{
    if (m_writesBlocked)
        return false;
    const QString folder = QFileInfo(m_filePath).absolutePath();
    PrivateFiles::ensureFolder(folder);
    QString errorText;
    const bool written = PrivateFiles::writeAtomically(
        m_filePath, QJsonDocument(m_values).toJson(QJsonDocument::Indented), &errorText);
    if (!written)
        qCInfo(lcSettings) << "could not write" << m_filePath << errorText;
    return written;
}
