// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArrayView>
#include <QString>

#include <cstddef>

// A file mapped read-only and whole, followed by zeroed bytes that a parser
// may read past its end. Mapping costs neither a copy nor a page fault per
// page of a file that may be hundreds of MB, as reading it into memory does.
// Only for files replaced by rename, never truncated in place: a mapped file
// that shrinks under the mapping faults on access.
class MappedFile {
public:
    MappedFile(const QString &path, qsizetype padding);
    ~MappedFile();

    MappedFile(const MappedFile &) = delete;
    MappedFile &operator=(const MappedFile &) = delete;

    // False when the file could not be opened or mapped (errno says why).
    bool isValid() const { return m_area != nullptr; }
    // The file's bytes; at least the padding's worth of zeroes follows them.
    QByteArrayView bytes() const { return { static_cast<const char *>(m_area), m_size }; }

private:
    void *m_area = nullptr;
    std::size_t m_areaLength = 0;
    qsizetype m_size = 0;
};
