// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QWidget>

// The picker's window: frameless, 360 × 480, above other windows, with a
// rounded background (PanelController asks the desktop for the rest: every
// desktop, no taskbar entry). Escape on the panel itself takes it off the
// screen at once.
class ClipPanel : public QWidget {
    Q_OBJECT

public:
    // An unmanaged panel bypasses the window manager; whoever shows it gives
    // it the focus.
    ClipPanel(QWidget *rootView, bool unmanaged, QWidget *parent = nullptr);

    // Translucent needs a compositor; without one the background is opaque
    // and a shape mask cuts the corners.
    void setTranslucent(bool translucent);
    bool isTranslucent() const { return m_translucent; }

Q_SIGNALS:
    // Escape took the panel off the screen; nobody else was asked.
    void dismissed();

protected:
    void keyPressEvent(QKeyEvent *event) override;
    void paintEvent(QPaintEvent *event) override;

private:
    void updateMask();

    bool m_translucent = false;
};
