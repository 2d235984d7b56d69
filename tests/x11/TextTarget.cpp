// SPDX-License-Identifier: GPL-3.0-or-later
#include "TextTarget.h"

#include <QTest>

namespace {

constexpr int patience = 10'000;

} // namespace

TextTarget::TextTarget()
{
    m_process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
}

TextTarget::~TextTarget()
{
    m_process.terminate();
    if (!m_process.waitForFinished(5000))
        m_process.kill();
}

bool TextTarget::start()
{
    m_process.start(QStringLiteral(ZETTLY_TEXT_TARGET_PATH), {});
    return m_process.waitForStarted() && waitForFocus();
}

bool TextTarget::waitForFocus()
{
    return QTest::qWaitFor(
        [&] {
            read();
            return m_focused;
        },
        patience);
}

bool TextTarget::waitForText(const QString &text)
{
    return QTest::qWaitFor(
        [&] {
            read();
            return m_text == text;
        },
        patience);
}

QString TextTarget::text()
{
    read();
    return m_text;
}

void TextTarget::read()
{
    while (m_process.canReadLine()) {
        const QList<QByteArray> words = m_process.readLine().trimmed().split(' ');
        if (words.value(0) == "focus")
            m_focused = words.value(1) == "1";
        else if (words.value(0) == "text")
            m_text = QString::fromUtf8(QByteArray::fromBase64(words.value(2)));
    }
}
