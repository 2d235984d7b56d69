// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "AppSettings.h"
#include "ClipboardStore.h"
#include "ClipboardWatcher.h"
#include "MemoryPasteboard.h"
#include "MemoryWorkspace.h"
#include "TestFolder.h"

#include <QBuffer>
#include <QCoreApplication>
#include <QDir>
#include <QImage>

#include <memory>
#include <utility>

using namespace Qt::StringLiterals;

// A history, an in-memory clipboard and desktop, and a watcher on them once
// startWatcher() is called.
class PasteboardFixture : public TestFolder {
protected:
    PasteboardFixture()
        : settings(path(u"defaults.json"_s))
        , store(settings, path(u"Zettly"_s))
    {
    }

    void startWatcher()
    {
        watcher = std::make_unique<ClipboardWatcher>(pasteboard, workspace, store, settings);
        watcher->start();
    }

    // Runs the tick queued by the clipboard's change notice.
    static void settle() { QCoreApplication::processEvents(); }

    // Another program's copy offering these types, in this order, with these bytes.
    using Offered = QList<std::pair<QString, QByteArray>>;
    static ClipboardSnapshot offer(const Offered &types)
    {
        ClipboardSnapshot snapshot;
        for (const auto &[type, bytes] : types) {
            snapshot.types.append(type);
            snapshot.data.insert(type, bytes);
        }
        return snapshot;
    }

    // Two colours, so that a conversion that loses pixels shows.
    static QImage picture(int width, int height, Qt::GlobalColor colour = Qt::red)
    {
        QImage image(width, height, QImage::Format_ARGB32);
        image.fill(colour);
        image.setPixel(0, 0, qRgba(0, 0, 255, 128));
        return image;
    }

    static QByteArray encoded(const QImage &image, const char *format)
    {
        QByteArray bytes;
        QBuffer buffer(&bytes);
        buffer.open(QIODevice::WriteOnly);
        image.save(&buffer, format);
        return bytes;
    }

    QStringList imageFiles() const { return QDir(store.imagesDirPath()).entryList(QDir::Files); }

    QStringList previews() const { return ::previews(store.items()); }

    AppSettings settings;
    ClipboardStore store;
    MemoryPasteboard pasteboard;
    MemoryWorkspace workspace;
    std::unique_ptr<ClipboardWatcher> watcher;
};
