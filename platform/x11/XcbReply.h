// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdlib>
#include <memory>

// An xcb reply or error, which the caller owns and frees with free().
struct XcbFree {
    void operator()(void *pointer) const { std::free(pointer); }
};
template<typename T> using XcbReply = std::unique_ptr<T, XcbFree>;
