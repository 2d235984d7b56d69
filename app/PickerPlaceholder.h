// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QWidget>

class ClipboardStore;
class QListWidget;

// Stands in the panel until the picker view exists: the newest entries,
// read-only, so that the shortcut shows the history is there.
class PickerPlaceholder : public QWidget {
    Q_OBJECT

public:
    explicit PickerPlaceholder(const ClipboardStore &store, QWidget *parent = nullptr);

private:
    void refresh();

    const ClipboardStore &m_store;
    QListWidget *m_list;
};
