// SPDX-License-Identifier: GPL-3.0-or-later
#include "UpdateDialog.h"

#include <QApplication>
#include <QDesktopServices>
#include <QDialogButtonBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QProgressBar>
#include <QPushButton>
#include <QVBoxLayout>

UpdateDialog::UpdateDialog(QWidget *parent)
    : QDialog(parent)
    , m_heading(new QLabel(this))
    , m_detail(new QLabel(this))
    , m_progress(new QProgressBar(this))
    , m_buttons(new QDialogButtonBox(this))
{
    setWindowTitle(QStringLiteral("Mises à jour de Zettly"));
    setMinimumWidth(380);

    QFont headingFont = m_heading->font();
    headingFont.setBold(true);
    m_heading->setFont(headingFont);
    m_heading->setWordWrap(true);
    m_detail->setWordWrap(true);
    m_detail->setTextFormat(Qt::PlainText);
    m_detail->setTextInteractionFlags(Qt::TextSelectableByMouse);
    // A busy indicator: a check has no measurable progress.
    m_progress->setRange(0, 0);
    m_progress->setTextVisible(false);

    auto *texts = new QVBoxLayout;
    texts->addWidget(m_heading);
    texts->addWidget(m_detail);
    texts->addWidget(m_progress);
    texts->addStretch();
    auto *row = new QHBoxLayout;
    const QIcon icon = QApplication::windowIcon();
    if (!icon.isNull()) {
        auto *iconLabel = new QLabel(this);
        iconLabel->setPixmap(icon.pixmap(48, 48));
        iconLabel->setAlignment(Qt::AlignTop);
        row->addWidget(iconLabel);
    }
    row->addLayout(texts, 1);
    auto *layout = new QVBoxLayout(this);
    layout->addLayout(row);
    layout->addWidget(m_buttons);

    connect(m_buttons, &QDialogButtonBox::accepted, this, [this] {
        if (m_state == State::UpdateAvailable)
            QDesktopServices::openUrl(m_downloadUrl);
        accept();
    });
    connect(m_buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
}

void UpdateDialog::showChecking()
{
    setContent(State::Checking, QStringLiteral("Recherche de mises à jour…"), QString(),
        { { QStringLiteral("Annuler"), QDialogButtonBox::RejectRole } });
}

void UpdateDialog::showUpdate(const QString &newVersion, const QString &runningVersion, const QUrl &downloadUrl)
{
    m_downloadUrl = downloadUrl;
    setContent(State::UpdateAvailable, QStringLiteral("Une nouvelle version de Zettly est disponible"),
        QStringLiteral("Zettly %1 est disponible. Tu utilises la version %2.").arg(newVersion, runningVersion),
        { { QStringLiteral("Télécharger"), QDialogButtonBox::AcceptRole },
            { QStringLiteral("Plus tard"), QDialogButtonBox::RejectRole } });
}

void UpdateDialog::showUpToDate(const QString &runningVersion)
{
    setContent(State::UpToDate, QStringLiteral("Zettly est à jour"),
        QStringLiteral("Tu utilises la version la plus récente, %1.").arg(runningVersion),
        { { QStringLiteral("OK"), QDialogButtonBox::AcceptRole } });
}

void UpdateDialog::showFailure(const QString &reason)
{
    setContent(State::Failed, QStringLiteral("La recherche de mises à jour a échoué."), reason,
        { { QStringLiteral("OK"), QDialogButtonBox::AcceptRole } });
}

void UpdateDialog::setContent(State state, const QString &heading, const QString &detail,
    std::initializer_list<std::pair<QString, QDialogButtonBox::ButtonRole>> buttons)
{
    m_state = state;
    m_heading->setText(heading);
    m_detail->setText(detail);
    m_detail->setVisible(!detail.isEmpty());
    m_progress->setVisible(state == State::Checking);
    m_buttons->clear();
    bool first = true;
    for (const auto &[text, role] : buttons) {
        m_buttons->addButton(text, role)->setDefault(first);
        first = false;
    }
    adjustSize();
}
