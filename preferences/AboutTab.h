// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QUrl>
#include <QWidget>

class QLabel;
class QPushButton;

// The product's name, version and description, the user's update check and
// a link to the product site.
class AboutTab : public QWidget {
    Q_OBJECT

public:
    // The version and build number compiled in; an empty one shows as "?".
    explicit AboutTab(const QString &version, const QString &buildNumber, QWidget *parent = nullptr);
    // With the version and build number of this build.
    explicit AboutTab(QWidget *parent = nullptr);

    // "v<version> (build <number>)".
    static QString versionText(const QString &version, const QString &buildNumber);
    static QUrl productSite();

    QLabel *versionLabel() const { return m_version; }
    QPushButton *updateButton() const { return m_updateButton; }
    // Null when the site's address does not parse.
    QLabel *siteLink() const { return m_siteLink; }

Q_SIGNALS:
    void updateCheckRequested();

private:
    QLabel *m_version;
    QPushButton *m_updateButton;
    QLabel *m_siteLink = nullptr;
};
