// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QMenu>

struct ClipItem;

// A row's context menu: "Coller", the pin or unpin item, "Copier sans
// coller" for entries with a full text, and "Supprimer", drawn as
// destructive.
class ClipRowMenu : public QMenu {
    Q_OBJECT

public:
    enum class Choice {
        Paste,
        TogglePin,
        CopyOnly,
        Delete,
    };
    Q_ENUM(Choice)

    explicit ClipRowMenu(const ClipItem &item, QWidget *parent = nullptr);

Q_SIGNALS:
    void chosen(ClipRowMenu::Choice choice);

private:
    void addChoice(const QIcon &icon, const QString &text, Choice choice);
};
