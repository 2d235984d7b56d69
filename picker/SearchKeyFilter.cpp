// SPDX-License-Identifier: GPL-3.0-or-later
#include "SearchKeyFilter.h"

#include "PanelState.h"

#include <QKeyEvent>

SearchKeyFilter::SearchKeyFilter(const PanelState &state, QObject *parent)
    : QObject(parent)
    , m_state(state)
{
}

bool SearchKeyFilter::eventFilter(QObject *watched, QEvent *event)
{
    if (event->type() != QEvent::KeyPress)
        return QObject::eventFilter(watched, event);
    // key() names the physical key whatever the modifiers: Shift+Return is
    // Key_Return, keypad Enter is Key_Enter.
    switch (static_cast<QKeyEvent *>(event)->key()) {
    case Qt::Key_Return:
    case Qt::Key_Enter:
        Q_EMIT submitPressed();
        return true;
    case Qt::Key_Escape:
        Q_EMIT escapePressed();
        return true;
    case Qt::Key_Down:
        Q_EMIT downPressed();
        return true;
    case Qt::Key_Up:
        Q_EMIT upPressed();
        return true;
    case Qt::Key_Space:
        if (!m_state.query().isEmpty())
            break;
        Q_EMIT spacePressed();
        return true;
    case Qt::Key_Backspace:
        if (!m_state.query().isEmpty())
            break;
        Q_EMIT backspacePressed();
        return true;
    default:
        break;
    }
    return QObject::eventFilter(watched, event);
}
