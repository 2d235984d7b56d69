// SPDX-License-Identifier: GPL-3.0-or-later
#include "PanelState.h"

void PanelState::setQuery(const QString &query)
{
    Q_EMIT aboutToChange();
    m_query = query;
    Q_EMIT queryChanged(m_query);
    setSelection(0);
}

void PanelState::setSelection(qint64 selection)
{
    Q_EMIT aboutToChange();
    m_selection = selection;
    Q_EMIT selectionChanged(m_selection);
}
