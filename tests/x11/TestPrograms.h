// SPDX-License-Identifier: GPL-3.0-or-later
// The other programs the tests run (xclip, xdotool, setxkbmap, a text window),
// and the waiting they share.
#pragma once

#include "Workspace.h"

#include <QPoint>
#include <QProcess>
#include <QRect>
#include <QStringList>
#include <QTest>

#include <optional>
#include <ostream>

class OtherClient;

// Long enough for a window manager or a program starting on a busy machine.
constexpr int patience = 10'000;

// Polls the condition, the event loop running, until it holds or patience
// runs out.
template<typename Condition> bool eventually(Condition condition)
{
    return QTest::qWaitFor(condition, patience);
}

// Runs a program to its end with the event loop running, as the app's would;
// whether it succeeded.
bool runProgram(const QString &program, const QStringList &arguments);
// Replaces the server's keymap, dropping the options of earlier tests.
bool useLayouts(const QString &layouts, const QString &variants = {});
// The picker panel of that process as it is on the screen, if it is.
std::optional<QRect> panelOf(const OtherClient &display, const QProcess &app);

inline void PrintTo(const RunningApp &app, std::ostream *out)
{
    *out << "{window " << app.windowId << ", " << (app.identifier ? app.identifier->toStdString() : "no identifier")
         << '}';
}

// Another program on the clipboard: xclip, which keeps serving what it
// copied, INCR transfers included, until someone else takes the selection.
namespace XClip {

// Copies bytes as the given target ("UTF8_STRING" by default, which xclip
// also offers as STRING and TEXT). Returns once the copy is offered.
void copy(const QByteArray &bytes, const QString &target = {});
// What the clipboard's owner gives for a target, or nothing when the owner
// does not offer it. Runs the event loop while it waits.
QByteArray paste(const QString &target = QStringLiteral("UTF8_STRING"));

} // namespace XClip

// The user at the keyboard and the mouse, through xdotool (XTest).
namespace XDoTool {

// Keys by their X names, "ctrl+super+v", "Return", one after the other.
bool key(const QStringList &keys);
bool type(const QString &text);
bool moveTo(QPoint position);
bool click(QPoint position, int button = 1);
// Zettly's shortcut, Control+Super+V.
bool pressShortcut();

} // namespace XDoTool

// A text window of another process (text_target.cpp), which a paste lands
// in: what it holds, and whether it has the keyboard focus.
class TextTarget {
public:
    TextTarget() { m_process.setProcessChannelMode(QProcess::ForwardedErrorChannel); }
    ~TextTarget();

    // Started, mapped and focused.
    bool start();
    bool waitForFocus();
    bool waitForText(const QString &text);
    // Reads what it reported so far.
    QString text();

private:
    QProcess m_process;
    QString m_text;
    bool m_focused = false;
};
