// SPDX-License-Identifier: GPL-3.0-or-later
#include "AboutTab.h"

#include "PreferenceStyle.h"

#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

using PreferenceStyle::TextSize;

AboutTab::AboutTab(QWidget *parent)
    : AboutTab(QStringLiteral(ZETTLY_VERSION), QStringLiteral(ZETTLY_BUILD_NUMBER), parent)
{
}

AboutTab::AboutTab(const QString &version, const QString &buildNumber, QWidget *parent)
    : QWidget(parent)
    , m_version(new QLabel(versionText(version, buildNumber)))
    , m_updateButton(new QPushButton(
          PreferenceStyle::themeIcon(QStringLiteral("view-refresh")), QStringLiteral("Rechercher les mises à jour")))
{
    auto *layout = new QVBoxLayout(this);
    layout->setSpacing(10);
    layout->addStretch();

    auto *icon = new QLabel;
    icon->setPixmap(PreferenceStyle::themeIcon(QStringLiteral("edit-paste")).pixmap(44, 44));
    icon->setAccessibleName(QStringLiteral("Zettly"));
    layout->addWidget(icon, 0, Qt::AlignHCenter);

    auto *name = new QLabel(QStringLiteral("Zettly"));
    QFont title = name->font();
    title.setPointSizeF(title.pointSizeF() * 1.6);
    title.setBold(true);
    name->setFont(title);
    layout->addWidget(name, 0, Qt::AlignHCenter);

    PreferenceStyle::makeSecondary(m_version);
    layout->addWidget(m_version, 0, Qt::AlignHCenter);

    auto *description = new QLabel(QStringLiteral("Gestionnaire de presse-papier pour Linux"));
    PreferenceStyle::makeSecondary(description, TextSize::Caption);
    layout->addWidget(description, 0, Qt::AlignHCenter);

    layout->addSpacing(6);
    layout->addWidget(m_updateButton, 0, Qt::AlignHCenter);

    auto *caption = new QLabel(
        QStringLiteral("Zettly se met à jour automatiquement. Tu peux aussi vérifier manuellement à tout moment."));
    PreferenceStyle::makeSecondary(caption, TextSize::SmallCaption);
    caption->setAlignment(Qt::AlignHCenter);
    caption->setWordWrap(true);
    caption->setContentsMargins(24, 0, 24, 0);
    layout->addWidget(caption);

    const QUrl site = productSite();
    if (site.isValid() && !site.host().isEmpty()) {
        m_siteLink
            = new QLabel(QStringLiteral("<a href=\"%1\">%2</a>")
                             .arg(site.toString(QUrl::FullyEncoded).toHtmlEscaped(), site.host().toHtmlEscaped()));
        PreferenceStyle::setTextSize(m_siteLink, TextSize::Caption);
        m_siteLink->setTextFormat(Qt::RichText);
        // Opens it in the default browser.
        m_siteLink->setOpenExternalLinks(true);
        m_siteLink->setAccessibleName(site.host());
        layout->addWidget(m_siteLink, 0, Qt::AlignHCenter);
    }
    layout->addStretch();

    connect(m_updateButton, &QPushButton::clicked, this, &AboutTab::updateCheckRequested);
}

QString AboutTab::versionText(const QString &version, const QString &buildNumber)
{
    const auto orUnknown = [](const QString &value) { return value.isEmpty() ? QStringLiteral("?") : value; };
    return u'v' + orUnknown(version) + QStringLiteral(" (build ") + orUnknown(buildNumber) + u')';
}

QUrl AboutTab::productSite()
{
    return QUrl(QStringLiteral(ZETTLY_SITE_URL));
}
