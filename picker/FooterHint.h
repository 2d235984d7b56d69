// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QWidget>

class QLabel;

// One key hint of the picker's footer: the key on a small rounded chip, then
// what it does. Both are labels, so assistive technologies read them.
class FooterHint : public QWidget {
    Q_OBJECT

public:
    FooterHint(const QString &key, const QString &label, QWidget *parent = nullptr);

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    QLabel *m_key;
};
