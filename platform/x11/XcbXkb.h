// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// <xcb/xkb.h> for C++: it names a struct member "explicit", a keyword here,
// so the name is changed while the header is read. For .cpp files only, like
// every xcb header.
#include <xcb/xcb.h>

#if defined(__clang__)
#pragma clang diagnostic push
#pragma clang diagnostic ignored "-Wkeyword-macro"
#endif
#define explicit explicit_
#include <xcb/xkb.h>
#undef explicit
#if defined(__clang__)
#pragma clang diagnostic pop
#endif
