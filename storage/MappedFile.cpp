// SPDX-License-Identifier: GPL-3.0-or-later
#include "MappedFile.h"

#include <QFile>

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

MappedFile::MappedFile(const QString &path, qsizetype padding)
{
    const int fd = ::open(QFile::encodeName(path).constData(), O_RDONLY | O_CLOEXEC);
    if (fd < 0)
        return;
    struct stat status { };
    if (::fstat(fd, &status) != 0 || !S_ISREG(status.st_mode)) {
        ::close(fd);
        return;
    }
    const auto pageSize = std::size_t(::sysconf(_SC_PAGESIZE));
    const auto size = std::size_t(status.st_size);
    const std::size_t length = (size + std::size_t(padding) + pageSize - 1) / pageSize * pageSize;
    // Anonymous zero pages first, then the file over their start: the
    // padding reads as zeroes even when the file ends on a page boundary.
    void *area = ::mmap(nullptr, length, PROT_READ, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (area == MAP_FAILED) {
        ::close(fd);
        return;
    }
    if (size > 0
        && ::mmap(area, size, PROT_READ, MAP_PRIVATE | MAP_FIXED | MAP_POPULATE, fd, 0) == MAP_FAILED) {
        ::munmap(area, length);
        ::close(fd);
        return;
    }
    ::close(fd);
    m_area = area;
    m_areaLength = length;
    m_size = qsizetype(size);
}

MappedFile::~MappedFile()
{
    if (m_area)
        ::munmap(m_area, m_areaLength);
}
