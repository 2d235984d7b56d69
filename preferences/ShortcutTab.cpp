// SPDX-License-Identifier: GPL-3.0-or-later
#include "ShortcutTab.h"

#include "AppSettings.h"
#include "HotKeyTranslator.h"
#include "PreferenceStyle.h"

#include <QFontDatabase>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

namespace {

const QString idleText = QStringLiteral("Modifier le raccourci");
const QString recordingText = QStringLiteral("Appuyez sur le raccourci…  (Échap pour annuler)");

} // namespace

ShortcutTab::ShortcutTab(AppSettings &settings, const KeyLayout *layout, QWidget *parent)
    : QWidget(parent)
    , m_settings(settings)
    , m_layout(layout)
    , m_recorder(this)
    , m_shortcut(new QLabel)
    , m_recordButton(new QPushButton)
    , m_resetButton(new QPushButton(QStringLiteral("Réinitialiser (⌃⌘V)")))
    , m_route(new QLabel)
{
    auto *layoutBox = new QVBoxLayout(this);
    layoutBox->setSpacing(14);

    auto *title = new QLabel(QStringLiteral("Raccourci d'ouverture"));
    QFont headline = title->font();
    headline.setBold(true);
    title->setFont(headline);
    layoutBox->addWidget(title);

    auto *currentRow = new QHBoxLayout;
    auto *current = new QLabel(QStringLiteral("Actuel :"));
    PreferenceStyle::makeSecondary(current);
    current->setBuddy(m_shortcut);
    QFont chipFont = QFontDatabase::systemFont(QFontDatabase::FixedFont);
    chipFont.setPixelSize(22);
    chipFont.setWeight(QFont::DemiBold);
    m_shortcut->setFont(chipFont);
    const QColor text = palette().color(QPalette::WindowText);
    m_shortcut->setStyleSheet(QStringLiteral("QLabel { background: rgba(%1, %2, %3, 8%); border-radius: 6px; "
                                             "padding: 4px 10px; }")
                                  .arg(text.red())
                                  .arg(text.green())
                                  .arg(text.blue()));
    m_shortcut->setTextInteractionFlags(Qt::TextSelectableByMouse);
    currentRow->addWidget(current);
    currentRow->addWidget(m_shortcut);
    currentRow->addStretch();
    layoutBox->addLayout(currentRow);

    auto *buttons = new QHBoxLayout;
    buttons->addWidget(m_recordButton);
    buttons->addWidget(m_resetButton);
    buttons->addStretch();
    layoutBox->addLayout(buttons);
    PreferenceStyle::makeSecondary(m_route);
    m_route->setWordWrap(true);
    m_route->setTextInteractionFlags(Qt::TextSelectableByMouse);
    m_route->hide();
    layoutBox->addWidget(m_route);
    layoutBox->addStretch();

    connect(m_recordButton, &QPushButton::clicked, this, [this] {
        if (m_recorder.isRecording())
            m_recorder.stop();
        else
            m_recorder.start();
    });
    // Leaves a recording running: the next key press still replaces it.
    connect(
        m_resetButton, &QPushButton::clicked, this, [this] { m_settings.setHotkey(HotKeyConfig::defaultShortcut()); });
    connect(&m_recorder, &ShortcutRecorder::recorded, this,
        [this](const HotKeyConfig &shortcut) { m_settings.setHotkey(shortcut); });
    connect(&m_recorder, &ShortcutRecorder::recordingChanged, this, &ShortcutTab::showRecording);
    connect(&m_settings, &AppSettings::changed, this, &ShortcutTab::showShortcut);

    showShortcut();
    showRecording(false);
}

ShortcutTab::~ShortcutTab()
{
    // While the tab is whole: ending a recording redraws the button.
    m_recorder.stop();
}

void ShortcutTab::setKeyLayout(const KeyLayout *layout)
{
    m_layout = layout;
    showShortcut();
}

void ShortcutTab::setRoute(Route route)
{
    switch (route) {
    case Route::KeyGrab:
        m_route->clear();
        break;
    case Route::DesktopCommand:
        m_route->setText(QStringLiteral("Sous Wayland, associez «\u00a0zettly --toggle\u00a0» à un raccourci dans les "
                                        "réglages de votre bureau."));
        break;
    case Route::Portal:
        m_route->setText(QStringLiteral("Raccourci enregistré auprès du bureau (portail GlobalShortcuts)\u202f; "
                                        "il se modifie aussi dans ses réglages."));
        break;
    }
    m_route->setVisible(route != Route::KeyGrab);
}

void ShortcutTab::showEvent(QShowEvent *event)
{
    QWidget::showEvent(event);
    // The key's name follows the layout, which may have changed meanwhile.
    showShortcut();
}

void ShortcutTab::hideEvent(QHideEvent *event)
{
    QWidget::hideEvent(event);
    m_recorder.stop();
}

void ShortcutTab::showShortcut()
{
    const HotKeyConfig shortcut = m_settings.hotkey();
    m_shortcut->setText(HotKeyTranslator::displayString(shortcut.keyCode, shortcut.modifiers, m_layout));
}

void ShortcutTab::showRecording(bool recording)
{
    const int iconSize = fontMetrics().height();
    if (recording) {
        m_recordButton->setIcon(
            PreferenceStyle::tintedPixmap(QStringLiteral("media-record"), iconSize, PreferenceStyle::red));
        m_recordButton->setText(recordingText);
    } else {
        m_recordButton->setIcon(PreferenceStyle::themeIcon(QStringLiteral("input-keyboard")));
        m_recordButton->setText(idleText);
    }
}
