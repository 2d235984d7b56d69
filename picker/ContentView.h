// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "ClipItem.h"

#include <QWidget>

class AppSettings;
class ClipListModel;
class ClipboardStore;
class ClipboardWatcher;
class DesktopWindows;
class PanelController;
class PanelState;
class PasteKeystroke;
class QLabel;
class QLineEdit;
class QListView;
class QStackedWidget;

// The whole picker inside the panel: the search field, the filtered history
// (or a word saying why there is none), the key hints, the number of entries
// and the preferences button. Type to filter; Up and Down choose; Return
// pastes; Space pins and Backspace deletes while the field is empty; Escape
// closes. Each showing starts afresh: empty field, first row.
class ContentView : public QWidget {
    Q_OBJECT

public:
    ContentView(ClipboardStore &store, AppSettings &settings, QWidget *parent = nullptr);
    ~ContentView() override;

    // What a paste needs beyond the history; each may stay unset, and what
    // needs it then does nothing.
    void setPanelController(PanelController *controller) { m_controller = controller; }
    void setDesktopWindows(DesktopWindows *windows) { m_desktopWindows = windows; }
    void setWatcher(ClipboardWatcher *watcher) { m_watcher = watcher; }
    void setPasteKeystroke(PasteKeystroke *keystroke) { m_keystroke = keystroke; }

    PanelState &state() const { return *m_state; }
    ClipListModel &model() const { return *m_model; }
    // The entries the list shows, in its order.
    QList<ClipItem> filtered() const;

    // The actions of the keys, each on the selected row when there is one.
    void selectNext();
    void selectPrevious();
    void pasteSelected();
    void togglePinSelected();
    void deleteSelected();
    void escape();

    // Puts the entry on the clipboard, gives the focus back to the window
    // the user was in, hides the panel and, with auto-paste on, types the
    // paste shortcut there shortly after. The entry keeps its place.
    void paste(const ClipItem &item);
    // Only puts the entry on the clipboard; the panel stays.
    void copyOnly(const ClipItem &item);

    // The delay before the paste shortcut: the panel has faded out by then
    // and the window it was over has the focus back.
    static constexpr int pasteKeystrokeDelayMilliseconds = 150;

protected:
    void showEvent(QShowEvent *event) override;

private:
    QWidget *buildHeader();
    QWidget *buildBody();
    QWidget *buildEmptyState();
    QWidget *buildFooter();
    QWidget *divider();

    void queryEdited(const QString &text);
    void showQuery(const QString &query);
    void followSelection();
    void markCurrentRow();
    void updateBody();
    void updateCount();
    void rowClicked(const QModelIndex &index);
    void rowMenuRequested(const QPoint &position);
    std::optional<ClipItem> selectedItem() const;

    ClipboardStore &m_store;
    AppSettings &m_settings;
    PanelState *m_state;
    ClipListModel *m_model;
    PanelController *m_controller = nullptr;
    DesktopWindows *m_desktopWindows = nullptr;
    ClipboardWatcher *m_watcher = nullptr;
    PasteKeystroke *m_keystroke = nullptr;

    QLineEdit *m_field = nullptr;
    QStackedWidget *m_body = nullptr;
    QListView *m_list = nullptr;
    QLabel *m_emptyTitle = nullptr;
    QLabel *m_emptyHint = nullptr;
    QLabel *m_count = nullptr;
    qint64 m_shownSelection = 0;
};
