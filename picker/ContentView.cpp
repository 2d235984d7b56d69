// SPDX-License-Identifier: GPL-3.0-or-later
#include "ContentView.h"

#include "AppSettings.h"
#include "ClipboardStore.h"
#include "ClipListModel.h"
#include "ClipRowDelegate.h"
#include "ClipRowMenu.h"
#include "FooterHint.h"
#include "PanelController.h"
#include "PanelState.h"
#include "Paste.h"
#include "PasteKeystroke.h"
#include "SearchKeyFilter.h"
#include "SettingsWindow.h"
#include "SymbolPainter.h"

#include <QFontDatabase>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QListView>
#include <QStackedWidget>
#include <QTimer>
#include <QToolButton>
#include <QVBoxLayout>

#include <algorithm>

namespace {

constexpr int fieldHeight = 28;
constexpr int fieldPixels = 14;
constexpr int headerSymbol = 16;
constexpr int traySymbol = 32;
constexpr int calloutPixels = 12;
constexpr int captionPixels = 11;
constexpr int gearSymbol = 13;
constexpr int prepareSearchDelayMilliseconds = 50;

QFont pixelFont(QFont font, int pixels)
{
    font.setPixelSize(pixels);
    return font;
}

void setTextColor(QWidget *widget, const QColor &color)
{
    QPalette palette = widget->palette();
    palette.setColor(QPalette::WindowText, color);
    widget->setPalette(palette);
}

QLabel *symbolLabel(const QString &iconName, int size, const QColor &color, QWidget *parent)
{
    auto *label = new QLabel(parent);
    label->setPixmap(SymbolPainter::tinted(iconName, size, color, label->devicePixelRatioF()));
    return label;
}

// Nothing painted behind the field and the list: the panel's own rounded
// background shows through.
void makeSeeThrough(QWidget *widget)
{
    QPalette palette = widget->palette();
    palette.setColor(QPalette::Base, Qt::transparent);
    widget->setPalette(palette);
    widget->setAutoFillBackground(false);
}

} // namespace

ContentView::ContentView(ClipboardStore &store, AppSettings &settings, QWidget *parent)
    : QWidget(parent)
    , m_store(store)
    , m_settings(settings)
    , m_state(new PanelState(this))
    , m_model(new ClipListModel(store, this))
{
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->addWidget(buildHeader());
    layout->addWidget(divider());
    layout->addWidget(buildBody(), 1);
    layout->addWidget(divider());
    layout->addWidget(buildFooter());

    connect(m_state, &PanelState::queryChanged, this, &ContentView::showQuery);
    connect(m_state, &PanelState::selectionChanged, this, &ContentView::followSelection);
    connect(m_model, &QAbstractItemModel::rowsInserted, this, &ContentView::updateBody);
    connect(m_model, &QAbstractItemModel::rowsRemoved, this, &ContentView::updateBody);
    connect(m_model, &QAbstractItemModel::modelReset, this, &ContentView::updateBody);
    // The view's current row follows its entry as rows come and go; the
    // selection is an index and stays: so does what assistive technologies
    // are told is current.
    connect(m_model, &QAbstractItemModel::rowsInserted, this, &ContentView::markCurrentRow, Qt::QueuedConnection);
    connect(m_model, &QAbstractItemModel::rowsRemoved, this, &ContentView::markCurrentRow, Qt::QueuedConnection);
    connect(m_model, &QAbstractItemModel::rowsMoved, this, &ContentView::markCurrentRow, Qt::QueuedConnection);
    connect(m_model, &QAbstractItemModel::modelReset, this, &ContentView::markCurrentRow, Qt::QueuedConnection);
    connect(&m_store, &ClipboardStore::changed, this, &ContentView::updateCount);
    updateBody();
    updateCount();
}

ContentView::~ContentView() = default;

QWidget *ContentView::buildHeader()
{
    auto *header = new QWidget(this);
    auto *row = new QHBoxLayout(header);
    row->setContentsMargins(12, 10, 12, 6);
    row->setSpacing(8);
    row->addWidget(
        symbolLabel(QStringLiteral("edit-paste-symbolic"), headerSymbol, SymbolPainter::secondary(palette()), header));

    m_field = new QLineEdit(header);
    m_field->setFrame(false);
    m_field->setFixedHeight(fieldHeight);
    m_field->setFont(pixelFont(font(), fieldPixels));
    m_field->setPlaceholderText(QStringLiteral("Rechercher…"));
    m_field->setAccessibleName(QStringLiteral("Rechercher…"));
    makeSeeThrough(m_field);
    row->addWidget(m_field, 1);
    setFocusProxy(m_field);

    auto *keys = new SearchKeyFilter(*m_state, this);
    m_field->installEventFilter(keys);
    connect(keys, &SearchKeyFilter::submitPressed, this, &ContentView::pasteSelected);
    connect(keys, &SearchKeyFilter::escapePressed, this, &ContentView::escape);
    connect(keys, &SearchKeyFilter::downPressed, this, &ContentView::selectNext);
    connect(keys, &SearchKeyFilter::upPressed, this, &ContentView::selectPrevious);
    connect(keys, &SearchKeyFilter::spacePressed, this, &ContentView::togglePinSelected);
    connect(keys, &SearchKeyFilter::backspacePressed, this, &ContentView::deleteSelected);
    connect(m_field, &QLineEdit::textEdited, this, &ContentView::queryEdited);
    return header;
}

QWidget *ContentView::buildBody()
{
    m_body = new QStackedWidget(this);
    m_list = new QListView(m_body);
    m_list->setModel(m_model);
    m_list->setItemDelegate(new ClipRowDelegate(m_store, *m_state, m_list));
    m_list->setUniformItemSizes(true);
    m_list->setFrameShape(QFrame::NoFrame);
    m_list->setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    m_list->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    m_list->setVerticalScrollMode(QAbstractItemView::ScrollPerPixel);
    // The selection is the picker's own; the view only shows it.
    m_list->setSelectionMode(QAbstractItemView::NoSelection);
    m_list->setFocusPolicy(Qt::NoFocus);
    m_list->setAutoScroll(false);
    m_list->setMouseTracking(true);
    m_list->viewport()->setAttribute(Qt::WA_Hover);
    m_list->setContentsMargins(0, 3, 0, 3);
    m_list->setContextMenuPolicy(Qt::CustomContextMenu);
    makeSeeThrough(m_list);
    makeSeeThrough(m_list->viewport());
    connect(m_list, &QListView::clicked, this, &ContentView::rowClicked);
    connect(m_list, &QListView::customContextMenuRequested, this, &ContentView::rowMenuRequested);
    m_body->addWidget(m_list);
    m_body->addWidget(buildEmptyState());
    return m_body;
}

QWidget *ContentView::buildEmptyState()
{
    auto *empty = new QWidget(m_body);
    auto *column = new QVBoxLayout(empty);
    column->setSpacing(8);
    column->addStretch();
    QLabel *tray = symbolLabel(
        QStringLiteral("focus-legacy-systray-symbolic"), traySymbol, SymbolPainter::tertiary(palette()), empty);
    column->addWidget(tray, 0, Qt::AlignHCenter);
    m_emptyTitle = new QLabel(empty);
    m_emptyTitle->setFont(pixelFont(font(), calloutPixels));
    setTextColor(m_emptyTitle, SymbolPainter::secondary(palette()));
    column->addWidget(m_emptyTitle, 0, Qt::AlignHCenter);
    m_emptyHint = new QLabel(QStringLiteral("Copie quelque chose pour commencer"), empty);
    m_emptyHint->setFont(pixelFont(font(), captionPixels));
    setTextColor(m_emptyHint, SymbolPainter::tertiary(palette()));
    column->addWidget(m_emptyHint, 0, Qt::AlignHCenter);
    column->addStretch();
    return empty;
}

QWidget *ContentView::buildFooter()
{
    auto *footer = new QWidget(this);
    auto *row = new QHBoxLayout(footer);
    row->setContentsMargins(10, 6, 10, 6);
    row->setSpacing(10);
    row->addWidget(new FooterHint(QStringLiteral("↩"), QStringLiteral("Coller"), footer));
    row->addWidget(new FooterHint(QStringLiteral("Space"), QStringLiteral("Épingler"), footer));
    row->addWidget(new FooterHint(QStringLiteral("⌫"), QStringLiteral("Supprimer"), footer));
    row->addStretch();

    m_count = new QLabel(footer);
    QFont digits = QFontDatabase::systemFont(QFontDatabase::FixedFont);
    digits.setPixelSize(captionPixels);
    m_count->setFont(digits);
    setTextColor(m_count, SymbolPainter::tertiary(palette()));
    row->addWidget(m_count);

    auto *gear = new QToolButton(footer);
    gear->setAutoRaise(true);
    gear->setFocusPolicy(Qt::NoFocus);
    gear->setIcon(SymbolPainter::tintedIcon(
        QStringLiteral("emblem-system-symbolic"), gearSymbol, SymbolPainter::secondary(palette())));
    gear->setIconSize(QSize(gearSymbol, gearSymbol));
    gear->setAccessibleName(QStringLiteral("Préférences…"));
    gear->setToolTip(QStringLiteral("Préférences…"));
    // The preferences come up over the panel, which stays.
    connect(gear, &QToolButton::clicked, this, [] { SettingsWindow::shared().show(); });
    row->addWidget(gear);
    return footer;
}

QWidget *ContentView::divider()
{
    auto *line = new QWidget(this);
    line->setFixedHeight(1);
    QPalette palette = line->palette();
    // A faint line, as dividers are, drawn at 0.3 opacity.
    palette.setColor(QPalette::Window, SymbolPainter::withAlpha(palette.color(QPalette::WindowText), 0.4 * 0.3));
    line->setPalette(palette);
    line->setAutoFillBackground(true);
    return line;
}

QList<ClipItem> ContentView::filtered() const
{
    return m_model->items();
}

void ContentView::selectNext()
{
    const qint64 count = m_model->rowCount();
    if (count > 0)
        m_state->setSelection(std::max<qint64>(0, std::min(m_state->selection() + 1, count - 1)));
}

void ContentView::selectPrevious()
{
    const qint64 count = m_model->rowCount();
    if (count > 0)
        m_state->setSelection(std::max<qint64>(0, std::min(m_state->selection() - 1, count - 1)));
}

std::optional<ClipItem> ContentView::selectedItem() const
{
    const qint64 row = m_state->selection();
    if (row < 0 || row >= m_model->rowCount())
        return std::nullopt;
    return m_model->item(row);
}

void ContentView::pasteSelected()
{
    if (const std::optional<ClipItem> item = selectedItem())
        paste(*item);
}

void ContentView::togglePinSelected()
{
    if (const std::optional<ClipItem> item = selectedItem())
        m_store.togglePin(item->id);
}

void ContentView::deleteSelected()
{
    if (const std::optional<ClipItem> item = selectedItem())
        m_store.remove(item->id);
}

void ContentView::escape()
{
    if (m_controller)
        m_controller->hide();
}

void ContentView::paste(const ClipItem &item)
{
    const bool autoPaste = m_settings.autoPaste();
    if (m_watcher)
        Paste::putOnPasteboard(item, m_store, *m_watcher);
    std::optional<RunningApp> target;
    if (m_controller) {
        target = m_controller->previousApp();
        if (target && m_desktopWindows)
            m_desktopWindows->activate(*target);
        m_controller->hide();
    }
    if (!autoPaste)
        return;
    QTimer::singleShot(pasteKeystrokeDelayMilliseconds, this, [this, target] {
        if (m_keystroke && m_keystroke->isTrusted())
            m_keystroke->sendPaste(target.value_or(RunningApp {}));
    });
}

void ContentView::copyOnly(const ClipItem &item)
{
    if (m_watcher)
        Paste::putOnPasteboard(item, m_store, *m_watcher);
}

void ContentView::showEvent(QShowEvent *event)
{
    QWidget::showEvent(event);
    m_state->setQuery({});
    m_state->setSelection(0);
    m_field->setFocus();
    // Once the panel is on the screen.
    QTimer::singleShot(prepareSearchDelayMilliseconds, m_model, &ClipListModel::prepareSearch);
}

void ContentView::queryEdited(const QString &text)
{
    // A turn later, as the field's own handling of the key comes first.
    QTimer::singleShot(0, this, [this, text] { m_state->setQuery(text); });
}

void ContentView::showQuery(const QString &query)
{
    if (m_field->text() != query)
        m_field->setText(query);
    m_model->setQuery(query);
}

void ContentView::followSelection()
{
    const qint64 selection = m_state->selection();
    m_list->viewport()->update(m_list->visualRect(m_model->index(int(m_shownSelection))));
    m_shownSelection = selection;
    if (selection < 0 || selection >= m_model->rowCount())
        return;
    const QModelIndex index = m_model->index(int(selection));
    m_list->setCurrentIndex(index);
    m_list->scrollTo(index, QAbstractItemView::EnsureVisible);
    m_list->viewport()->update(m_list->visualRect(index));
}

void ContentView::markCurrentRow()
{
    const qint64 selection = m_state->selection();
    if (selection >= 0 && selection < m_model->rowCount())
        m_list->selectionModel()->setCurrentIndex(m_model->index(int(selection)), QItemSelectionModel::NoUpdate);
}

void ContentView::updateBody()
{
    const bool empty = m_model->rowCount() == 0;
    const bool searching = !m_state->query().isEmpty();
    m_emptyTitle->setText(searching ? QStringLiteral("Aucun résultat") : QStringLiteral("Aucune copie pour le moment"));
    m_emptyHint->setVisible(!searching);
    m_body->setCurrentIndex(empty ? 1 : 0);
}

void ContentView::updateCount()
{
    m_count->setText(QString::number(m_store.items().size()));
}

void ContentView::rowClicked(const QModelIndex &index)
{
    if (!index.isValid())
        return;
    m_state->setSelection(index.row());
    paste(m_model->item(index.row()));
}

void ContentView::rowMenuRequested(const QPoint &position)
{
    const QModelIndex index = m_list->indexAt(position);
    if (!index.isValid())
        return;
    const ClipItem item = m_model->item(index.row());
    ClipRowMenu menu(item, this);
    std::optional<ClipRowMenu::Choice> choice;
    connect(&menu, &ClipRowMenu::chosen, this, [&](ClipRowMenu::Choice chosen) { choice = chosen; });
    menu.exec(m_list->viewport()->mapToGlobal(position));
    if (!choice)
        return;
    switch (*choice) {
    case ClipRowMenu::Choice::Paste:
        paste(item);
        break;
    case ClipRowMenu::Choice::TogglePin:
        m_store.togglePin(item.id);
        break;
    case ClipRowMenu::Choice::CopyOnly:
        copyOnly(item);
        break;
    case ClipRowMenu::Choice::Delete:
        m_store.remove(item.id);
        break;
    }
}
