// SPDX-License-Identifier: GPL-3.0-or-later
#include "SettingsView.h"

#include "AboutTab.h"
#include "GeneralTab.h"
#include "PreferenceStyle.h"
#include "PrivacyTab.h"
#include "ShortcutTab.h"

#include <QTabWidget>
#include <QVBoxLayout>

SettingsView::SettingsView(AppSettings &settings, ClipboardStore &store, const PasteKeystroke *keystroke,
    const KeyLayout *layout, QWidget *parent)
    : QWidget(parent)
    , m_tabs(new QTabWidget)
    , m_general(new GeneralTab(settings, store, keystroke))
    , m_shortcut(new ShortcutTab(settings, layout))
    , m_privacy(new PrivacyTab(settings))
    , m_about(new AboutTab)
{
    setWindowTitle(QStringLiteral("Zettly — Préférences"));
    setWindowFlags(Qt::Window | Qt::WindowTitleHint | Qt::WindowSystemMenuHint | Qt::WindowCloseButtonHint
        | Qt::WindowMinMaxButtonsHint);
    setMinimumSize(smallestSize);
    resize(initialSize);

    using PreferenceStyle::themeIcon;
    m_tabs->addTab(m_general, themeIcon(QStringLiteral("preferences-system")), QStringLiteral("Général"));
    m_tabs->addTab(m_shortcut, themeIcon(QStringLiteral("input-keyboard")), QStringLiteral("Raccourci"));
    m_tabs->addTab(m_privacy, themeIcon(QStringLiteral("security-high")), QStringLiteral("Confidentialité"));
    m_tabs->addTab(m_about, themeIcon(QStringLiteral("help-about")), QStringLiteral("À propos"));
    auto *frame = new QVBoxLayout(this);
    frame->addWidget(m_tabs);
}
