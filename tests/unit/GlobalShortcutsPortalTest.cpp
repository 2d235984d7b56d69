// SPDX-License-Identifier: GPL-3.0-or-later
#include "GlobalShortcutsPortal.h"
#include "FakeShortcutsPortal.h"

#include <QSignalSpy>
#include <QTest>

#include <gtest/gtest.h>

// Run on a private session bus of their own, which activates nothing.

namespace {

QStringList messages;

bool reaches(GlobalShortcutsPortal &portal, GlobalShortcutsPortal::State state)
{
    return QTest::qWaitFor([&] { return portal.state() == state; }, 10000);
}

} // namespace

// On the bus without a portal, and with no bus at all (a bare compositor).
TEST(GlobalShortcutsPortalTest, WithoutThePortalReportsAbsentQuietly)
{
    messages.clear();
    const QtMessageHandler previous = qInstallMessageHandler(
        [](QtMsgType, const QMessageLogContext &, const QString &text) { messages.append(text); });
    for (const QDBusConnection &bus : { QDBusConnection::sessionBus(), QDBusConnection(QStringLiteral("none")) }) {
        GlobalShortcutsPortal portal(bus);
        portal.start(QStringLiteral("CTRL+LOGO+v"));
        EXPECT_TRUE(reaches(portal, GlobalShortcutsPortal::State::Absent)) << qPrintable(bus.name());
    }
    qInstallMessageHandler(previous);
    EXPECT_EQ(messages, QStringList());
}

TEST(GlobalShortcutsPortalTest, BindsTheShortcutAndForwardsItsActivation)
{
    FakeShortcutsPortal fake;
    GlobalShortcutsPortal portal;
    QSignalSpy activations(&portal, &GlobalShortcutsPortal::activated);
    portal.start(QStringLiteral("CTRL+LOGO+v"));
    ASSERT_TRUE(reaches(portal, GlobalShortcutsPortal::State::Bound));
    ASSERT_EQ(fake.bindings.size(), 1);
    const FakeShortcutsPortal::Binding binding = fake.bindings.at(0);
    EXPECT_EQ(binding.session, QString::fromLatin1(FakeShortcutsPortal::sessionPath));
    EXPECT_EQ(binding.id, QStringLiteral("toggle-picker"));
    EXPECT_EQ(binding.properties.value(QStringLiteral("preferred_trigger")), QStringLiteral("CTRL+LOGO+v"));
    EXPECT_EQ(binding.properties.value(QStringLiteral("description")), QStringLiteral("Ouvrir Zettly"));

    // Another id, then another session's, then ours: only ours counts.
    fake.activate(binding.session, QStringLiteral("other"));
    fake.activate(QStringLiteral("/org/freedesktop/portal/desktop/session/test/s2"), binding.id);
    fake.activate(binding.session, binding.id);
    ASSERT_TRUE(activations.wait(10000));
    EXPECT_EQ(activations.size(), 1);

    // A new shortcut in the settings binds again on the same session, and so
    // does one that comes while the desktop is still asking.
    QObject::connect(
        &portal, &GlobalShortcutsPortal::stateChanged, &portal,
        [&portal](GlobalShortcutsPortal::State) { portal.setPreferredTrigger(QStringLiteral("ALT+d")); },
        Qt::SingleShotConnection);
    portal.setPreferredTrigger(QStringLiteral("ALT+c"));
    ASSERT_TRUE(QTest::qWaitFor(
        [&] { return fake.bindings.size() == 3 && portal.state() == GlobalShortcutsPortal::State::Bound; }, 10000));
    for (int i : { 1, 2 }) {
        EXPECT_EQ(fake.bindings.at(i).properties.value(QStringLiteral("preferred_trigger")),
            i == 1 ? QStringLiteral("ALT+c") : QStringLiteral("ALT+d"));
        EXPECT_EQ(fake.bindings.at(i).session, binding.session);
    }
}
