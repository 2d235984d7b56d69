// SPDX-License-Identifier: GPL-3.0-or-later
#include "ClipboardStore.h"

#include "AppSettings.h"
#include "CanonicalText.h"

#include <QHash>
#include <QSet>

#include <algorithm>

namespace {

// A change of more steps than this is announced as a reset: a view reloads
// faster than it follows hundreds of single rows.
constexpr qsizetype maxSteps = 16;

QList<QUuid> idsOf(const QList<ClipItem> &items)
{
    QList<QUuid> ids;
    ids.reserve(items.size());
    for (const ClipItem &item : items)
        ids.append(item.id);
    return ids;
}

// The single move that turns from into to, if there is one.
std::optional<std::pair<qsizetype, qsizetype>> singleMove(const QList<QUuid> &from, const QList<QUuid> &to)
{
    qsizetype first = 0;
    while (first < from.size() && from[first] == to[first])
        ++first;
    if (first == from.size())
        return std::pair<qsizetype, qsizetype>(-1, -1);
    qsizetype last = from.size() - 1;
    while (from[last] == to[last])
        --last;
    const auto same
        = [](const QList<QUuid> &a, qsizetype aFrom, const QList<QUuid> &b, qsizetype bFrom, qsizetype count) {
              return std::equal(a.begin() + aFrom, a.begin() + aFrom + count, b.begin() + bFrom);
          };
    const qsizetype span = last - first;
    if (from[first] == to[last] && same(from, first + 1, to, first, span))
        return std::pair(first, last);
    if (from[last] == to[first] && same(from, first, to, first + 1, span))
        return std::pair(last, first);
    return std::nullopt;
}

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

// How soon a save that found the writer busy asks again.
constexpr int saveRetryMilliseconds = 20;

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
    m_saveRetry.setInterval(saveRetryMilliseconds);
    m_saveRetry.setSingleShot(true);
    connect(&m_saveRetry, &QTimer::timeout, this, [this] {
        if (m_saveWanted)
            save();
    });
}

ClipboardStore::~ClipboardStore()
{
    // The writer writes it before it ends.
    handOverWantedSave();
}

QString ClipboardStore::imagePath(const ClipItem &item) const
{
    return item.imageRelPath ? m_folder.imagePath(*item.imageRelPath) : QString();
}

std::optional<QUuid> ClipboardStore::add(const ClipItem &item)
{
    const auto newestUnpinned
        = std::find_if(m_items.cbegin(), m_items.cend(), [](const ClipItem &entry) { return !entry.pinned; });
    if (newestUnpinned != m_items.cend() && isRepeat(*newestUnpinned, item))
        return newestUnpinned->id;
    // Dropping every unpinned entry would not make room for it.
    if (pinnedSize(m_items) + storedSize(item) > historyByteBudget)
        return std::nullopt;

    ClipItem stored = item;
    stored.id = QUuid::createUuid();
    const QUuid id = stored.id;
    // A list still shared with a snapshot is rebuilt, which copies every
    // entry once; one of our own, pinned entries first as always after a
    // change, is changed where it is.
    const bool pinnedFirst
        = std::is_partitioned(m_items.cbegin(), m_items.cend(), [](const ClipItem &entry) { return entry.pinned; });
    if (m_items.isDetached() && pinnedFirst)
        addInPlace(std::move(stored));
    else
        assignItems(withinLimit(m_items, &stored));
    save();
    return id;
}

void ClipboardStore::addInPlace(ClipItem item)
{
    const qint64 limit = std::max<qint64>(1, m_settings.historyLimit());
    // Pinned entries come first; the new one goes right below them.
    const auto firstUnpinned
        = std::find_if(m_items.cbegin(), m_items.cend(), [](const ClipItem &entry) { return !entry.pinned; });
    const qsizetype row = firstUnpinned - m_items.cbegin();
    qint64 size = pinnedSize(m_items) + storedSize(item);
    qsizetype kept = 1;
    qsizetype end = row;
    while (end < m_items.size() && kept < limit && size + storedSize(m_items[end]) <= historyByteBudget) {
        size += storedSize(m_items[end]);
        ++kept;
        ++end;
    }
    Q_EMIT aboutToChange();
    Q_EMIT itemAboutToBeInserted(row);
    m_items.insert(row, std::move(item));
    Q_EMIT itemInserted(row);
    // The oldest unpinned entries that no longer fit, from the bottom.
    for (qsizetype last = m_items.size() - 1; last > end; --last) {
        Q_EMIT itemAboutToBeRemoved(last);
        m_items.removeAt(last);
        Q_EMIT itemRemoved(last);
    }
    Q_EMIT changed();
}

void ClipboardStore::enforceLimit()
{
    assignItems(withinLimit(m_items, nullptr));
}

QList<ClipItem> ClipboardStore::withinLimit(const QList<ClipItem> &items, ClipItem *newest) const
{
    const qint64 limit = std::max<qint64>(1, m_settings.historyLimit());
    QList<ClipItem> kept;
    kept.reserve(items.size() + 1);
    qint64 size = pinnedSize(items);
    for (const ClipItem &item : items) {
        if (item.pinned)
            kept.append(item);
    }
    const qsizetype pinnedCount = kept.size();
    const auto keep = [&](const ClipItem &item) {
        // Newest first: the first entry that does not fit goes, and every
        // older one with it.
        size += storedSize(item);
        return kept.size() - pinnedCount < limit && size <= historyByteBudget;
    };
    if (newest && keep(*newest))
        kept.append(std::move(*newest));
    for (const ClipItem &item : items) {
        if (item.pinned)
            continue;
        if (!keep(item))
            break;
        kept.append(item);
    }
    return kept;
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
    if (!applyInSteps(items)) {
        Q_EMIT itemsAboutToBeReset();
        m_items = std::move(items);
        Q_EMIT itemsReset();
    }
    Q_EMIT changed();
}

bool ClipboardStore::applyInSteps(const QList<ClipItem> &target)
{
    // Planned on the ids first, so that a change too large to follow is left
    // whole to the reset.
    QList<QUuid> ids = idsOf(m_items);
    const QList<QUuid> targetIds = idsOf(target);
    const QSet<QUuid> before(ids.cbegin(), ids.cend());
    const QSet<QUuid> after(targetIds.cbegin(), targetIds.cend());
    // A history file may repeat an id: rows could not be told apart.
    if (before.size() != ids.size() || after.size() != targetIds.size())
        return false;

    QList<qsizetype> removedRows;
    for (qsizetype row = ids.size() - 1; row >= 0; --row) {
        if (!after.contains(ids[row])) {
            removedRows.append(row);
            ids.removeAt(row);
        }
    }
    // Each new entry goes where it belongs if the others are in place; a
    // move below fixes what is not.
    QList<std::pair<qsizetype, qsizetype>> insertedRows;
    for (qsizetype row = 0; row < targetIds.size(); ++row) {
        if (!before.contains(targetIds[row])) {
            const qsizetype at = std::min(row, ids.size());
            ids.insert(at, targetIds[row]);
            insertedRows.append({ at, row });
        }
    }
    const std::optional<std::pair<qsizetype, qsizetype>> move = singleMove(ids, targetIds);
    if (!move || removedRows.size() + insertedRows.size() + 1 > maxSteps)
        return false;

    for (const qsizetype row : std::as_const(removedRows)) {
        Q_EMIT itemAboutToBeRemoved(row);
        m_items.removeAt(row);
        Q_EMIT itemRemoved(row);
    }
    for (const auto &[at, row] : std::as_const(insertedRows)) {
        Q_EMIT itemAboutToBeInserted(at);
        m_items.insert(at, target[row]);
        Q_EMIT itemInserted(at);
    }
    if (const auto [from, to] = *move; from >= 0) {
        Q_EMIT itemAboutToBeMoved(from, to);
        m_items.move(from, to);
        Q_EMIT itemMoved(from, to);
    }
    // Same entries in the same order now; only a pin may differ.
    QList<qsizetype> changedRows;
    for (qsizetype row = 0; row < target.size(); ++row) {
        if (m_items[row].pinned != target[row].pinned)
            changedRows.append(row);
    }
    m_items = target;
    for (const qsizetype row : std::as_const(changedRows))
        Q_EMIT itemChanged(row);
    return true;
}

void ClipboardStore::flush()
{
    handOverWantedSave();
    m_writer.flush();
}

void ClipboardStore::save()
{
    // Handed to a busy writer, the list would stay shared until it is taken,
    // and the next change would copy it here.
    m_saveWanted = true;
    if (m_writer.isBusy())
        m_saveRetry.start();
    else
        handOverWantedSave();
}

void ClipboardStore::handOverWantedSave()
{
    // A failed save keeps the change in memory and the previous file on disk.
    if (std::exchange(m_saveWanted, false))
        m_writer.save(m_items);
}
