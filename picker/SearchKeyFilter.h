// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QObject>

class PanelState;

// The picker's keys, taken from the search field before it sees them, so
// that the user types and drives the list without leaving the field. Keyed
// to the physical keys, whatever the modifiers: Return and keypad Enter,
// Escape, Up, Down always; Space and Backspace only while the query is empty
// (otherwise they edit the field). Keys it acts on never reach the field.
// It only sees the field's own key events, so another window in front (the
// preferences) keeps all of its keys.
class SearchKeyFilter : public QObject {
    Q_OBJECT

public:
    SearchKeyFilter(const PanelState &state, QObject *parent = nullptr);

    bool eventFilter(QObject *watched, QEvent *event) override;

Q_SIGNALS:
    void submitPressed();
    void escapePressed();
    void downPressed();
    void upPressed();
    void spacePressed();
    void backspacePressed();

private:
    // The query, or the field's text not yet in it, holds something.
    bool isTyping(QObject *watched) const;

    const PanelState &m_state;
};
