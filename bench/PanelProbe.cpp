// SPDX-License-Identifier: GPL-3.0-or-later
#include "PanelProbe.h"

#include "XcbReply.h"

#include "HotKeyConfig.h"
#include "KeyPositions.h"

#include <xcb/damage.h>
#include <xcb/xcb.h>
#include <xcb/xtest.h>

#include <poll.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>

namespace {

constexpr xcb_keysym_t controlLKeysym = 0xffe3;
constexpr xcb_keysym_t superLKeysym = 0xffeb;
// X11 numbers keys as evdev codes shifted by 8.
constexpr quint32 evdevToXKeyCode = 8;

xcb_atom_t internAtom(xcb_connection_t *connection, const char *name)
{
    const XcbReply<xcb_intern_atom_reply_t> reply(xcb_intern_atom_reply(
        connection, xcb_intern_atom(connection, false, uint16_t(std::strlen(name)), name), nullptr));
    return reply ? reply->atom : xcb_atom_t(XCB_ATOM_NONE);
}

void selectEvents(xcb_connection_t *connection, xcb_window_t window, uint32_t mask)
{
    xcb_change_window_attributes(connection, window, XCB_CW_EVENT_MASK, &mask);
}

} // namespace

PanelProbe::PanelProbe()
{
    if (connectToServer())
        findKeyCodes();
}

PanelProbe::~PanelProbe()
{
    if (m_connection)
        xcb_disconnect(m_connection);
}

bool PanelProbe::connectToServer()
{
    int screenNumber = 0;
    m_connection = xcb_connect(nullptr, &screenNumber);
    if (xcb_connection_has_error(m_connection)) {
        m_error = QStringLiteral("cannot connect to the X server in $DISPLAY");
        return false;
    }
    auto screens = xcb_setup_roots_iterator(xcb_get_setup(m_connection));
    for (int i = 0; i < screenNumber && screens.rem; ++i)
        xcb_screen_next(&screens);
    m_root = screens.data->root;

    const xcb_query_extension_reply_t *xtest = xcb_get_extension_data(m_connection, &xcb_test_id);
    if (!xtest || !xtest->present) {
        m_error = QStringLiteral("the X server has no XTEST extension");
        return false;
    }
    const xcb_query_extension_reply_t *damage = xcb_get_extension_data(m_connection, &xcb_damage_id);
    // The version must be asked before any other DAMAGE request.
    const XcbReply<xcb_damage_query_version_reply_t> version(damage && damage->present
            ? xcb_damage_query_version_reply(m_connection, xcb_damage_query_version(m_connection, 1, 1), nullptr)
            : nullptr);
    if (!version) {
        m_error = QStringLiteral("the X server has no DAMAGE extension");
        return false;
    }
    m_damageFirstEvent = damage->first_event;
    m_pidAtom = internAtom(m_connection, "_NET_WM_PID");
    m_wmCheckAtom = internAtom(m_connection, "_NET_SUPPORTING_WM_CHECK");
    // Top-level windows and window manager frames are the root's children.
    selectEvents(m_connection, m_root, XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY);
    xcb_flush(m_connection);
    return true;
}

bool PanelProbe::findKeyCodes()
{
    const xcb_setup_t *setup = xcb_get_setup(m_connection);
    const int count = setup->max_keycode - setup->min_keycode + 1;
    const XcbReply<xcb_get_keyboard_mapping_reply_t> mapping(xcb_get_keyboard_mapping_reply(
        m_connection, xcb_get_keyboard_mapping(m_connection, setup->min_keycode, count), nullptr));
    if (!mapping || mapping->keysyms_per_keycode == 0) {
        m_error = QStringLiteral("cannot read the keyboard mapping");
        return false;
    }
    const xcb_keysym_t *symbols = xcb_get_keyboard_mapping_keysyms(mapping.get());
    const int perKey = mapping->keysyms_per_keycode;
    const int symbolCount = xcb_get_keyboard_mapping_keysyms_length(mapping.get());
    // The lowest key code that gives each modifier without Shift.
    for (int i = count - 1; i >= 0; --i) {
        if (i * perKey >= symbolCount)
            continue;
        const auto keyCode = quint8(setup->min_keycode + i);
        if (symbols[i * perKey] == controlLKeysym)
            m_controlKey = keyCode;
        else if (symbols[i * perKey] == superLKeysym)
            m_superKey = keyCode;
    }
    // The app grabs the shortcut's key by position, whatever the layout
    // makes of it.
    if (const std::optional<quint32> evdev = KeyPositions::evdevCode(HotKeyConfig::defaultShortcut().keyCode))
        m_shortcutKey = quint8(*evdev + evdevToXKeyCode);
    if (!m_controlKey || !m_superKey || !m_shortcutKey) {
        m_error = QStringLiteral("the keyboard mapping lacks Control_L or Super_L");
        return false;
    }
    return true;
}

bool PanelProbe::hasWindowManager() const
{
    const XcbReply<xcb_get_property_reply_t> reply(xcb_get_property_reply(
        m_connection, xcb_get_property(m_connection, false, m_root, m_wmCheckAtom, XCB_ATOM_WINDOW, 0, 1), nullptr));
    return reply && reply->type == XCB_ATOM_WINDOW && xcb_get_property_value_length(reply.get()) == 4;
}

std::optional<PanelProbe::Show> PanelProbe::findPanel(
    qint64 pid, std::chrono::milliseconds retry, std::chrono::milliseconds timeout, std::chrono::milliseconds keepShown)
{
    if (!m_error.isEmpty())
        return std::nullopt;
    m_pid = pid;
    m_finding = true;
    const Clock::time_point deadline = Clock::now() + timeout;
    bool shown = false;
    while (!shown && Clock::now() < deadline) {
        m_sample = Sample { .pressedAt = pressShortcut() };
        ++m_findPresses;
        shown
            = pump(std::min(deadline, m_sample->pressedAt + retry), [this] { return m_sample->mappedAt.has_value(); });
    }
    m_finding = false;
    if (!shown) {
        m_sample.reset();
        return std::nullopt;
    }
    pump(m_sample->pressedAt + keepShown, [] { return false; });
    const Show first = result();
    m_sample.reset();
    return first;
}

PanelProbe::Show PanelProbe::show(std::chrono::milliseconds timeout, std::chrono::milliseconds keepShown)
{
    // Whatever came before the press is not part of it.
    pump(Clock::now(), [] { return false; });
    m_sample = Sample { .pressedAt = pressShortcut() };
    if (pump(m_sample->pressedAt + timeout, [this] { return m_sample->mappedAt && m_sample->paintedAt; }))
        pump(m_sample->pressedAt + keepShown, [] { return false; });
    const Show shown = result();
    m_sample.reset();
    return shown;
}

bool PanelProbe::hide(std::chrono::milliseconds timeout)
{
    m_sample.reset();
    const Clock::time_point pressedAt = pressShortcut();
    return pump(pressedAt + timeout, [this] { return !m_panelMapped; });
}

void PanelProbe::idle(std::chrono::milliseconds duration)
{
    pump(Clock::now() + duration, [] { return false; });
}

std::optional<PanelProbe::Clock::duration> PanelProbe::type(quint8 keyCode, std::chrono::milliseconds keepWatching)
{
    pump(Clock::now(), [] { return false; });
    m_sample = Sample { .pressedAt = pressKey(keyCode), .panelMapSeen = true, .exposed = true };
    pump(m_sample->pressedAt + keepWatching, [] { return false; });
    const Sample sample = *m_sample;
    m_sample.reset();
    if (!sample.lastPaintedAt)
        return std::nullopt;
    return *sample.lastPaintedAt - sample.pressedAt;
}

PanelProbe::Clock::time_point PanelProbe::pressKey(quint8 keyCode)
{
    xcb_test_fake_input(m_connection, XCB_KEY_PRESS, keyCode, XCB_CURRENT_TIME, XCB_NONE, 0, 0, 0);
    xcb_test_fake_input(m_connection, XCB_KEY_RELEASE, keyCode, XCB_CURRENT_TIME, XCB_NONE, 0, 0, 0);
    const Clock::time_point pressedAt = Clock::now();
    xcb_flush(m_connection);
    return pressedAt;
}

PanelProbe::Clock::time_point PanelProbe::pressShortcut()
{
    const struct {
        quint8 type;
        quint8 key;
    } steps[] = {
        { XCB_KEY_PRESS, m_controlKey },
        { XCB_KEY_PRESS, m_superKey },
        { XCB_KEY_PRESS, m_shortcutKey },
        { XCB_KEY_RELEASE, m_shortcutKey },
        { XCB_KEY_RELEASE, m_superKey },
        { XCB_KEY_RELEASE, m_controlKey },
    };
    for (const auto &step : steps)
        xcb_test_fake_input(m_connection, step.type, step.key, XCB_CURRENT_TIME, XCB_NONE, 0, 0, 0);
    const Clock::time_point pressedAt = Clock::now();
    xcb_flush(m_connection);
    return pressedAt;
}

bool PanelProbe::pump(Clock::time_point deadline, const std::function<bool()> &done)
{
    const int fd = xcb_get_file_descriptor(m_connection);
    for (;;) {
        // Taken once per read: events that arrive together share the moment
        // they were noticed.
        const Clock::time_point now = Clock::now();
        while (xcb_generic_event_t *event = xcb_poll_for_event(m_connection)) {
            dispatch(event, now);
            std::free(event);
        }
        if (xcb_connection_has_error(m_connection)) {
            m_error = QStringLiteral("the X connection broke");
            return false;
        }
        if (done())
            return true;
        const auto left = std::chrono::ceil<std::chrono::milliseconds>(deadline - Clock::now());
        if (left.count() <= 0)
            return false;
        pollfd ready = { fd, POLLIN, 0 };
        if (poll(&ready, 1, int(left.count())) < 0 && errno != EINTR) {
            m_error = QStringLiteral("poll on the X connection failed");
            return false;
        }
    }
}

void PanelProbe::dispatch(const void *message, Clock::time_point now)
{
    const auto *event = static_cast<const xcb_generic_event_t *>(message);
    const quint8 type = event->response_type & ~0x80;
    // Synthetic events (an ICCCM withdrawal sent to the root) tell nothing
    // about the server's state.
    const bool synthetic = event->response_type & 0x80;
    const bool finding = m_finding && m_sample && !m_sample->mappedAt;

    if (type == 0) {
        const auto *error = reinterpret_cast<const xcb_generic_error_t *>(event);
        std::fprintf(stderr, "show_latency: X error %d for request %d.%d\n", error->error_code, error->major_code,
            error->minor_code);
    } else if (type == XCB_CREATE_NOTIFY) {
        const auto *created = reinterpret_cast<const xcb_create_notify_event_t *>(event);
        if (created->parent == m_root) {
            m_mapped.insert(created->window, false);
            if (finding)
                considerPanel(created->window);
        }
    } else if (type == XCB_DESTROY_NOTIFY) {
        const auto *destroyed = reinterpret_cast<const xcb_destroy_notify_event_t *>(event);
        m_mapped.remove(destroyed->window);
        if (destroyed->window == m_panel) {
            m_panel = 0;
            m_damage = 0;
            m_panelMapped = false;
            m_error = QStringLiteral("the panel's window was destroyed");
        }
        updateViewable(now);
    } else if (type == XCB_MAP_NOTIFY && !synthetic) {
        const auto *mapped = reinterpret_cast<const xcb_map_notify_event_t *>(event);
        if (finding)
            considerPanel(mapped->window);
        setMapped(mapped->window, true, now);
    } else if (type == XCB_UNMAP_NOTIFY && !synthetic) {
        setMapped(reinterpret_cast<const xcb_unmap_notify_event_t *>(event)->window, false, now);
    } else if (type == XCB_REPARENT_NOTIFY && !synthetic) {
        const auto *reparent = reinterpret_cast<const xcb_reparent_notify_event_t *>(event);
        if (finding)
            considerPanel(reparent->window);
        reparented(reparent->window, reparent->parent, now);
    } else if (type == XCB_EXPOSE) {
        exposed(reinterpret_cast<const xcb_expose_event_t *>(event)->window);
    } else if (m_damageFirstEvent && type == m_damageFirstEvent + XCB_DAMAGE_NOTIFY) {
        const auto *damage = reinterpret_cast<const xcb_damage_notify_event_t *>(event);
        if (damage->damage == m_damage)
            damaged(damage->area.x, damage->area.y, damage->area.width, damage->area.height, now);
    }
}

void PanelProbe::considerPanel(quint32 window)
{
    if (window != m_panel && windowPid(window) == m_pid)
        adoptPanel(window);
}

void PanelProbe::adoptPanel(quint32 window)
{
    // A window of the process created before the panel was shown.
    if (m_panel) {
        selectEvents(m_connection, m_panel, XCB_EVENT_MASK_NO_EVENT);
        xcb_damage_destroy(m_connection, m_damage);
    }
    m_panel = window;
    // Expose tells when the server has filled the background and the
    // process may draw.
    selectEvents(m_connection, window, XCB_EVENT_MASK_STRUCTURE_NOTIFY | XCB_EVENT_MASK_EXPOSURE);
    m_damage = xcb_generate_id(m_connection);
    // Every drawing, rather than a summary that a background fill would
    // already cover.
    xcb_damage_create(m_connection, m_damage, window, XCB_DAMAGE_REPORT_LEVEL_RAW_RECTANGLES);
    // Asked after the selection: events from before the answer end in the
    // state it gives.
    const xcb_get_window_attributes_cookie_t attributesCookie = xcb_get_window_attributes(m_connection, window);
    const xcb_query_tree_cookie_t treeCookie = xcb_query_tree(m_connection, window);
    const xcb_get_geometry_cookie_t geometryCookie = xcb_get_geometry(m_connection, window);
    const XcbReply<xcb_get_window_attributes_reply_t> attributes(
        xcb_get_window_attributes_reply(m_connection, attributesCookie, nullptr));
    const XcbReply<xcb_query_tree_reply_t> tree(xcb_query_tree_reply(m_connection, treeCookie, nullptr));
    const XcbReply<xcb_get_geometry_reply_t> geometry(xcb_get_geometry_reply(m_connection, geometryCookie, nullptr));
    m_panelMapped = attributes && attributes->map_state != XCB_MAP_STATE_UNMAPPED;
    m_mapped.insert(window, m_panelMapped);
    if (geometry) {
        m_panelWidth = geometry->width;
        m_panelHeight = geometry->height;
        m_panelSize = QStringLiteral("%1×%2").arg(m_panelWidth).arg(m_panelHeight);
    }
    if (tree)
        reparented(window, tree->parent, Clock::now());
    else
        m_panelParent = m_root;
}

void PanelProbe::setMapped(quint32 window, bool mapped, Clock::time_point now)
{
    m_mapped.insert(window, mapped);
    if (window == m_panel) {
        m_panelMapped = mapped;
        // Only an Expose after a mapping seen in this sample counts.
        if (mapped && m_sample && m_damage)
            m_sample->panelMapSeen = true;
    }
    updateViewable(now);
}

void PanelProbe::reparented(quint32 window, quint32 parent, Clock::time_point now)
{
    if (window == m_panel) {
        m_panelParent = parent;
        if (parent != m_root) {
            m_reparented = true;
            // A frame not created under the root: watch it on its own.
            if (!m_mapped.contains(parent)) {
                selectEvents(m_connection, parent, XCB_EVENT_MASK_STRUCTURE_NOTIFY);
                const XcbReply<xcb_get_window_attributes_reply_t> attributes(xcb_get_window_attributes_reply(
                    m_connection, xcb_get_window_attributes(m_connection, parent), nullptr));
                m_mapped.insert(parent, attributes && attributes->map_state == XCB_MAP_STATE_VIEWABLE);
            }
        }
    }
    updateViewable(now);
}

void PanelProbe::exposed(quint32 window)
{
    if (window == m_panel && m_sample && m_sample->panelMapSeen)
        m_sample->exposed = true;
}

void PanelProbe::damaged(int x, int y, int width, int height, Clock::time_point now)
{
    if (!m_sample || !m_sample->exposed)
        return;
    Sample &sample = *m_sample;
    if (!sample.paintedAt) {
        sample.paintedAt = now;
        sample.left = x;
        sample.top = y;
        sample.right = x + width;
        sample.bottom = y + height;
    } else {
        sample.left = std::min(sample.left, x);
        sample.top = std::min(sample.top, y);
        sample.right = std::max(sample.right, x + width);
        sample.bottom = std::max(sample.bottom, y + height);
    }
    sample.lastPaintedAt = now;
    if (!sample.paintedWholeAt && sample.left <= 0 && sample.top <= 0 && sample.right >= m_panelWidth
        && sample.bottom >= m_panelHeight)
        sample.paintedWholeAt = now;
}

void PanelProbe::updateViewable(Clock::time_point now)
{
    const bool viewable = m_panel && m_panelMapped && (m_panelParent == m_root || m_mapped.value(m_panelParent, false));
    if (viewable && !m_viewable && m_sample && !m_sample->mappedAt)
        m_sample->mappedAt = now;
    m_viewable = viewable;
}

std::optional<qint64> PanelProbe::windowPid(quint32 window)
{
    const XcbReply<xcb_get_property_reply_t> reply(xcb_get_property_reply(
        m_connection, xcb_get_property(m_connection, false, window, m_pidAtom, XCB_ATOM_CARDINAL, 0, 1), nullptr));
    if (!reply || reply->type != XCB_ATOM_CARDINAL || reply->format != 32
        || xcb_get_property_value_length(reply.get()) != 4)
        return std::nullopt;
    return *static_cast<const quint32 *>(xcb_get_property_value(reply.get()));
}

PanelProbe::Show PanelProbe::result() const
{
    Show shown;
    const auto since = [this](const std::optional<Clock::time_point> &at) -> std::optional<Clock::duration> {
        if (!at)
            return std::nullopt;
        return *at - m_sample->pressedAt;
    };
    shown.mapped = since(m_sample->mappedAt);
    shown.painted = since(m_sample->paintedAt);
    shown.paintedWhole = since(m_sample->paintedWholeAt);
    shown.lastPainted = since(m_sample->lastPaintedAt);
    return shown;
}
