// SPDX-License-Identifier: GPL-3.0-or-later
#include "GlobalHotKey.h"
#include "MemoryKeyGrabber.h"

#include <QCoreApplication>

#include <gtest/gtest.h>

#include <memory>

namespace {

const MemoryKeyGrabber::Combination controlCommandV { 9, 4352 };
const MemoryKeyGrabber::Combination optionCommandSpace { 49, 2304 };

class GlobalHotKeyTest : public ::testing::Test {
protected:
    void registerHotKey(MemoryKeyGrabber::Combination combination, int &count)
    {
        hotKey.registerHotKey(combination.first, combination.second, [&count] { ++count; });
    }
    // Presses, then lets the deferred callback run.
    void press(MemoryKeyGrabber::Combination combination)
    {
        grabber.press(combination);
        QCoreApplication::processEvents();
    }

    MemoryKeyGrabber grabber;
    GlobalHotKey hotKey { grabber };
    int first = 0;
    int second = 0;
};

TEST_F(GlobalHotKeyTest, EachRegistrationReplacesTheLastEvenWhenRefused)
{
    registerHotKey(controlCommandV, first);
    registerHotKey(optionCommandSpace, second);
    press(controlCommandV);
    press(optionCommandSpace);
    EXPECT_EQ(first, 0);
    EXPECT_EQ(second, 1);

    registerHotKey(optionCommandSpace, first);
    EXPECT_TRUE(hotKey.isRegistered());
    press(optionCommandSpace);
    EXPECT_EQ(first, 1);
    EXPECT_EQ(second, 1);

    grabber.takeByAnotherProgram(controlCommandV);
    registerHotKey(controlCommandV, second);
    EXPECT_FALSE(hotKey.isRegistered());
    press(controlCommandV);
    press(optionCommandSpace);
    EXPECT_EQ(first + second, 2);

    // A grab lost to a keymap change is no shortcut any more.
    registerHotKey(optionCommandSpace, first);
    ASSERT_TRUE(hotKey.isRegistered());
    grabber.loseGrab();
    EXPECT_FALSE(hotKey.isRegistered());
}

TEST_F(GlobalHotKeyTest, CallbackRunsOneTurnLaterAndMayRegisterAgain)
{
    // Registering from the callback drops the closure being run: what it
    // captured must live until it returns.
    auto captured = std::make_shared<int>();
    const std::weak_ptr<int> alive = captured;
    bool aliveWhileRunning = false;
    hotKey.registerHotKey(controlCommandV.first, controlCommandV.second, [&, captured] {
        registerHotKey(optionCommandSpace, second);
        aliveWhileRunning = !alive.expired();
    });
    captured.reset();
    grabber.press(controlCommandV);
    EXPECT_EQ(grabber.grabbed(), controlCommandV);
    QCoreApplication::processEvents();
    EXPECT_TRUE(aliveWhileRunning);
    EXPECT_EQ(grabber.grabbed(), optionCommandSpace);

    // Without a callback the keys stay taken and a press runs nothing, not
    // the callback it replaced.
    hotKey.registerHotKey(controlCommandV.first, controlCommandV.second, nullptr);
    EXPECT_EQ(grabber.grabbed(), controlCommandV);
    press(controlCommandV);
    EXPECT_EQ(second, 0);
}

TEST_F(GlobalHotKeyTest, PressesRunTheLastRegisteredLivingInstance)
{
    MemoryKeyGrabber otherGrabber;
    auto other = std::make_unique<GlobalHotKey>(otherGrabber);
    registerHotKey(controlCommandV, first);
    other->registerHotKey(optionCommandSpace.first, optionCommandSpace.second, [this] { ++second; });
    press(controlCommandV);
    EXPECT_EQ(first, 0);
    EXPECT_EQ(second, 1);

    // Gone, it neither answers nor keeps its combination.
    other.reset();
    EXPECT_EQ(GlobalHotKey::shared(), nullptr);
    EXPECT_EQ(otherGrabber.grabbed(), std::nullopt);
    press(controlCommandV);
    EXPECT_EQ(first + second, 1);
}

} // namespace
