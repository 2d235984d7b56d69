// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

struct wl_display;
struct zwlr_data_control_manager_v1;
struct zwlr_data_control_device_v1;
struct zwlr_data_control_source_v1;

// A program that takes the clipboard offering text and then never answers:
// it reads no more events, so every transfer asked of it stays open.
class StuckSource {
public:
    StuckSource();
    ~StuckSource();

    // Takes the clipboard; false when the compositor offers no wlr
    // data-control.
    bool takeClipboard(const QString &type);

private:
    wl_display *m_display = nullptr;
    zwlr_data_control_manager_v1 *m_manager = nullptr;
    zwlr_data_control_device_v1 *m_device = nullptr;
    zwlr_data_control_source_v1 *m_source = nullptr;
};
