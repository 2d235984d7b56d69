// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "DesktopWindows.h"
#include "Workspace.h"

#include <QObject>

#include <memory>
#include <optional>

class ClickMonitor;
class ClipPanel;
class QPropertyAnimation;
class QTimer;
class QWidget;
class QWindow;

// Shows the picker panel beside the pointer and hides it again; remembers
// which application was in front, for paste-back and to give the focus back.
// The panel also hides when the focus leaves this application for another
// one (a click in another window, another window activated).
class PanelController : public QObject {
    Q_OBJECT

public:
    // Why the panel goes away, which decides where the focus goes.
    enum class HideReason {
        // Escape, the shortcut, a paste: the focus goes back to the
        // application that was in front, if the panel still had it.
        Dismissed,
        // The user chose another window (a click, another window
        // activated): the focus stays where the user put it.
        ClickedElsewhere,
    };

    // The panel hosts rootView, which it takes.
    PanelController(QWidget *rootView, Workspace &workspace, DesktopWindows &desktopWindows, QObject *parent = nullptr);
    ~PanelController() override;

    // Places the panel beside the pointer, shows it with the keyboard focus,
    // and remembers the application that was in front unless it is our own.
    // A show while shown, or while fading out, starts over.
    void showNearCursor();
    // Fades the panel out.
    void hide(HideReason reason = HideReason::Dismissed);

    // Also hide on a click that lands outside our windows, focus or not.
    void setClickMonitor(ClickMonitor *monitor);

    bool isShown() const { return m_shown; }
    std::optional<RunningApp> previousApp() const { return m_previousApp; }
    ClipPanel &panel() const { return *m_panel; }

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void takeFocusIfExposed();
    void followFocus(QWindow *focus);
    void hideIfAnotherAppInFront();
    void giveFocusBack();
    void hideIfClickedOutside();

    Workspace &m_workspace;
    DesktopWindows &m_desktopWindows;
    ClickMonitor *m_clickMonitor = nullptr;
    const bool m_unmanaged;
    std::unique_ptr<ClipPanel> m_panel;
    QPropertyAnimation *m_fadeIn;
    QPropertyAnimation *m_fadeOut;
    QTimer *m_focusCheck;
    std::optional<RunningApp> m_previousApp;
    bool m_shown = false;
    // The focus is yet to be asked for this showing.
    bool m_focusPending = false;
    // The panel has had the focus in this showing.
    bool m_focusArrived = false;
};
