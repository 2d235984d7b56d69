// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QByteArrayView>
#include <QList>
#include <QRect>

#include <xcb/xcb.h>

#include <chrono>
#include <cstdint>
#include <initializer_list>
#include <mutex>
#include <optional>
#include <string_view>
#include <thread>

// Another program on the test's X server, on a connection of its own: it
// makes windows, grabs keys, locks modifiers and looks at other clients'
// windows.
class OtherClient {
public:
    // What a window carries; empty values are left unset.
    struct Properties {
        std::string_view gtkApplicationId;
        std::string_view desktopFile;
        std::string_view wmClass; // "instance\0class\0"
    };

    OtherClient();
    ~OtherClient();
    OtherClient(const OtherClient &) = delete;
    OtherClient &operator=(const OtherClient &) = delete;

    xcb_connection_t *connection() const { return m_connection; }
    xcb_window_t root() const { return m_root; }
    xcb_atom_t atom(QByteArrayView name) const;
    // A round trip: the server has handled every earlier request.
    void sync() const;
    // Whether the server took a checked request.
    bool succeeds(xcb_void_cookie_t cookie);
    // The events and errors (as 0) queued so far, after a round trip.
    QList<uint8_t> takeEvents();

    // A mapped window, on the root unless a parent is given.
    xcb_window_t createWindow(
        const Properties &properties, xcb_window_t parent = XCB_WINDOW_NONE, QRect geometry = { 10, 10, 200, 100 });
    // A top-level one with only this WM_CLASS.
    xcb_window_t createWindow(
        const QByteArray &instance, const QByteArray &className, QRect geometry = { 0, 0, 300, 200 });
    // The 32-bit values of a window's property (window ids, cardinals);
    // empty when it is not set.
    QList<uint32_t> cardinals(xcb_window_t window, QByteArrayView property) const;
    xcb_window_t inputFocus() const;
    bool setInputFocus(xcb_window_t window);
    xcb_window_t clipboardOwner() const;

    // Grabs the key on the root window; false when another client has it.
    bool grabKey(uint8_t keyCode, uint16_t modifiers);
    // Locks exactly these of the affected modifiers, and the group if given,
    // as lock keys and a layout switcher do. Returns once applied.
    bool lockModifiers(uint8_t affected, uint8_t locked, std::optional<uint8_t> group = std::nullopt);

    // The window's children, bottom to top.
    QList<xcb_window_t> children(xcb_window_t window) const;
    // Where the window really is, in root coordinates; null when gone.
    QRect rootGeometry(xcb_window_t window) const;
    bool isViewable(xcb_window_t window) const;
    // The viewable windows whose _NET_WM_PID is pid, as rectangles on the
    // root, looking through window-manager frames.
    QList<QRect> visibleWindowsOf(qint64 pid) const;

private:
    xcb_connection_t *m_connection;
    xcb_window_t m_root = XCB_NONE;
    bool m_xkbReady = false;
};

// Owns the CLIPBOARD selection, on an X connection and a thread of its own,
// and serves the given targets as another program would. Data larger than one
// request goes INCR, in chunks of 256 KiB as Qt and GTK owners send it; one
// such transfer at a time.
class TestSelectionOwner {
public:
    struct Target {
        QByteArray name;
        QByteArray bytes;
        // False: requests for this target get no answer at all.
        bool answered = true;
    };

    enum class Behaviour {
        Answers,
        // Refuses TARGETS, serves the targets themselves.
        RefusesTargets,
        // Answers nothing, as a frozen program.
        NeverAnswers,
    };

    // The targets offered. Its own type, so that a single target of two
    // string literals cannot also read as a QList built from two iterators.
    struct Offer {
        Offer(std::initializer_list<Target> targets)
            : targets(targets)
        {
        }
        Offer(QList<Target> targets)
            : targets(std::move(targets))
        {
        }
        QList<Target> targets;
    };

    // Takes the selection, offering targets in this order after TARGETS.
    explicit TestSelectionOwner(Offer offer, Behaviour behaviour = Behaviour::Answers);
    // Gives the selection up, unless another client has taken it since.
    ~TestSelectionOwner();

    TestSelectionOwner(const TestSelectionOwner &) = delete;
    TestSelectionOwner &operator=(const TestSelectionOwner &) = delete;

    // True once the X server names this owner, false if it does not within
    // timeoutMs (another client took the selection, or there is no server).
    bool waitUntilOwner(int timeoutMs = 3000) const;
    // Gives the selection up while staying alive, as a program that clears
    // the clipboard does.
    void giveUp();
    // The targets requested so far, TARGETS included, answered or not.
    QList<QByteArray> requestedTargets() const;
    // When the request taking the selection left for the server: the start of
    // the copy, for latency measurements. Unset when there was no server.
    std::chrono::steady_clock::time_point ownershipRequestedAt() const;

private:
    // An INCR transfer under way.
    struct Transfer {
        xcb_window_t requestor = XCB_NONE;
        xcb_atom_t property = XCB_NONE;
        xcb_atom_t type = XCB_NONE;
        QByteArray bytes;
        qsizetype sent = 0;
        bool done = true;
    };

    void serve();
    void answer(const xcb_selection_request_event_t &request);
    void sendNextChunk();
    void notify(const xcb_selection_request_event_t &request, xcb_atom_t property);

    QList<Target> m_targets;
    Behaviour m_behaviour;
    OtherClient m_client;
    xcb_connection_t *m_connection = m_client.connection();
    xcb_window_t m_window = XCB_NONE;
    xcb_atom_t m_clipboard = XCB_NONE;
    xcb_atom_t m_targetsAtom = XCB_NONE;
    xcb_atom_t m_incrAtom = XCB_NONE;
    // Our quit message, and the property that yields a server time.
    xcb_atom_t m_ownAtom = XCB_NONE;
    // Beside m_targets.
    QList<xcb_atom_t> m_targetAtoms;
    Transfer m_transfer;

    mutable std::mutex m_mutex;
    QList<QByteArray> m_requested;

    std::chrono::steady_clock::time_point m_requestedAt;
    std::thread m_thread;
};
