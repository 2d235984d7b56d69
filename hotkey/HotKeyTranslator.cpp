// SPDX-License-Identifier: GPL-3.0-or-later
#include "HotKeyTranslator.h"

#include "HotKeyConfig.h"
#include "KeyLayout.h"

namespace HotKeyTranslator {

namespace {

// The keys that type no plain letter or digit, by position: the glyph the
// interface shows, and the keysym name a desktop's shortcut string uses.
struct NamedKey {
    quint32 code;
    QStringView glyph;
    QStringView keysym;
};

constexpr NamedKey namedKeys[] = {
    { 36, u"↩", u"Return" },
    { 48, u"⇥", u"Tab" },
    { 49, u"Space", u"space" },
    { 51, u"⌫", u"BackSpace" },
    { 53, u"⎋", u"Escape" },
    { 123, u"←", u"Left" },
    { 124, u"→", u"Right" },
    { 125, u"↓", u"Down" },
    { 126, u"↑", u"Up" },
};

const NamedKey *namedKey(quint32 keyCode)
{
    for (const NamedKey &key : namedKeys) {
        if (key.code == keyCode)
            return &key;
    }
    return nullptr;
}

// Keysym names of the keys that type no plain letter or digit, by position.
QString keysymName(quint32 keyCode)
{
    if (const NamedKey *key = namedKey(keyCode))
        return key->keysym.toString();
    // F1 to F12, which macOS numbers in no order.
    constexpr quint32 functionKeys[] = { 0x7A, 0x78, 0x63, 0x76, 0x60, 0x61, 0x62, 0x64, 0x65, 0x6D, 0x67, 0x6F };
    for (int i = 0; i < 12; ++i) {
        if (functionKeys[i] == keyCode)
            return u'F' + QString::number(i + 1);
    }
    return {};
}

} // namespace

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
    if (const NamedKey *key = namedKey(keyCode))
        return key->glyph.toString();
    if (layout) {
        // QString::toUpper applies the full, locale-independent case mapping
        // ("ß" becomes "SS").
        if (const auto character = layout->character(keyCode); character && !character->isEmpty())
            return character->toUpper();
    }
    return QStringLiteral("key(") + QString::number(keyCode) + u')';
}

std::optional<QString> shortcutString(quint32 keyCode, quint32 modifiers, const KeyLayout *layout)
{
    QString key = keysymName(keyCode);
    if (key.isEmpty() && layout) {
        // A letter's or digit's keysym name is the character itself.
        if (const auto character = layout->character(keyCode); character && character->size() == 1) {
            const QChar c = character->at(0).toLower();
            if ((c >= u'a' && c <= u'z') || (c >= u'0' && c <= u'9'))
                key = c;
        }
    }
    if (key.isEmpty())
        return std::nullopt;
    QString text;
    if (modifiers & HotKeyConfig::Control)
        text += QStringLiteral("CTRL+");
    if (modifiers & HotKeyConfig::Option)
        text += QStringLiteral("ALT+");
    if (modifiers & HotKeyConfig::Shift)
        text += QStringLiteral("SHIFT+");
    if (modifiers & HotKeyConfig::Command)
        text += QStringLiteral("LOGO+");
    return text + key;
}

} // namespace HotKeyTranslator
