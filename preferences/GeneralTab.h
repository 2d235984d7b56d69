// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QPointer>
#include <QTimer>
#include <QWidget>

class AppSettings;
class ClipboardStore;
class PasteKeystroke;
class QCheckBox;
class QLabel;
class QPushButton;
class QSpinBox;

// The history limit, auto-paste and whether pastes can be typed for the
// user, and clearing the unpinned history. The paste permission is re-read
// every 1.5 s while the tab is on screen: the user may change it outside.
class GeneralTab : public QWidget {
    Q_OBJECT

public:
    static constexpr int statusPollInterval = 1500;

    // A null keystroke reads as not permitted.
    GeneralTab(
        AppSettings &settings, ClipboardStore &store, const PasteKeystroke *keystroke, QWidget *parent = nullptr);

    void setPasteKeystroke(const PasteKeystroke *keystroke);

    bool isTrusted() const { return m_trusted; }
    bool isPollingStatus() const { return m_pollTimer.isActive(); }

    QSpinBox *historyLimitBox() const { return m_historyLimit; }
    QLabel *historyLimitText() const { return m_historyLimitText; }
    QCheckBox *autoPasteBox() const { return m_autoPaste; }
    QLabel *statusText() const { return m_statusText; }
    QLabel *untrustedHint() const { return m_hint; }
    QPushButton *requestButton() const { return m_requestButton; }
    QPushButton *clearButton() const { return m_clearButton; }
    QLabel *countText() const { return m_countText; }

protected:
    void showEvent(QShowEvent *event) override;
    void hideEvent(QHideEvent *event) override;

private:
    void readSettings();
    void readCount();
    void readTrust();
    void requestTrust();

    AppSettings &m_settings;
    QPointer<ClipboardStore> m_store;
    const PasteKeystroke *m_keystroke;
    bool m_trusted = false;
    QTimer m_pollTimer;
    QSpinBox *m_historyLimit;
    QLabel *m_historyLimitText;
    QCheckBox *m_autoPaste;
    QPushButton *m_requestButton;
    QLabel *m_statusIcon;
    QLabel *m_statusText;
    QLabel *m_hint;
    QPushButton *m_clearButton;
    QLabel *m_countText;
};
