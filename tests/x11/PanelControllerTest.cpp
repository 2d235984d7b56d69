// SPDX-License-Identifier: GPL-3.0-or-later
#include "PanelController.h"
#include "ClipPanel.h"
#include "OtherClient.h"
#include "TestPrograms.h"
#include "X11ClickMonitor.h"
#include "X11Workspace.h"
#include "XcbReply.h"

#include <QGuiApplication>
#include <QLabel>
#include <QSignalSpy>
#include <QWindow>

#include <gtest/gtest.h>

#include <functional>

static void PrintTo(const QRect &rect, std::ostream *out)
{
    *out << rect.x() << ',' << rect.y() << ' ' << rect.width() << 'x' << rect.height();
}

namespace {

// Handles what the server has sent so far, the click monitor's raw events
// included: a round trip, after which they are in our sockets.
void readPendingEvents(const OtherClient &client)
{
    client.sync();
    QCoreApplication::processEvents();
    QCoreApplication::processEvents();
}

// Returns once the window manager has handled every request sent to it
// before: it answers _NET_REQUEST_FRAME_EXTENTS in turn with the others.
bool windowManagerBarrier(OtherClient &client)
{
    xcb_connection_t *connection = client.connection();
    const xcb_window_t probe = xcb_generate_id(connection);
    xcb_create_window(connection, XCB_COPY_FROM_PARENT, probe, client.root(), 0, 0, 1, 1, 0,
        XCB_WINDOW_CLASS_INPUT_OUTPUT, XCB_COPY_FROM_PARENT, 0, nullptr);
    xcb_client_message_event_t request {};
    request.response_type = XCB_CLIENT_MESSAGE;
    request.format = 32;
    request.window = probe;
    request.type = client.atom("_NET_REQUEST_FRAME_EXTENTS");
    xcb_send_event(connection, false, client.root(),
        XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT | XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY,
        reinterpret_cast<const char *>(&request));
    client.sync();
    const bool answered = eventually([&] { return !client.cardinals(probe, "_NET_FRAME_EXTENTS").isEmpty(); });
    xcb_destroy_window(connection, probe);
    client.sync();
    return answered;
}

template<bool withWindowManager> class PanelControllerFixture : public ::testing::Test {
protected:
    void SetUp() override
    {
        ASSERT_EQ(other.cardinals(other.root(), "_NET_SUPPORTING_WM_CHECK").isEmpty(), !withWindowManager);
        foreign = other.createWindow("foreign", "Foreign", { 20, 20, 500, 400 });
        ASSERT_TRUE(clicks.isValid());
        controller.setClickMonitor(&clicks);
        X11Workspace(other.connection()).activate({ foreign, std::nullopt });
        ASSERT_TRUE(foreignInFront());
    }

    // The app never destroys a panel with the focus; here it would leave
    // Qt's focus bookkeeping to the next test.
    void TearDown() override
    {
        controller.hide();
        EXPECT_TRUE(eventually([&] { return !controller.panel().isVisible(); }));
    }

    // A compositor's selection, held without compositing: the panel then
    // fades and draws translucent.
    void pretendCompositor()
    {
        const xcb_window_t owner = xcb_generate_id(other.connection());
        xcb_create_window(other.connection(), XCB_COPY_FROM_PARENT, owner, other.root(), 0, 0, 1, 1, 0,
            XCB_WINDOW_CLASS_INPUT_ONLY, XCB_COPY_FROM_PARENT, 0, nullptr);
        xcb_set_selection_owner(other.connection(), owner, other.atom("_NET_WM_CM_S0"), XCB_CURRENT_TIME);
        other.sync();
        ASSERT_TRUE(workspace.hasCompositor());
    }

    // Focused, and announced as the active window, which the window manager
    // may do a moment later.
    bool foreignInFront() const
    {
        return eventually([&] {
            return other.inputFocus() == foreign
                && workspace.frontmostApp().value_or(RunningApp {}).windowId == foreign;
        });
    }

    xcb_window_t panelWindow() const { return xcb_window_t(controller.panel().winId()); }
    bool panelHasFocus() const
    {
        return other.inputFocus() == panelWindow()
            && QGuiApplication::focusWindow() == controller.panel().windowHandle();
    }

    bool showAt(QPoint pointer)
    {
        if (!XDoTool::moveTo(pointer))
            return false;
        controller.showNearCursor();
        return eventually([&] { return other.isViewable(panelWindow()) && panelHasFocus(); });
    }

    // Our own other window, as the preferences will be, clicked.
    bool focusPreferences()
    {
        if (!preferences.isVisible()) {
            preferences.setGeometry(1000, 600, 200, 120);
            preferences.show();
            if (!QTest::qWaitForWindowExposed(&preferences, patience))
                return false;
        }
        return XDoTool::click(preferences.mapToGlobal(preferences.rect().center()))
            && eventually([&] { return QGuiApplication::focusWindow() == preferences.windowHandle(); });
    }

    bool panelGoneAndFocusOn(xcb_window_t window) const
    {
        return eventually([&] { return !other.isViewable(panelWindow()) && other.inputFocus() == window; });
    }

    // Another application on the same display.
    OtherClient other;
    xcb_window_t foreign = 0;
    X11Workspace workspace;
    X11ClickMonitor clicks;
    PanelController controller { new QLabel(QStringLiteral("Zettly")), workspace, workspace };
    QWidget preferences;
};
using PanelControllerTest = PanelControllerFixture<true>;
using PanelControllerNoWmTest = PanelControllerFixture<false>;

// Where, beside the pointer: the placement's own test, and the app's at a
// corner of the screen.
TEST_F(PanelControllerTest, OpensBesideThePointerWithTheFocus)
{
    ASSERT_TRUE(showAt({ 300, 200 }));
    EXPECT_TRUE(controller.isShown());
    EXPECT_TRUE(eventually([&] { return other.rootGeometry(panelWindow()) == QRect(308, 204, 360, 480); }))
        << ::testing::PrintToString(other.rootGeometry(panelWindow()));
    EXPECT_EQ(controller.previousApp(), (RunningApp { foreign, QStringLiteral("Foreign") }));

    // Unmanaged, so with no frame and no taskbar entry, and on top.
    xcb_connection_t *connection = other.connection();
    const XcbReply<xcb_get_window_attributes_reply_t> attributes(
        xcb_get_window_attributes_reply(connection, xcb_get_window_attributes(connection, panelWindow()), nullptr));
    ASSERT_TRUE(attributes);
    EXPECT_TRUE(attributes->override_redirect);
    const QList<xcb_window_t> stack = other.children(other.root());
    EXPECT_EQ(stack.value(stack.size() - 1), panelWindow());
}

// With a compositor the panel fades; a show during the fade-out wins.
TEST_F(PanelControllerTest, HideGivesTheFocusBack)
{
    for (const bool compositor : { false, true }) {
        SCOPED_TRACE(compositor ? "with a compositor" : "without a compositor");
        if (compositor)
            pretendCompositor();
        ASSERT_TRUE(showAt({ 600, 300 }));
        EXPECT_EQ(controller.panel().isTranslucent(), compositor);
        if (compositor) {
            controller.hide();
            ASSERT_TRUE(controller.panel().isVisible());
            ASSERT_TRUE(showAt({ 200, 100 }));
            EXPECT_TRUE(eventually([&] { return other.rootGeometry(panelWindow()).topLeft() == QPoint(208, 104); }));
        }
        // The fade-in, longer than the fade-out, has ended: so would have a
        // fade-out that was not stopped.
        ASSERT_TRUE(eventually([&] { return controller.panel().windowOpacity() == 1.0; }));
        EXPECT_TRUE(controller.isShown());
        EXPECT_TRUE(other.isViewable(panelWindow()));
        EXPECT_TRUE(panelHasFocus());

        controller.hide();
        EXPECT_FALSE(controller.isShown());
        // Nothing has run yet: only a fade leaves the window up.
        EXPECT_EQ(controller.panel().isVisible(), compositor);
        EXPECT_TRUE(panelGoneAndFocusOn(foreign));
        EXPECT_FALSE(controller.panel().isVisible());

        // Again, harmlessly.
        controller.hide();
        EXPECT_EQ(other.inputFocus(), foreign);
    }
}

// A click in another application hides the panel and leaves the focus on
// the window clicked, not on the one remembered.
TEST_F(PanelControllerTest, ClicksHideItOnlyInOtherApplications)
{
    const xcb_window_t third = other.createWindow("third", "Third", { 700, 500, 400, 200 });
    X11Workspace(other.connection()).activate({ foreign, std::nullopt });
    ASSERT_TRUE(foreignInFront());
    ASSERT_TRUE(showAt({ 100, 100 }));
    ASSERT_TRUE(XDoTool::click({ 200, 300 }));
    readPendingEvents(other);
    EXPECT_TRUE(controller.isShown()) << "click inside the panel";

    ASSERT_TRUE(focusPreferences());
    readPendingEvents(other);
    EXPECT_TRUE(controller.isShown()) << "click in our own window";
    EXPECT_TRUE(other.isViewable(panelWindow()));
    ASSERT_EQ(controller.previousApp(), (RunningApp { foreign, QStringLiteral("Foreign") }));

    ASSERT_TRUE(XDoTool::click(other.rootGeometry(third).center()));
    EXPECT_TRUE(panelGoneAndFocusOn(third));
    ASSERT_TRUE(eventually([&] { return !controller.isShown(); }));
    // A focus handed back on hiding would be served by now.
    ASSERT_TRUE(windowManagerBarrier(other));
    EXPECT_EQ(other.inputFocus(), third);
    EXPECT_EQ(workspace.frontmostApp(), (RunningApp { third, QStringLiteral("Third") }));
}

// The left and right buttons are clicks; the middle one and the wheel are
// not. Checked on the monitor: under a window manager, a button that focuses
// the window it lands in hides the panel through the focus anyway.
TEST(PanelControllerClicks, OnlyLeftAndRightButtonsCount)
{
    // Over a window: on the bare desktop, buttons open the window manager's
    // menus.
    OtherClient other;
    other.createWindow("target", "Target", { 440, 300, 400, 200 });
    X11ClickMonitor monitor;
    ASSERT_TRUE(monitor.isValid());
    QSignalSpy clicks(&monitor, &ClickMonitor::clicked);
    monitor.start();
    const struct {
        int button;
        bool counts;
    } rows[] = { { 1, true }, { 2, false }, { 3, true }, { 4, false }, { 5, false }, { 6, false }, { 7, false } };
    for (const auto &row : rows) {
        SCOPED_TRACE(row.button);
        clicks.clear();
        ASSERT_TRUE(XDoTool::click({ 640, 400 }, row.button));
        const auto reported = [&] { return eventually([&] { return !clicks.isEmpty(); }); };
        if (row.counts) {
            EXPECT_TRUE(reported());
            continue;
        }
        readPendingEvents(other);
        EXPECT_EQ(clicks.count(), 0);
        // The monitor still listens: a left click after it is reported.
        ASSERT_TRUE(XDoTool::click({ 640, 400 }));
        EXPECT_TRUE(reported());
    }
}

// The window manager alone would hand the focus to our own window. Escape
// takes the panel away, but it stays shown for the next toggle, which hides.
TEST_F(PanelControllerTest, FocusGoesBackPastOurOwnWindows)
{
    const struct {
        const char *name;
        std::function<void()> leave;
        bool staysShown;
    } ways[] = {
        { "hide", [&] { controller.hide(); }, false },
        { "Escape", [&] { XDoTool::key({ QStringLiteral("Escape") }); }, true },
    };
    // Shown once from the other application, which is remembered.
    ASSERT_TRUE(showAt({ 600, 100 }));
    controller.hide();
    ASSERT_TRUE(panelGoneAndFocusOn(foreign));

    for (const auto &way : ways) {
        SCOPED_TRACE(way.name);
        ASSERT_TRUE(focusPreferences());
        ASSERT_TRUE(showAt({ 600, 100 }));
        EXPECT_EQ(controller.previousApp(), (RunningApp { foreign, QStringLiteral("Foreign") }));
        way.leave();
        EXPECT_TRUE(panelGoneAndFocusOn(foreign));
        // Qt tells of the lost focus late.
        ASSERT_TRUE(eventually([] { return !QGuiApplication::focusWindow(); }));
        readPendingEvents(other);
        EXPECT_EQ(controller.isShown(), way.staysShown);
        controller.hide();
        EXPECT_FALSE(controller.isShown());
        EXPECT_EQ(other.inputFocus(), foreign);
    }
}

// Without a window manager nothing takes the keys after a click on the bare
// desktop: the window that had them before the panel gets them back.
TEST_F(PanelControllerNoWmTest, ClickOnTheDesktopGivesTheKeysBack)
{
    ASSERT_TRUE(showAt({ 700, 300 }));
    ASSERT_TRUE(XDoTool::click({ 1200, 780 }));
    EXPECT_TRUE(panelGoneAndFocusOn(foreign));
    EXPECT_TRUE(eventually([&] { return !controller.isShown(); }));
}

} // namespace
