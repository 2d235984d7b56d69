// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

struct ClipItem;
class ClipboardStore;
class ClipboardWatcher;

// Puts history entries back on the clipboard.
namespace Paste {

// Replaces the clipboard's contents with the entry, in the form other
// programs paste it from, and marks the change as our own so that the
// watcher does not record it again. An image whose file is gone, or a file
// entry without paths, leaves the clipboard empty.
void putOnPasteboard(const ClipItem &item, const ClipboardStore &store, ClipboardWatcher &watcher);

} // namespace Paste
