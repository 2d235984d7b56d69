// SPDX-License-Identifier: GPL-3.0-or-later
#include "ClipboardStore.h"

#include "AppSettings.h"
#include "CanonicalText.h"

#include <algorithm>

namespace {

bool sameOptionalText(const std::optional<QString> &a, const std::optional<QString> &b)
{
    if (a.has_value() != b.has_value())
        return false;
    return !a || CanonicalText::equal(*a, *b);
}

// Only what the user would see as the same clip: where it came from, when, and
// which file holds an image do not count.
bool isRepeat(const ClipItem &newest, const ClipItem &candidate)
{
    return newest.kind == candidate.kind && CanonicalText::equal(newest.preview, candidate.preview)
        && sameOptionalText(newest.fullText, candidate.fullText);
}

} // namespace

ClipboardStore::ClipboardStore(const AppSettings &settings, const QString &dirPath, QObject *parent)
    : QObject(parent)
    , m_settings(settings)
    , m_folder(dirPath)
    , m_items(m_folder.load())
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
    for (const ClipItem &item : std::as_const(m_items)) {
        if (item.pinned)
            pinned.append(item);
        else if (kept.size() < limit)
            kept.append(item);
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

void ClipboardStore::save() const
{
    // A failed save keeps the change in memory and the previous file on disk.
    m_folder.save(m_items);
}
