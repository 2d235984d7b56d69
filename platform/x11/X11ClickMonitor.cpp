// SPDX-License-Identifier: GPL-3.0-or-later
#include "X11ClickMonitor.h"

#include "XcbReply.h"

#include <QSocketNotifier>

#include <xcb/xcb.h>
#include <xcb/xinput.h>

#include <cstdlib>
#include <memory>

namespace {

// The left and the right button; the middle one and the wheel's steps (4 to
// 7) leave the picker open. Raw events carry the physical button, before a
// left-handed mapping swaps these two: both count all the same.
bool isLeftOrRight(uint32_t button)
{
    return button == 1 || button == 3;
}

} // namespace

X11ClickMonitor::X11ClickMonitor(QObject *parent)
    : ClickMonitor(parent)
    , m_connection(xcb_connect(nullptr, nullptr))
{
    if (xcb_connection_has_error(m_connection))
        return;
    const xcb_query_extension_reply_t *xinput = xcb_get_extension_data(m_connection, &xcb_input_id);
    if (!xinput || !xinput->present)
        return;
    // A client sees XInput 2 events only once it has said which version it
    // speaks; from 2.1 on, raw events come also while another client grabs
    // the pointer (an open menu).
    const XcbReply<xcb_input_xi_query_version_reply_t> version(
        xcb_input_xi_query_version_reply(m_connection, xcb_input_xi_query_version(m_connection, 2, 2), nullptr));
    if (!version || version->major_version < 2)
        return;
    m_xinputOpcode = xinput->major_opcode;
    m_root = xcb_setup_roots_iterator(xcb_get_setup(m_connection)).data->root;
    m_notifier = std::make_unique<QSocketNotifier>(xcb_get_file_descriptor(m_connection), QSocketNotifier::Read);
    connect(m_notifier.get(), &QSocketNotifier::activated, this, &X11ClickMonitor::readEvents);
    m_valid = true;
}

X11ClickMonitor::~X11ClickMonitor()
{
    m_notifier.reset();
    xcb_disconnect(m_connection);
}

void X11ClickMonitor::start()
{
    select(true);
}

void X11ClickMonitor::stop()
{
    select(false);
}

void X11ClickMonitor::select(bool rawButtonPresses)
{
    if (!m_valid)
        return;
    struct {
        xcb_input_event_mask_t head;
        quint32 mask;
    } selection { { XCB_INPUT_DEVICE_ALL_MASTER, 1 },
        rawButtonPresses ? quint32(XCB_INPUT_XI_EVENT_MASK_RAW_BUTTON_PRESS) : 0u };
    xcb_input_xi_select_events(m_connection, m_root, 1, &selection.head);
    xcb_flush(m_connection);
}

void X11ClickMonitor::readEvents()
{
    // A connection the server dropped stays readable for ever.
    if (xcb_connection_has_error(m_connection)) {
        m_notifier->setEnabled(false);
        m_valid = false;
        return;
    }
    bool pressed = false;
    while (xcb_generic_event_t *event = xcb_poll_for_event(m_connection)) {
        if ((event->response_type & 0x7f) == XCB_GE_GENERIC) {
            const auto *raw = reinterpret_cast<const xcb_input_raw_button_press_event_t *>(event);
            pressed |= raw->extension == m_xinputOpcode && raw->event_type == XCB_INPUT_RAW_BUTTON_PRESS
                && isLeftOrRight(raw->detail);
        }
        std::free(event);
    }
    // One report for a burst: a press of two buttons is one click away.
    if (pressed)
        Q_EMIT clicked();
}
