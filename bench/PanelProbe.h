// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QHash>
#include <QString>

#include <chrono>
#include <functional>
#include <optional>

struct xcb_connection_t;

// Presses the default shortcut (Ctrl+Super+V) through XTest and watches, on
// the same X connection, the panel a process shows in answer: when it is on
// the screen (its window and any window manager frame mapped) and when the
// process draws into it (DAMAGE reports after the server's Expose, which
// leaves out the server's own background fill at mapping).
class PanelProbe {
public:
    using Clock = std::chrono::steady_clock;

    // Times from the key press; nothing for what did not happen in time.
    struct Show {
        std::optional<Clock::duration> mapped;
        // The process's first drawing into the mapped panel.
        std::optional<Clock::duration> painted;
        // The drawing after which its drawings span the whole panel.
        std::optional<Clock::duration> paintedWhole;
        // Its last drawing while the panel was watched.
        std::optional<Clock::duration> lastPainted;
    };

    // Connects to $DISPLAY; error() says what is missing.
    PanelProbe();
    ~PanelProbe();

    PanelProbe(const PanelProbe &) = delete;
    PanelProbe &operator=(const PanelProbe &) = delete;

    // Empty while all is well.
    QString error() const { return m_error; }
    bool hasWindowManager() const;

    // Presses the shortcut, again every retry, until a window of process pid
    // is shown, and takes that window for the panel; then follows it until
    // keepShown after the press. Its drawings are seen only when the window
    // became known before it was mapped (a window manager reparents it first).
    std::optional<Show> findPanel(qint64 pid, std::chrono::milliseconds retry, std::chrono::milliseconds timeout,
        std::chrono::milliseconds keepShown);
    // Presses made by findPanel() before the panel was seen.
    int findPresses() const { return m_findPresses; }
    bool isPanelShown() const { return m_viewable; }
    bool isReparented() const { return m_reparented; }
    QString panelSize() const { return m_panelSize; }

    // One press that should show the hidden panel, timed; the panel is
    // followed until keepShown after the press, or timeout without it.
    Show show(std::chrono::milliseconds timeout, std::chrono::milliseconds keepShown);
    // One press that should hide the shown panel; false when it stays.
    bool hide(std::chrono::milliseconds timeout);
    // Follows the X events for a while, between presses.
    void idle(std::chrono::milliseconds duration);
    // Types one key (an X key code) into the shown panel; the time from the
    // press to the panel's last drawing within keepWatching, if it drew.
    std::optional<Clock::duration> type(quint8 keyCode, std::chrono::milliseconds keepWatching);

private:
    struct Sample {
        Clock::time_point pressedAt;
        bool panelMapSeen = false;
        bool exposed = false;
        std::optional<Clock::time_point> mappedAt;
        std::optional<Clock::time_point> paintedAt;
        std::optional<Clock::time_point> paintedWholeAt;
        std::optional<Clock::time_point> lastPaintedAt;
        // The bounding box of the drawings so far.
        int left = 0;
        int top = 0;
        int right = 0;
        int bottom = 0;
    };

    bool connectToServer();
    bool findKeyCodes();
    Clock::time_point pressShortcut();
    Clock::time_point pressKey(quint8 keyCode);
    // Handles events until done() or the deadline; false at the deadline.
    bool pump(Clock::time_point deadline, const std::function<bool()> &done);
    void dispatch(const void *event, Clock::time_point now);
    void considerPanel(quint32 window);
    void adoptPanel(quint32 window);
    void setMapped(quint32 window, bool mapped, Clock::time_point now);
    void reparented(quint32 window, quint32 parent, Clock::time_point now);
    void exposed(quint32 window);
    void damaged(int x, int y, int width, int height, Clock::time_point now);
    void updateViewable(Clock::time_point now);
    std::optional<qint64> windowPid(quint32 window);
    Show result() const;

    xcb_connection_t *m_connection = nullptr;
    QString m_error;
    quint32 m_root = 0;
    quint32 m_pidAtom = 0;
    quint32 m_wmCheckAtom = 0;
    quint8 m_damageFirstEvent = 0;
    quint8 m_controlKey = 0;
    quint8 m_superKey = 0;
    quint8 m_shortcutKey = 0;

    qint64 m_pid = 0;
    bool m_finding = false;
    int m_findPresses = 0;
    quint32 m_panel = 0;
    quint32 m_damage = 0;
    quint32 m_panelParent = 0;
    bool m_panelMapped = false;
    bool m_viewable = false;
    bool m_reparented = false;
    QString m_panelSize;
    int m_panelWidth = 0;
    int m_panelHeight = 0;
    // Map state of the windows whose map changes this connection sees.
    QHash<quint32, bool> m_mapped;
    std::optional<Sample> m_sample;
};
