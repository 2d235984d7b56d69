// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QDialog>
#include <QDialogButtonBox>
#include <QUrl>

#include <initializer_list>
#include <utility>

class QLabel;
class QProgressBar;

// The small window of update checks: the search in progress, then what it
// found. One instance is reused from one check to the next.
class UpdateDialog : public QDialog {
    Q_OBJECT

public:
    enum class State { Checking, UpdateAvailable, UpToDate, Failed };

    explicit UpdateDialog(QWidget *parent = nullptr);

    // "Annuler" closes the dialog; the check itself goes on unseen.
    void showChecking();
    // "Télécharger" opens downloadUrl in the browser.
    void showUpdate(const QString &newVersion, const QString &runningVersion, const QUrl &downloadUrl);
    void showUpToDate(const QString &runningVersion);
    void showFailure(const QString &reason);

    State state() const { return m_state; }

private:
    // The first button is the default one.
    void setContent(State state, const QString &heading, const QString &detail,
        std::initializer_list<std::pair<QString, QDialogButtonBox::ButtonRole>> buttons);

    QLabel *m_heading;
    QLabel *m_detail;
    QProgressBar *m_progress;
    QDialogButtonBox *m_buttons;
    QUrl m_downloadUrl;
    State m_state = State::Checking;
};
