// SPDX-License-Identifier: GPL-3.0-or-later
#include "ClipboardStore.h"

#include "AppSettings.h"
#include "CanonicalText.h"

#include <algorithm>

namespace {

// Only what the user would see as the same clip: where it came from, when, and
// which file holds an image do not count.
bool isRepeat(const ClipItem &newest, const ClipItem &candidate)
{
    return newest.kind == candidate.kind && CanonicalText::equal(newest.preview, candidate.preview)
        && CanonicalText::equal(newest.fullText, candidate.fullText);
}

qint64 pinnedSize(const QList<ClipItem> &items)
{
    qint64 size = 0;
    for (const ClipItem &item : items) {
        if (item.pinned)
            size += ClipboardStore::storedSize(item);
    }
    return size;
}

} // namespace

qint64 ClipboardStore::storedSize(const ClipItem &item)
{
    qint64 size = entryOverhead + item.preview.size();
    for (const auto *text : { &item.fullText, &item.imageRelPath, &item.sourceApp })
        size += text->has_value() ? (*text)->size() : 0;
    if (item.filePaths) {
        for (const QString &path : *item.filePaths)
            size += path.size() + 3;
    }
    return size;
}

ClipboardStore::ClipboardStore(const AppSettings &settings, const QString &dirPath, QObject *parent)
    : QObject(parent)
    , m_settings(settings)
    , m_folder(dirPath)
    , m_items(m_folder.load())
    , m_writer(m_folder)
{
}

QString ClipboardStore::imagePath(const ClipItem &item) const
{
    return item.imageRelPath ? m_folder.imagePath(*item.imageRelPath) : QString();
}

void ClipboardStore::add(const ClipItem &item)
{
    const auto newestUnpinned
        = std::find_if(m_items.cbegin(), m_items.cend(), [](const ClipItem &entry) { return !entry.pinned; });
    if (newestUnpinned != m_items.cend() && isRepeat(*newestUnpinned, item))
        return;
    // Dropping every unpinned entry would not make room for it.
    if (pinnedSize(m_items) + storedSize(item) > historyByteBudget)
        return;

    ClipItem stored = item;
    stored.id = QUuid::createUuid();
    QList<ClipItem> items = m_items;
    items.prepend(std::move(stored));
    assignItems(std::move(items));
    enforceLimit();
    save();
}

void ClipboardStore::enforceLimit()
{
    const qint64 limit = std::max<qint64>(1, m_settings.historyLimit());
    QList<ClipItem> pinned;
    QList<ClipItem> kept;
    qint64 size = pinnedSize(m_items);
    bool full = false;
    for (const ClipItem &item : std::as_const(m_items)) {
        if (item.pinned) {
            pinned.append(item);
        } else if (!full && kept.size() < limit) {
            // Newest first: the first entry that does not fit goes, and every
            // older one with it.
            size += storedSize(item);
            full = size > historyByteBudget;
            if (!full)
                kept.append(item);
        }
    }
    assignItems(pinned + kept);
}

void ClipboardStore::togglePin(const QUuid &id)
{
    const auto found
        = std::find_if(m_items.cbegin(), m_items.cend(), [&](const ClipItem &entry) { return entry.id == id; });
    if (found == m_items.cend())
        return;

    QList<ClipItem> items = m_items;
    ClipItem &toggled = items[found - m_items.cbegin()];
    toggled.pinned = !toggled.pinned;
    std::stable_sort(items.begin(), items.end(), [](const ClipItem &a, const ClipItem &b) {
        if (a.pinned != b.pinned)
            return a.pinned;
        return a.createdAt > b.createdAt;
    });
    assignItems(std::move(items));
    save();
}

void ClipboardStore::remove(const QUuid &id)
{
    const auto found
        = std::find_if(m_items.cbegin(), m_items.cend(), [&](const ClipItem &entry) { return entry.id == id; });
    if (found != m_items.cend() && found->imageRelPath)
        m_folder.deleteImage(*found->imageRelPath);

    QList<ClipItem> items = m_items;
    items.removeIf([&](const ClipItem &entry) { return entry.id == id; });
    assignItems(std::move(items));
    save();
}

void ClipboardStore::clearUnpinned()
{
    for (const ClipItem &item : std::as_const(m_items)) {
        if (!item.pinned && item.imageRelPath)
            m_folder.deleteImage(*item.imageRelPath);
    }
    QList<ClipItem> items = m_items;
    items.removeIf([](const ClipItem &entry) { return !entry.pinned; });
    assignItems(std::move(items));
    save();
}

void ClipboardStore::assignItems(QList<ClipItem> items)
{
    Q_EMIT aboutToChange();
    m_items = std::move(items);
    Q_EMIT changed();
}

void ClipboardStore::flush()
{
    m_writer.flush();
}

void ClipboardStore::save()
{
    // A failed save keeps the change in memory and the previous file on disk.
    m_writer.save(m_items);
}
