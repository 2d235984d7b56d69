// SPDX-License-Identifier: GPL-3.0-or-later
#include "PlasmaWindowWorkspace.h"

#include "WaylandConnection.h"

#include "plasma-window-management-client.h"

#include <wayland-client.h>

namespace {

// From version 13 a window is announced by uuid as well, which would list it
// twice; 12 has every event needed here.
constexpr quint32 managementVersion = 12;

} // namespace

struct PlasmaWindowWorkspace::PlasmaWindow : Window {
    PlasmaWindowWorkspace *workspace;
    org_kde_plasma_window *handle;

    PlasmaWindow(PlasmaWindowWorkspace *workspace, org_kde_plasma_window *handle)
        : workspace(workspace)
        , handle(handle)
    {
    }
    Q_DISABLE_COPY_MOVE(PlasmaWindow)
    ~PlasmaWindow() override { org_kde_plasma_window_destroy(handle); }

    static PlasmaWindow *of(void *data) { return static_cast<PlasmaWindow *>(data); }

    static void onAppId(void *data, org_kde_plasma_window *, const char *appId)
    {
        of(data)->appId = QString::fromUtf8(appId);
    }
    static void onState(void *data, org_kde_plasma_window *, quint32 flags)
    {
        of(data)->workspace->setActivated(*of(data), flags & ORG_KDE_PLASMA_WINDOW_MANAGEMENT_STATE_ACTIVE);
    }
    static void onUnmapped(void *data, org_kde_plasma_window *) { of(data)->workspace->remove(*of(data)); }

    static void ignoreText(void *, org_kde_plasma_window *, const char *) { }
    static void ignoreNumber(void *, org_kde_plasma_window *, qint32) { }
    static void ignoreUnsigned(void *, org_kde_plasma_window *, quint32) { }
    static void ignore(void *, org_kde_plasma_window *) { }
    static void ignoreParent(void *, org_kde_plasma_window *, org_kde_plasma_window *) { }
    static void ignoreGeometry(void *, org_kde_plasma_window *, qint32, qint32, quint32, quint32) { }
    static void ignoreMenu(void *, org_kde_plasma_window *, const char *, const char *) { }

    static constexpr org_kde_plasma_window_listener listener = {
        .title_changed = &ignoreText,
        .app_id_changed = &onAppId,
        .state_changed = &onState,
        .virtual_desktop_changed = &ignoreNumber,
        .themed_icon_name_changed = &ignoreText,
        .unmapped = &onUnmapped,
        .initial_state = &ignore,
        .parent_window = &ignoreParent,
        .geometry = &ignoreGeometry,
        .icon_changed = &ignore,
        .pid_changed = &ignoreUnsigned,
        .virtual_desktop_entered = &ignoreText,
        .virtual_desktop_left = &ignoreText,
        .application_menu = &ignoreMenu,
        .activity_entered = &ignoreText,
        .activity_left = &ignoreText,
        .resource_name_changed = &ignoreText,
    };
};

bool PlasmaWindowWorkspace::isOffered(const WaylandConnection &connection)
{
    return connection.offers(&org_kde_plasma_window_management_interface);
}

PlasmaWindowWorkspace::PlasmaWindowWorkspace(
    std::unique_ptr<WaylandConnection> connection, const QStringList &ownAppIds)
    : WaylandWorkspace(std::move(connection), ownAppIds)
    , m_management(static_cast<org_kde_plasma_window_management *>(
          this->connection().bind(&org_kde_plasma_window_management_interface, managementVersion)))
{
    static constexpr org_kde_plasma_window_management_listener listener = {
        .show_desktop_changed = &onShowDesktopChanged,
        .window = &onWindow,
        .stacking_order_changed = &onStackingOrderChanged,
        .stacking_order_uuid_changed = &onStackingOrderUuidChanged,
        .window_with_uuid = nullptr,
    };
    org_kde_plasma_window_management_add_listener(m_management, &listener, this);
}

PlasmaWindowWorkspace::~PlasmaWindowWorkspace()
{
    removeAll();
    org_kde_plasma_window_management_destroy(m_management);
}

void PlasmaWindowWorkspace::activateWindow(Window &window)
{
    org_kde_plasma_window_set_state(static_cast<PlasmaWindow &>(window).handle,
        ORG_KDE_PLASMA_WINDOW_MANAGEMENT_STATE_ACTIVE, ORG_KDE_PLASMA_WINDOW_MANAGEMENT_STATE_ACTIVE);
}

void PlasmaWindowWorkspace::onWindow(void *data, org_kde_plasma_window_management *management, quint32 internalId)
{
    auto *workspace = static_cast<PlasmaWindowWorkspace *>(data);
    org_kde_plasma_window *handle = org_kde_plasma_window_management_get_window(management, internalId);
    auto &window = static_cast<PlasmaWindow &>(workspace->add(std::make_unique<PlasmaWindow>(workspace, handle)));
    org_kde_plasma_window_add_listener(handle, &PlasmaWindow::listener, &window);
}

void PlasmaWindowWorkspace::onShowDesktopChanged(void *, org_kde_plasma_window_management *, quint32) { }
void PlasmaWindowWorkspace::onStackingOrderChanged(void *, org_kde_plasma_window_management *, wl_array *) { }
void PlasmaWindowWorkspace::onStackingOrderUuidChanged(void *, org_kde_plasma_window_management *, const char *) { }
