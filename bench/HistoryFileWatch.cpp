// SPDX-License-Identifier: GPL-3.0-or-later
#include "HistoryFileWatch.h"

#include "JsonWriter.h"

#include <QFile>

#include <poll.h>
#include <sys/inotify.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstring>

namespace {

const char historyFileName[] = "clips.json";

} // namespace

HistoryFileWatch::HistoryFileWatch(const QString &dirPath)
    : m_filePath(dirPath + QStringLiteral("/clips.json"))
    , m_fd(inotify_init1(IN_NONBLOCK | IN_CLOEXEC))
{
    // The history is replaced by a rename, which IN_MOVED_TO reports;
    // IN_CLOSE_WRITE covers a file written in place.
    if (m_fd >= 0)
        m_watch = inotify_add_watch(m_fd, QFile::encodeName(dirPath).constData(), IN_MOVED_TO | IN_CLOSE_WRITE);
}

HistoryFileWatch::~HistoryFileWatch()
{
    if (m_fd >= 0)
        close(m_fd);
}

void HistoryFileWatch::drain()
{
    alignas(inotify_event) std::array<char, 4096> buffer;
    while (::read(m_fd, buffer.data(), buffer.size()) > 0) { }
}

std::optional<HistoryFileWatch::Clock::time_point> HistoryFileWatch::waitForNewest(
    const QString &text, std::chrono::milliseconds timeout)
{
    const Clock::time_point deadline = Clock::now() + timeout;
    alignas(inotify_event) std::array<char, 4096> buffer;
    for (;;) {
        const auto left = std::chrono::ceil<std::chrono::milliseconds>(deadline - Clock::now());
        if (left.count() <= 0)
            return std::nullopt;
        pollfd fd = { m_fd, POLLIN, 0 };
        const int ready = poll(&fd, 1, int(left.count()));
        if (ready < 0 && errno != EINTR)
            return std::nullopt;
        if (ready <= 0)
            continue;
        // Taken before the file is read: decoding a large history takes
        // milliseconds of its own.
        const Clock::time_point noticed = Clock::now();
        const ssize_t length = ::read(m_fd, buffer.data(), buffer.size());
        bool touched = false;
        for (ssize_t offset = 0; offset < length;) {
            const auto *event = reinterpret_cast<const inotify_event *>(buffer.data() + offset);
            if (event->len > 0 && std::strcmp(event->name, historyFileName) == 0)
                touched = true;
            offset += ssize_t(sizeof(inotify_event) + event->len);
        }
        if (touched && holdsNewest(text))
            return noticed;
    }
}

bool HistoryFileWatch::holdsNewest(const QString &text) const
{
    // Only the head of the file is read: the newest entry comes first, and
    // decoding a history of hundreds of MB on each copy would make the
    // measurement slower than what it measures. Quotes inside strings are
    // escaped, so the first fullText member is the newest entry's.
    QByteArray expected;
    JsonWriter::appendString(expected, text);
    QFile file(m_filePath);
    if (!file.open(QIODevice::ReadOnly))
        return false;
    const QByteArray head = file.read(expected.size() + 64 * 1024);
    static const QByteArray member = QByteArrayLiteral(",\"fullText\":");
    const qsizetype at = head.indexOf(member);
    return at >= 0 && QByteArrayView(head).sliced(at + member.size()).startsWith(expected);
}
