// SPDX-License-Identifier: GPL-3.0-or-later
#include "X11Workspace.h"

#include <QDeadlineTimer>
#include <QThread>

#include <gtest/gtest.h>

#include <xcb/xcb.h>

#include <algorithm>
#include <cstdlib>
#include <functional>
#include <memory>
#include <span>
#include <string_view>

using namespace std::string_view_literals;

void PrintTo(const RunningApp &app, std::ostream *out)
{
    *out << "{window " << app.windowId << ", " << (app.identifier ? app.identifier->toStdString() : "no identifier")
         << '}';
}

namespace {

struct Disconnect {
    void operator()(xcb_connection_t *connection) const { xcb_disconnect(connection); }
};
using Connection = std::unique_ptr<xcb_connection_t, Disconnect>;

// What a test window carries; empty values are left unset.
struct Properties {
    std::string_view gtkApplicationId;
    std::string_view desktopFile;
    std::string_view wmClass; // "instance\0class\0"
};

xcb_atom_t atom(xcb_connection_t *connection, std::string_view name)
{
    xcb_intern_atom_reply_t *reply
        = xcb_intern_atom_reply(connection, xcb_intern_atom(connection, false, name.size(), name.data()), nullptr);
    const xcb_atom_t value = reply ? reply->atom : XCB_ATOM_NONE;
    std::free(reply);
    return value;
}

xcb_window_t root(xcb_connection_t *connection)
{
    return xcb_setup_roots_iterator(xcb_get_setup(connection)).data->root;
}

// A round trip: the server has handled every earlier request.
void sync(xcb_connection_t *connection)
{
    std::free(xcb_get_input_focus_reply(connection, xcb_get_input_focus(connection), nullptr));
}

void setText(xcb_connection_t *connection, xcb_window_t window, std::string_view property, xcb_atom_t type,
    std::string_view value)
{
    if (!value.empty())
        xcb_change_property(
            connection, XCB_PROP_MODE_REPLACE, window, atom(connection, property), type, 8, value.size(), value.data());
}

// A mapped window, as another application (or we) would make it.
xcb_window_t createWindow(xcb_connection_t *connection, const Properties &properties, xcb_window_t parent = 0)
{
    const xcb_window_t window = xcb_generate_id(connection);
    xcb_create_window(connection, XCB_COPY_FROM_PARENT, window, parent ? parent : root(connection), 10, 10, 200, 100, 0,
        XCB_WINDOW_CLASS_INPUT_OUTPUT, XCB_COPY_FROM_PARENT, 0, nullptr);
    const xcb_atom_t utf8 = atom(connection, "UTF8_STRING");
    setText(connection, window, "_GTK_APPLICATION_ID", utf8, properties.gtkApplicationId);
    setText(connection, window, "_KDE_NET_WM_DESKTOP_FILE", utf8, properties.desktopFile);
    setText(connection, window, "WM_CLASS", XCB_ATOM_STRING, properties.wmClass);
    xcb_map_window(connection, window);
    sync(connection);
    return window;
}

// A window id on the root, when the property is there.
std::optional<xcb_window_t> rootWindowProperty(xcb_connection_t *connection, std::string_view name)
{
    const std::unique_ptr<xcb_get_property_reply_t, decltype(&std::free)> reply(
        xcb_get_property_reply(connection,
            xcb_get_property(connection, false, root(connection), atom(connection, name), XCB_ATOM_WINDOW, 0, 1),
            nullptr),
        &std::free);
    if (!reply || xcb_get_property_value_length(reply.get()) != 4)
        return std::nullopt;
    return *static_cast<xcb_window_t *>(xcb_get_property_value(reply.get()));
}

void setActiveWindow(xcb_connection_t *connection, xcb_window_t window)
{
    xcb_change_property(connection, XCB_PROP_MODE_REPLACE, root(connection), atom(connection, "_NET_ACTIVE_WINDOW"),
        XCB_ATOM_WINDOW, 32, 1, &window);
    sync(connection);
}

xcb_window_t focus(xcb_connection_t *connection)
{
    xcb_get_input_focus_reply_t *reply
        = xcb_get_input_focus_reply(connection, xcb_get_input_focus(connection), nullptr);
    const xcb_window_t window = reply ? reply->focus : XCB_WINDOW_NONE;
    std::free(reply);
    return window;
}

bool setFocus(xcb_connection_t *connection, xcb_window_t window)
{
    xcb_generic_error_t *error = xcb_request_check(
        connection, xcb_set_input_focus_checked(connection, XCB_INPUT_FOCUS_PARENT, window, XCB_CURRENT_TIME));
    std::free(error);
    return !error;
}

// Window managers act in their own time: poll, with a generous deadline.
bool eventually(const std::function<bool()> &condition)
{
    for (QDeadlineTimer deadline(10'000); !deadline.hasExpired(); QThread::msleep(20)) {
        if (condition())
            return true;
    }
    return condition();
}

// Errors from requests nobody checked end up in the event queue.
bool hasQueuedErrors(xcb_connection_t *connection)
{
    sync(connection);
    bool found = false;
    while (xcb_generic_event_t *event = xcb_poll_for_event(connection)) {
        found = found || event->response_type == 0;
        std::free(event);
    }
    return found || xcb_connection_has_error(connection);
}

class X11WorkspaceFixture : public ::testing::Test {
protected:
    // The workspace's connection stands for Zettly; "other" for the other
    // applications on the desktop.
    Connection own { xcb_connect(nullptr, nullptr) };
    Connection other { xcb_connect(nullptr, nullptr) };
    X11Workspace workspace { own.get() };

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
        ASSERT_EQ(rootWindowProperty(other.get(), "_NET_SUPPORTING_WM_CHECK").has_value(), withWindowManager);
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
        const xcb_window_t window = createWindow(other.get(), testCase.properties);
        ASSERT_TRUE(becomesFrontmost(window));
        EXPECT_EQ(workspace.frontmostApp(), (RunningApp { window, testCase.identifier }));
    }

    // Whatever our own windows claim to be, they are Zettly.
    const xcb_window_t ours = createWindow(own.get(), { "org.example.Editor", {}, "xterm\0XTerm\0"sv });
    ASSERT_TRUE(becomesFrontmost(ours));
    EXPECT_EQ(workspace.frontmostApp()->identifier, Workspace::ownIdentifier);
}

TEST_F(X11WorkspaceTest, ActivateMakesTheWindowActive)
{
    const xcb_window_t first = createWindow(other.get(), { {}, {}, "first\0First\0"sv });
    const xcb_window_t second = createWindow(other.get(), { {}, {}, "second\0Second\0"sv });
    for (const xcb_window_t window : { first, second, first }) {
        workspace.activate({ window, std::nullopt });
        EXPECT_TRUE(eventually([&] { return rootWindowProperty(other.get(), "_NET_ACTIVE_WINDOW") == window; }));
    }
    EXPECT_FALSE(hasQueuedErrors(own.get()));
}

TEST_F(X11WorkspaceTest, GoneWindowsAreNobodyAndCannotBeActivated)
{
    const xcb_window_t gone = createWindow(other.get(), { {}, {}, "gone\0Gone\0"sv });
    const xcb_window_t kept = createWindow(other.get(), { {}, {}, "kept\0Kept\0"sv });
    xcb_destroy_window(other.get(), gone);
    sync(other.get());
    ASSERT_TRUE(becomesFrontmost(kept));

    workspace.activate({ gone, QStringLiteral("Gone") });
    EXPECT_FALSE(hasQueuedErrors(own.get()));
    EXPECT_EQ(workspace.frontmostApp()->windowId, kept);

    // A window that vanishes between reading the property and reading its
    // properties; then no active window at all.
    setActiveWindow(other.get(), gone);
    EXPECT_EQ(workspace.frontmostApp(), std::nullopt);
    setActiveWindow(other.get(), XCB_WINDOW_NONE);
    EXPECT_EQ(workspace.frontmostApp(), std::nullopt);
    EXPECT_FALSE(hasQueuedErrors(own.get()));
}

TEST_F(X11WorkspaceNoWmTest, FollowsTheInputFocusToTheClientWindow)
{
    // A frame without properties around a client, focus on a child inside.
    const xcb_window_t frame = createWindow(other.get(), {});
    const xcb_window_t client = createWindow(other.get(), { {}, {}, "term\0Term\0"sv }, frame);
    const xcb_window_t inner = createWindow(other.get(), {}, client);
    ASSERT_TRUE(setFocus(other.get(), inner));
    EXPECT_EQ(workspace.frontmostApp(), (RunningApp { client, QStringLiteral("Term") }));

    const xcb_window_t plain = createWindow(other.get(), { {}, "org.example.Plain.desktop", {} });
    ASSERT_TRUE(setFocus(other.get(), plain));
    EXPECT_EQ(workspace.frontmostApp(), (RunningApp { plain, QStringLiteral("org.example.Plain") }));

    for (const xcb_window_t nobody : { xcb_window_t(XCB_INPUT_FOCUS_POINTER_ROOT), xcb_window_t(XCB_WINDOW_NONE) }) {
        ASSERT_TRUE(setFocus(other.get(), nobody));
        EXPECT_EQ(workspace.frontmostApp(), std::nullopt);
    }
}

TEST_F(X11WorkspaceNoWmTest, ActivateRaisesAndFocusesTheWindow)
{
    const xcb_window_t lower = createWindow(other.get(), { {}, {}, "lower\0Lower\0"sv });
    const xcb_window_t upper = createWindow(other.get(), { {}, {}, "upper\0Upper\0"sv });
    ASSERT_TRUE(setFocus(other.get(), upper));

    workspace.activate({ lower, std::nullopt });
    EXPECT_EQ(focus(other.get()), lower);
    // The root's children come bottom to top.
    xcb_query_tree_reply_t *tree
        = xcb_query_tree_reply(other.get(), xcb_query_tree(other.get(), root(other.get())), nullptr);
    ASSERT_NE(tree, nullptr);
    const std::span stack(xcb_query_tree_children(tree), size_t(xcb_query_tree_children_length(tree)));
    EXPECT_GT(std::ranges::find(stack, lower), std::ranges::find(stack, upper));
    std::free(tree);

    xcb_destroy_window(other.get(), upper);
    sync(other.get());
    workspace.activate({ upper, std::nullopt });
    EXPECT_EQ(focus(other.get()), lower);
    EXPECT_FALSE(hasQueuedErrors(own.get()));
}

} // namespace
