// SPDX-License-Identifier: GPL-3.0-or-later
#include "GeneralTab.h"

#include "AppSettings.h"
#include "ClipboardStore.h"
#include "PasteKeystroke.h"
#include "PreferenceStyle.h"

#include <QCheckBox>
#include <QFrame>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QSignalBlocker>
#include <QSpinBox>
#include <QVBoxLayout>

#include <algorithm>

using PreferenceStyle::TextSize;

GeneralTab::GeneralTab(AppSettings &settings, ClipboardStore &store, const PasteKeystroke *keystroke, QWidget *parent)
    : QWidget(parent)
    , m_settings(settings)
    , m_store(&store)
    , m_keystroke(keystroke)
    , m_historyLimit(new QSpinBox)
    , m_historyLimitText(new QLabel)
    , m_autoPaste(new QCheckBox(QStringLiteral("Coller automatiquement après sélection (⌘V simulé)")))
    , m_requestButton(new QPushButton(QStringLiteral("Demander l'accès Accessibilité")))
    , m_statusIcon(new QLabel)
    , m_statusText(new QLabel)
    , m_hint(new QLabel(QStringLiteral("Si tu viens d'activer la permission dans Réglages mais que ça reste « Non "
                                       "autorisé » ici, quitte Zettly (icône menubar → Quitter) puis relance-le. "
                                       "macOS cache le statut AX par processus.")))
    , m_clearButton(new QPushButton(QStringLiteral("Vider l'historique non épinglé")))
    , m_countText(new QLabel)
{
    auto *layout = new QVBoxLayout(this);

    auto *limitRow = new QHBoxLayout;
    auto *limitLabel = new QLabel(QStringLiteral("Limite d'historique :"));
    limitLabel->setBuddy(m_historyLimit);
    PreferenceStyle::makeSecondary(m_historyLimitText);
    m_historyLimit->setRange(20, 2000);
    m_historyLimit->setSingleStep(20);
    // Typing "200" must not pass through a limit of 20 that the next copy
    // would trim the history to: the value counts once typing is done.
    m_historyLimit->setKeyboardTracking(false);
    m_historyLimit->setAccessibleName(limitLabel->text());
    limitRow->addWidget(limitLabel);
    limitRow->addWidget(m_historyLimitText);
    limitRow->addStretch();
    limitRow->addWidget(m_historyLimit);
    layout->addLayout(limitRow);

    layout->addWidget(m_autoPaste);
    auto *caption = new QLabel(QStringLiteral("Nécessite l'autorisation Accessibilité pour fonctionner."));
    PreferenceStyle::makeSecondary(caption, TextSize::Caption);
    layout->addWidget(caption);

    auto *statusRow = new QHBoxLayout;
    statusRow->setSpacing(10);
    statusRow->addWidget(m_requestButton);
    auto *status = new QHBoxLayout;
    status->setSpacing(4);
    status->addWidget(m_statusIcon);
    status->addWidget(m_statusText);
    statusRow->addLayout(status);
    auto *refreshButton = new QPushButton(QStringLiteral("Rafraîchir"));
    QFont small = refreshButton->font();
    small.setPointSizeF(small.pointSizeF() * 0.85);
    refreshButton->setFont(small);
    statusRow->addWidget(refreshButton);
    statusRow->addStretch();
    layout->addLayout(statusRow);

    PreferenceStyle::setTextSize(m_hint, TextSize::SmallCaption);
    QColor hintColor = PreferenceStyle::orange;
    hintColor.setAlphaF(0.9);
    PreferenceStyle::setTextColor(m_hint, hintColor);
    m_hint->setWordWrap(true);
    layout->addWidget(m_hint);

    auto *divider = new QFrame;
    divider->setFrameShape(QFrame::HLine);
    divider->setFrameShadow(QFrame::Sunken);
    layout->addWidget(divider);

    auto *clearRow = new QHBoxLayout;
    QPalette destructive = m_clearButton->palette();
    destructive.setColor(QPalette::ButtonText, PreferenceStyle::red);
    m_clearButton->setPalette(destructive);
    clearRow->addWidget(m_clearButton);
    clearRow->addStretch();
    PreferenceStyle::makeSecondary(m_countText, TextSize::Caption);
    clearRow->addWidget(m_countText);
    layout->addLayout(clearRow);
    layout->addStretch();

    m_pollTimer.setInterval(statusPollInterval);
    connect(&m_pollTimer, &QTimer::timeout, this, &GeneralTab::readTrust);
    connect(m_historyLimit, &QSpinBox::valueChanged, this, [this](int limit) { m_settings.setHistoryLimit(limit); });
    connect(m_autoPaste, &QCheckBox::toggled, this, [this](bool enabled) { m_settings.setAutoPaste(enabled); });
    connect(m_requestButton, &QPushButton::clicked, this, &GeneralTab::requestTrust);
    connect(refreshButton, &QPushButton::clicked, this, &GeneralTab::readTrust);
    connect(m_clearButton, &QPushButton::clicked, this, [this] {
        if (m_store)
            m_store->clearUnpinned();
    });
    connect(&m_settings, &AppSettings::changed, this, &GeneralTab::readSettings);
    connect(&store, &ClipboardStore::changed, this, &GeneralTab::readCount);

    readSettings();
    readCount();
    readTrust();
}

void GeneralTab::setPasteKeystroke(const PasteKeystroke *keystroke)
{
    m_keystroke = keystroke;
    readTrust();
}

void GeneralTab::showEvent(QShowEvent *event)
{
    QWidget::showEvent(event);
    readTrust();
    m_pollTimer.start();
}

void GeneralTab::hideEvent(QHideEvent *event)
{
    QWidget::hideEvent(event);
    m_pollTimer.stop();
}

void GeneralTab::readSettings()
{
    // Showing a stored value the box cannot hold must not write the box's
    // nearest one back.
    const QSignalBlocker blockLimit(m_historyLimit);
    const QSignalBlocker blockAutoPaste(m_autoPaste);
    m_historyLimit->setValue(static_cast<int>(std::clamp<qint64>(m_settings.historyLimit(), 20, 2000)));
    m_historyLimitText->setText(QString::number(m_settings.historyLimit()) + QStringLiteral(" items"));
    m_autoPaste->setChecked(m_settings.autoPaste());
}

void GeneralTab::readCount()
{
    const qsizetype count = m_store ? m_store->items().size() : 0;
    m_countText->setText(QString::number(count) + QStringLiteral(" items au total"));
}

void GeneralTab::readTrust()
{
    m_trusted = m_keystroke && m_keystroke->isTrusted();
    const int iconSize = m_statusText->fontMetrics().height();
    if (m_trusted) {
        m_statusIcon->setPixmap(
            PreferenceStyle::tintedPixmap(QStringLiteral("emblem-ok"), iconSize, PreferenceStyle::green));
        m_statusText->setText(QStringLiteral("Autorisé"));
        PreferenceStyle::setTextColor(m_statusText, PreferenceStyle::green);
    } else {
        m_statusIcon->setPixmap(
            PreferenceStyle::tintedPixmap(QStringLiteral("dialog-warning"), iconSize, PreferenceStyle::orange));
        m_statusText->setText(QStringLiteral("Non autorisé"));
        PreferenceStyle::setTextColor(m_statusText, PreferenceStyle::orange);
    }
    m_statusIcon->setAccessibleName(m_statusText->text());
    m_hint->setVisible(!m_trusted);
}

void GeneralTab::requestTrust()
{
    // There is nothing to ask for on X11: synthetic keys work wherever the
    // display has XTest. Read again now and once more shortly after, as a
    // permission prompt would leave time to answer.
    readTrust();
    QTimer::singleShot(500, this, &GeneralTab::readTrust);
}
