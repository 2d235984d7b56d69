// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "PasteKeystroke.h"

#include <memory>

class WaylandConnection;
struct org_kde_kwin_fake_input;
struct wl_keyboard;
struct wl_seat;

// Types the paste shortcut through KWin's fake input (org_kde_kwin_fake_input),
// which KWin offers to the programs whose desktop entry names it in
// X-KDE-Wayland-Interfaces. KWin reads our keys with the user's own keymap,
// so the v is looked up there.
class KWinFakeInputKeystroke : public PasteKeystroke {
public:
    // Nothing when KWin does not offer fake input to this program.
    static std::unique_ptr<KWinFakeInputKeystroke> open();
    ~KWinFakeInputKeystroke() override;

    bool isTrusted() const override;
    void sendPaste(const RunningApp &target) override;

    // Called by the keyboard's listener.
    void takeKeymap(int fd, quint32 size);

private:
    explicit KWinFakeInputKeystroke(std::unique_ptr<WaylandConnection> connection);
    static void onCapabilities(void *data, wl_seat *seat, quint32 capabilities);

    std::unique_ptr<WaylandConnection> m_connection;
    org_kde_kwin_fake_input *m_fakeInput = nullptr;
    wl_seat *m_seat = nullptr;
    wl_keyboard *m_keyboard = nullptr;
    // Evdev codes; KEY_V of a US layout until the user's keymap says.
    quint32 m_v = 47;
};
