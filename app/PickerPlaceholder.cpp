// SPDX-License-Identifier: GPL-3.0-or-later
#include "PickerPlaceholder.h"

#include "ClipboardStore.h"

#include <QLabel>
#include <QListWidget>
#include <QVBoxLayout>

PickerPlaceholder::PickerPlaceholder(const ClipboardStore &store, QWidget *parent)
    : QWidget(parent)
    , m_store(store)
    , m_list(new QListWidget(this))
{
    auto *layout = new QVBoxLayout(this);
    layout->addWidget(new QLabel(QStringLiteral("Zettly"), this));
    layout->addWidget(m_list);
    m_list->setFocusPolicy(Qt::NoFocus);
    m_list->setUniformItemSizes(true);
    connect(&store, &ClipboardStore::changed, this, &PickerPlaceholder::refresh);
    refresh();
}

void PickerPlaceholder::refresh()
{
    // A few short lines are enough for a stand-in, and keep both a capture
    // and the panel's first paint cheap.
    constexpr qsizetype shown = 12;
    constexpr qsizetype shownCharacters = 80;
    m_list->clear();
    for (const ClipItem &item : m_store.items().mid(0, shown))
        m_list->addItem(item.preview.left(shownCharacters));
}
