// SPDX-License-Identifier: GPL-3.0-or-later
#include "ShortcutRecorder.h"

#include "GlobalHotKey.h"
#include "HotKeyTranslator.h"
#include "KeyPositions.h"

#include <QApplication>
#include <QKeyEvent>
#include <QWidget>

namespace {

constexpr quint32 escapeKeyCode = 53;
// X11 numbers keys as the kernel's codes plus 8.
constexpr quint32 x11KeyCodeOffset = 8;

bool isModifierKey(int key)
{
    switch (key) {
    case Qt::Key_Shift:
    case Qt::Key_Control:
    case Qt::Key_Meta:
    case Qt::Key_Alt:
    case Qt::Key_AltGr:
    case Qt::Key_Super_L:
    case Qt::Key_Super_R:
    case Qt::Key_Hyper_L:
    case Qt::Key_Hyper_R:
    case Qt::Key_CapsLock:
    case Qt::Key_NumLock:
    case Qt::Key_ScrollLock:
        return true;
    default:
        return false;
    }
}

} // namespace

ShortcutRecorder::ShortcutRecorder(const QWidget *scope)
    : m_scope(scope)
{
}

ShortcutRecorder::~ShortcutRecorder()
{
    stop();
}

void ShortcutRecorder::start()
{
    if (m_recording)
        return;
    m_recording = true;
    qApp->installEventFilter(this);
    m_suspendedHotKey = GlobalHotKey::shared();
    if (m_suspendedHotKey)
        m_suspendedHotKey->suspend();
    Q_EMIT recordingChanged(true);
}

void ShortcutRecorder::stop()
{
    if (!m_recording)
        return;
    m_recording = false;
    qApp->removeEventFilter(this);
    if (m_suspendedHotKey)
        m_suspendedHotKey->resume();
    m_suspendedHotKey.clear();
    Q_EMIT recordingChanged(false);
}

std::optional<HotKeyConfig> ShortcutRecorder::shortcutOf(const QKeyEvent &event)
{
    if (isModifierKey(event.key()) || event.nativeScanCode() < x11KeyCodeOffset)
        return std::nullopt;
    const auto keyCode = KeyPositions::virtualKeyCode(event.nativeScanCode() - x11KeyCodeOffset);
    if (!keyCode)
        return std::nullopt;
    return HotKeyConfig { .keyCode = *keyCode, .modifiers = HotKeyTranslator::carbonModifiers(event.modifiers()) };
}

bool ShortcutRecorder::eventFilter(QObject *watched, QEvent *event)
{
    // Keys typed elsewhere meanwhile (the picker, say) are theirs.
    const auto *target = qobject_cast<const QWidget *>(watched);
    if (!target || !m_scope || target->window() != m_scope->window())
        return QObject::eventFilter(watched, event);
    // Accepting the override keeps window and button shortcuts from taking
    // the key: it comes back as a plain key press.
    if (event->type() == QEvent::ShortcutOverride) {
        const auto *key = static_cast<QKeyEvent *>(event);
        if (!isModifierKey(key->key())) {
            event->accept();
            return true;
        }
    }
    if (event->type() != QEvent::KeyPress)
        return QObject::eventFilter(watched, event);
    const auto *key = static_cast<QKeyEvent *>(event);
    if (isModifierKey(key->key()))
        return false;
    const std::optional<HotKeyConfig> shortcut = shortcutOf(*key);
    // A key with no known position cannot be grabbed again later: wait for
    // another one.
    if (!shortcut)
        return true;
    if (shortcut->keyCode != escapeKeyCode)
        Q_EMIT recorded(*shortcut);
    stop();
    return true;
}
