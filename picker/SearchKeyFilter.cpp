// SPDX-License-Identifier: GPL-3.0-or-later
#include "SearchKeyFilter.h"

#include "PanelState.h"

#include <QKeyEvent>
#include <QLineEdit>

SearchKeyFilter::SearchKeyFilter(const PanelState &state, QObject *parent)
    : QObject(parent)
    , m_state(state)
{
}

// Typed text reaches the query a turn later, and X delivers keys typed
// quickly in one batch: a Backspace right after a letter must edit the field,
// not delete an entry.
bool SearchKeyFilter::isTyping(QObject *watched) const
{
    const auto *field = qobject_cast<const QLineEdit *>(watched);
    return !m_state.query().isEmpty() || (field && !field->text().isEmpty());
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
        if (isTyping(watched))
            break;
        Q_EMIT spacePressed();
        return true;
    case Qt::Key_Backspace:
        if (isTyping(watched))
            break;
        Q_EMIT backspacePressed();
        return true;
    default:
        break;
    }
    return QObject::eventFilter(watched, event);
}
