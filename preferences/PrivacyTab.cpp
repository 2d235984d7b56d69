// SPDX-License-Identifier: GPL-3.0-or-later
#include "PrivacyTab.h"

#include "AppSettings.h"
#include "PreferenceStyle.h"

#include <QCheckBox>
#include <QLabel>
#include <QSignalBlocker>
#include <QVBoxLayout>

PrivacyTab::PrivacyTab(AppSettings &settings, QWidget *parent)
    : QWidget(parent)
    , m_settings(settings)
    , m_ignoreSecretApps(new QCheckBox(QStringLiteral("Ignorer les apps sensibles (gestionnaires de mots de passe)")))
{
    auto *layout = new QVBoxLayout(this);
    layout->addWidget(m_ignoreSecretApps);
    auto *caption = new QLabel(QStringLiteral(
        "Les apps comme 1Password, Bitwarden, LastPass, Trousseau d'accès sont automatiquement ignorées. Zettly "
        "respecte aussi les types pasteboard \"Concealed\" et \"Transient\" (org.nspasteboard.*)."));
    PreferenceStyle::makeSecondary(caption, PreferenceStyle::TextSize::Caption);
    caption->setWordWrap(true);
    layout->addWidget(caption);
    layout->addStretch();

    connect(m_ignoreSecretApps, &QCheckBox::toggled, this,
        [this](bool enabled) { m_settings.setIgnoreSecretApps(enabled); });
    connect(&m_settings, &AppSettings::changed, this, &PrivacyTab::readSettings);
    readSettings();
}

void PrivacyTab::readSettings()
{
    const QSignalBlocker block(m_ignoreSecretApps);
    m_ignoreSecretApps->setChecked(m_settings.ignoreSecretApps());
}
