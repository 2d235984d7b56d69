// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "PasteKeystroke.h"
#include "PasteShortcut.h"

#include <QDeadlineTimer>
#include <QObject>

#include <memory>
#include <optional>

class QTimer;
class XkbKeyLayout;
struct xcb_connection_t;

// Types the paste shortcut through the XTest extension: the key that types
// "v" on the current layout (the Latin group's where the layout has none),
// with the modifiers that suit the target application. XTest cannot release
// keys the user still holds, and Ctrl+V with the user's Super still down is
// another shortcut: it waits, polling the keyboard, until the user's
// modifiers are up or a second has passed.
class X11PasteKeystroke : public QObject, public PasteKeystroke {
    Q_OBJECT

public:
    // Uses Qt's connection: needs a QGuiApplication on the xcb platform.
    explicit X11PasteKeystroke(QObject *parent = nullptr);
    // Uses a connection owned by someone else, which must outlive this
    // object.
    explicit X11PasteKeystroke(xcb_connection_t *connection, QObject *parent = nullptr);
    ~X11PasteKeystroke() override;

    bool isTrusted() const override;
    // A paste asked for while another waits replaces it.
    void sendPaste(const RunningApp &target) override;

private:
    void sendWhenModifiersUp();
    bool userHoldsModifier() const;
    void send(PasteShortcut shortcut);

    xcb_connection_t *m_connection = nullptr;
    std::unique_ptr<XkbKeyLayout> m_layout;
    QTimer *m_poll;
    QDeadlineTimer m_deadline;
    std::optional<PasteShortcut> m_pending;
};
