// SPDX-License-Identifier: GPL-3.0-or-later
#include "HotKeyTranslator.h"

#include "HotKeyConfig.h"
#include "KeyLayout.h"

namespace HotKeyTranslator {

quint32 carbonModifiers(Qt::KeyboardModifiers modifiers)
{
    quint32 mask = 0;
    if (modifiers & Qt::MetaModifier)
        mask |= HotKeyConfig::Command;
    if (modifiers & Qt::AltModifier)
        mask |= HotKeyConfig::Option;
    if (modifiers & Qt::ControlModifier)
        mask |= HotKeyConfig::Control;
    if (modifiers & Qt::ShiftModifier)
        mask |= HotKeyConfig::Shift;
    return mask;
}

QString displayString(quint32 keyCode, quint32 modifiers, const KeyLayout *layout)
{
    QString text;
    if (modifiers & HotKeyConfig::Control)
        text += u'⌃';
    if (modifiers & HotKeyConfig::Option)
        text += u'⌥';
    if (modifiers & HotKeyConfig::Shift)
        text += u'⇧';
    if (modifiers & HotKeyConfig::Command)
        text += u'⌘';
    return text + keyName(keyCode, layout);
}

QString keyName(quint32 keyCode, const KeyLayout *layout)
{
    switch (keyCode) {
    case 36:
        return QStringLiteral("↩");
    case 48:
        return QStringLiteral("⇥");
    case 49:
        return QStringLiteral("Space");
    case 51:
        return QStringLiteral("⌫");
    case 53:
        return QStringLiteral("⎋");
    case 123:
        return QStringLiteral("←");
    case 124:
        return QStringLiteral("→");
    case 125:
        return QStringLiteral("↓");
    case 126:
        return QStringLiteral("↑");
    default:
        break;
    }
    if (layout) {
        // QString::toUpper applies the full, locale-independent case mapping
        // ("ß" becomes "SS").
        if (const auto character = layout->character(keyCode); character && !character->isEmpty())
            return character->toUpper();
    }
    return QStringLiteral("key(") + QString::number(keyCode) + u')';
}

} // namespace HotKeyTranslator
