// SPDX-License-Identifier: GPL-3.0-or-later
#include "KeyPositions.h"

#include <array>
#include <utility>

namespace KeyPositions {

namespace {

// Pairs of (virtual key code, evdev code) for the same physical key.
// clang-format off
constexpr std::array<std::pair<quint32, quint32>, 118> positions{{
    // Letters
    {0x00, 30}, {0x0B, 48}, {0x08, 46}, {0x02, 32}, {0x0E, 18}, {0x03, 33}, {0x05, 34},
    {0x04, 35}, {0x22, 23}, {0x26, 36}, {0x28, 37}, {0x25, 38}, {0x2E, 50}, {0x2D, 49},
    {0x1F, 24}, {0x23, 25}, {0x0C, 16}, {0x0F, 19}, {0x01, 31}, {0x11, 20}, {0x20, 22},
    {0x09, 47}, {0x0D, 17}, {0x07, 45}, {0x10, 21}, {0x06, 44},
    // Digit row
    {0x12, 2}, {0x13, 3}, {0x14, 4}, {0x15, 5}, {0x17, 6}, {0x16, 7}, {0x1A, 8},
    {0x1C, 9}, {0x19, 10}, {0x1D, 11}, {0x1B, 12}, {0x18, 13},
    // Punctuation
    {0x21, 26}, {0x1E, 27}, {0x29, 39}, {0x27, 40}, {0x32, 41}, {0x2A, 43}, {0x2B, 51},
    {0x2F, 52}, {0x2C, 53},
    // The extra key of ISO keyboards, beside the left Shift
    {0x0A, 86},
    // Editing and whitespace
    {0x24, 28}, {0x30, 15}, {0x31, 57}, {0x33, 14}, {0x35, 1}, {0x75, 111},
    {0x72, 110}, // Help sits where PC keyboards have Insert
    {0x73, 102}, {0x77, 107}, {0x74, 104}, {0x79, 109},
    // Arrows
    {0x7B, 105}, {0x7C, 106}, {0x7D, 108}, {0x7E, 103},
    // Modifiers
    {0x37, 125}, {0x36, 126}, {0x38, 42}, {0x3C, 54}, {0x39, 58}, {0x3A, 56}, {0x3D, 100},
    {0x3B, 29}, {0x3E, 97},
    // Function keys
    {0x7A, 59}, {0x78, 60}, {0x63, 61}, {0x76, 62}, {0x60, 63}, {0x61, 64}, {0x62, 65},
    {0x64, 66}, {0x65, 67}, {0x6D, 68}, {0x67, 87}, {0x6F, 88}, {0x69, 183}, {0x6B, 184},
    {0x71, 185}, {0x6A, 186}, {0x40, 187}, {0x4F, 188}, {0x50, 189}, {0x5A, 190},
    // Keypad (Clear sits where PC keyboards have Num Lock)
    {0x52, 82}, {0x53, 79}, {0x54, 80}, {0x55, 81}, {0x56, 75}, {0x57, 76}, {0x58, 77},
    {0x59, 71}, {0x5B, 72}, {0x5C, 73}, {0x41, 83}, {0x43, 55}, {0x45, 78}, {0x47, 69},
    {0x4B, 98}, {0x4C, 96}, {0x4E, 74}, {0x51, 117},
    // Sound
    {0x48, 115}, {0x49, 114}, {0x4A, 113},
    // Japanese keyboards
    {0x5D, 124}, {0x5E, 89}, {0x5F, 95}, {0x66, 123}, {0x68, 122},
}};
// clang-format on

} // namespace

std::optional<quint32> evdevCode(quint32 virtualKeyCode)
{
    for (const auto &[vk, evdev] : positions) {
        if (vk == virtualKeyCode)
            return evdev;
    }
    return std::nullopt;
}

std::optional<quint32> virtualKeyCode(quint32 evdevCode)
{
    for (const auto &[vk, evdev] : positions) {
        if (evdev == evdevCode)
            return vk;
    }
    return std::nullopt;
}

} // namespace KeyPositions
