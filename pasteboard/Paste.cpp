// SPDX-License-Identifier: GPL-3.0-or-later
#include "Paste.h"

#include "ClipboardStore.h"
#include "ClipboardWatcher.h"
#include "Pasteboard.h"
#include "PasteboardTypes.h"

#include <QFile>
#include <QMimeData>
#include <QUrl>

#include <memory>

namespace {

std::unique_ptr<QMimeData> textData(const QString &text)
{
    auto data = std::make_unique<QMimeData>();
    data->setText(text);
    return data;
}

std::unique_ptr<QMimeData> imageData(const ClipItem &item, const ClipboardStore &store)
{
    QFile file(store.imagePath(item));
    if (!item.imageRelPath || !file.open(QIODevice::ReadOnly))
        return nullptr;
    auto data = std::make_unique<QMimeData>();
    data->setData(PasteboardTypes::png, file.readAll());
    return data;
}

std::unique_ptr<QMimeData> filesData(const ClipItem &item)
{
    if (!item.filePaths || item.filePaths->isEmpty())
        return nullptr;
    QList<QUrl> urls;
    QByteArray copied = "copy";
    for (const QString &path : *item.filePaths) {
        const QUrl url = QUrl::fromLocalFile(path);
        urls.append(url);
        copied += '\n' + url.toEncoded();
    }
    auto data = std::make_unique<QMimeData>();
    data->setUrls(urls);
    // File managers paste files only from this one.
    data->setData(PasteboardTypes::copiedFiles, copied);
    return data;
}

std::unique_ptr<QMimeData> dataFor(const ClipItem &item, const ClipboardStore &store)
{
    switch (item.kind) {
    case ClipKind::Text:
    case ClipKind::Url:
        return textData(item.fullText.value_or(item.preview));
    case ClipKind::Color:
        return textData(item.preview);
    case ClipKind::Image:
        return imageData(item, store);
    case ClipKind::File:
        return filesData(item);
    }
    return nullptr;
}

} // namespace

void Paste::putOnPasteboard(const ClipItem &item, const ClipboardStore &store, ClipboardWatcher &watcher)
{
    Pasteboard &pasteboard = watcher.pasteboard();
    pasteboard.clearContents();
    if (auto data = dataFor(item, store))
        pasteboard.write(data.release());
    // Also after writing nothing: the clearing alone is a change.
    watcher.setOwnWriteCount(pasteboard.changeCount());
}
