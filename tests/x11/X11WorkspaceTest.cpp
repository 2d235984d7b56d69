// SPDX-License-Identifier: GPL-3.0-or-later
#include "X11Workspace.h"

#include "OtherClient.h"
#include "TestPrograms.h"

#include <gtest/gtest.h>

#include <string_view>

using namespace std::string_view_literals;

namespace {

using Properties = OtherClient::Properties;

void setActiveWindow(OtherClient &client, xcb_window_t window)
{
    xcb_change_property(client.connection(), XCB_PROP_MODE_REPLACE, client.root(), client.atom("_NET_ACTIVE_WINDOW"),
        XCB_ATOM_WINDOW, 32, 1, &window);
    client.sync();
}

// Errors from requests nobody checked end up in the event queue.
bool hasQueuedErrors(OtherClient &client)
{
    return client.takeEvents().contains(0) || xcb_connection_has_error(client.connection());
}

class X11WorkspaceFixture : public ::testing::Test {
protected:
    // The workspace's connection stands for Zettly; "other" for the other
    // applications on the desktop.
    OtherClient own;
    OtherClient other;
    X11Workspace workspace { own.connection() };

    bool becomesFrontmost(xcb_window_t window)
    {
        workspace.activate({ window, std::nullopt });
        return eventually([&] { return workspace.frontmostApp().value_or(RunningApp {}).windowId == window; });
    }
};

template<bool withWindowManager> class X11WorkspaceSetUp : public X11WorkspaceFixture {
protected:
    void SetUp() override
    {
        ASSERT_EQ(other.cardinals(other.root(), "_NET_SUPPORTING_WM_CHECK").isEmpty(), !withWindowManager);
    }
};
using X11WorkspaceTest = X11WorkspaceSetUp<true>;
using X11WorkspaceNoWmTest = X11WorkspaceSetUp<false>;

TEST_F(X11WorkspaceTest, IdentifiesTheActiveWindowByDesktopEntryThenClass)
{
    const struct {
        const char *name;
        Properties properties;
        std::optional<QString> identifier;
    } cases[] = {
        { "GTK application id first", { "org.example.Editor", "other.desktop", "editor\0Editor\0"sv },
            QStringLiteral("org.example.Editor") },
        { "desktop file, suffix dropped", { {}, "org.example.Viewer.desktop", "viewer\0Viewer\0"sv },
            QStringLiteral("org.example.Viewer") },
        { "desktop file without suffix", { {}, "org.example.Player", {} }, QStringLiteral("org.example.Player") },
        { "class of WM_CLASS", { {}, {}, "xterm\0XTerm\0"sv }, QStringLiteral("XTerm") },
        { "nothing set", {}, std::nullopt },
    };
    for (const auto &testCase : cases) {
        SCOPED_TRACE(testCase.name);
        const xcb_window_t window = other.createWindow(testCase.properties);
        ASSERT_TRUE(becomesFrontmost(window));
        EXPECT_EQ(workspace.frontmostApp(), (RunningApp { window, testCase.identifier }));
    }

    // Whatever our own windows claim to be, they are Zettly.
    const xcb_window_t ours = own.createWindow({ "org.example.Editor", {}, "xterm\0XTerm\0"sv });
    ASSERT_TRUE(becomesFrontmost(ours));
    EXPECT_EQ(workspace.frontmostApp()->identifier, Workspace::ownIdentifier);
}

TEST_F(X11WorkspaceTest, GoneWindowsAreNobodyAndCannotBeActivated)
{
    const xcb_window_t gone = other.createWindow({ {}, {}, "gone\0Gone\0"sv });
    const xcb_window_t kept = other.createWindow({ {}, {}, "kept\0Kept\0"sv });
    xcb_destroy_window(other.connection(), gone);
    other.sync();
    ASSERT_TRUE(becomesFrontmost(kept));

    workspace.activate({ gone, QStringLiteral("Gone") });
    EXPECT_FALSE(hasQueuedErrors(own));
    EXPECT_EQ(workspace.frontmostApp()->windowId, kept);

    // A window that vanishes between reading the property and reading its
    // properties; then no active window at all.
    setActiveWindow(other, gone);
    EXPECT_EQ(workspace.frontmostApp(), std::nullopt);
    setActiveWindow(other, XCB_WINDOW_NONE);
    EXPECT_EQ(workspace.frontmostApp(), std::nullopt);
    EXPECT_FALSE(hasQueuedErrors(own));
}

TEST_F(X11WorkspaceNoWmTest, FollowsTheInputFocusToTheClientWindow)
{
    // A frame without properties around a client, focus on a child inside.
    const xcb_window_t frame = other.createWindow({});
    const xcb_window_t client = other.createWindow({ {}, {}, "term\0Term\0"sv }, frame);
    const xcb_window_t inner = other.createWindow({}, client);
    ASSERT_TRUE(other.setInputFocus(inner));
    EXPECT_EQ(workspace.frontmostApp(), (RunningApp { client, QStringLiteral("Term") }));

    const xcb_window_t plain = other.createWindow({ {}, "org.example.Plain.desktop", {} });
    ASSERT_TRUE(other.setInputFocus(plain));
    EXPECT_EQ(workspace.frontmostApp(), (RunningApp { plain, QStringLiteral("org.example.Plain") }));

    for (const xcb_window_t nobody : { xcb_window_t(XCB_INPUT_FOCUS_POINTER_ROOT), xcb_window_t(XCB_WINDOW_NONE) }) {
        ASSERT_TRUE(other.setInputFocus(nobody));
        EXPECT_EQ(workspace.frontmostApp(), std::nullopt);
    }
}

TEST_F(X11WorkspaceNoWmTest, ActivateRaisesAndFocusesTheWindow)
{
    const xcb_window_t lower = other.createWindow({ {}, {}, "lower\0Lower\0"sv });
    const xcb_window_t upper = other.createWindow({ {}, {}, "upper\0Upper\0"sv });
    ASSERT_TRUE(other.setInputFocus(upper));

    workspace.activate({ lower, std::nullopt });
    EXPECT_EQ(other.inputFocus(), lower);
    const QList<xcb_window_t> stack = other.children(other.root());
    EXPECT_GT(stack.indexOf(lower), stack.indexOf(upper));

    xcb_destroy_window(other.connection(), upper);
    other.sync();
    workspace.activate({ upper, std::nullopt });
    EXPECT_EQ(other.inputFocus(), lower);
    EXPECT_FALSE(hasQueuedErrors(own));
}

} // namespace
