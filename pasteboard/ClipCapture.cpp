// SPDX-License-Identifier: GPL-3.0-or-later
#include "ClipCapture.h"

#include "CaptureLimits.h"
#include "ImageDecoder.h"
#include "LargeData.h"
#include "Pasteboard.h"
#include "PasteboardTypes.h"
#include "TextPreview.h"

#include <QBuffer>
#include <QFile>
#include <QUuid>

namespace {

ClipItem makeClip(ClipKind kind, const QString &preview)
{
    ClipItem clip;
    clip.kind = kind;
    clip.preview = preview;
    return clip;
}

// The part after the last "/", ignoring a trailing one: a copied folder is
// shown by its own name, the root folder as "/" rather than an empty line.
QString lastPathComponent(QString path)
{
    while (path.size() > 1 && path.endsWith(u'/'))
        path.chop(1);
    if (path == u"/")
        return path;
    return path.mid(path.lastIndexOf(u'/') + 1);
}

QString imagePreview(QSize size)
{
    return QStringLiteral("Image %1×%2").arg(size.width()).arg(size.height());
}

} // namespace

ClipCapture::ClipCapture(const Pasteboard &pasteboard, const QString &imagesDirPath)
    : m_pasteboard(pasteboard)
    , m_imagesDirPath(imagesDirPath)
{
}

std::optional<ClipItem> ClipCapture::capture(const std::optional<QString> &sourceApp) const
{
    for (auto step :
        { &ClipCapture::files, &ClipCapture::png, &ClipCapture::tiff, &ClipCapture::link, &ClipCapture::text }) {
        if (std::optional<ClipItem> clip = (this->*step)()) {
            clip->sourceApp = sourceApp;
            return clip;
        }
    }
    return std::nullopt;
}

std::optional<ClipItem> ClipCapture::files() const
{
    const QList<QUrl> urls = m_pasteboard.urls();
    if (urls.isEmpty())
        return std::nullopt;
    QStringList paths;
    paths.reserve(urls.size());
    for (const QUrl &url : urls) {
        if (!url.isLocalFile())
            return std::nullopt;
        paths.append(url.toLocalFile());
    }
    const QString preview
        = paths.size() == 1 ? lastPathComponent(paths.first()) : QStringLiteral("%1 fichiers").arg(paths.size());
    ClipItem clip = makeClip(ClipKind::File, preview);
    clip.filePaths = std::move(paths);
    return clip;
}

std::optional<ClipItem> ClipCapture::png() const
{
    const auto bytes = m_pasteboard.data(PasteboardTypes::png);
    if (!bytes)
        return std::nullopt;
    // A header alone is no picture: a broken one gives way to the TIFF.
    const auto size = ImageDecoder::decodedSize(*bytes, "png");
    if (!size)
        return std::nullopt;
    // Stored as it came: re-encoding would cost time and could change it.
    return storeImage(*bytes, *size);
}

std::optional<ClipItem> ClipCapture::tiff() const
{
    const auto bytes = m_pasteboard.data(PasteboardTypes::tiff);
    if (!bytes)
        return std::nullopt;
    const auto image = ImageDecoder::decode(*bytes, "tiff");
    if (!image)
        return std::nullopt;
    QByteArray pngBytes;
    QBuffer buffer(&pngBytes);
    buffer.open(QIODevice::WriteOnly);
    if (!image->save(&buffer, "png") || pngBytes.isEmpty())
        return std::nullopt;
    return storeImage(pngBytes, image->size());
}

std::optional<ClipItem> ClipCapture::link() const
{
    auto string = m_pasteboard.string(PasteboardTypes::uriList);
    if (!string)
        string = m_pasteboard.string(PasteboardTypes::mozUrl);
    if (!string) {
        // Tested before decoding: a long text is seldom a link.
        const auto bytes = m_pasteboard.data(PasteboardTypes::string);
        if (!bytes || bytes->left(4).toLower() != "http" || bytes->size() > CaptureLimits::maxTextBytes)
            return std::nullopt;
        string = LargeData::fromUtf8(*bytes);
    }
    if (!string->startsWith(QStringLiteral("http"), Qt::CaseInsensitive))
        return std::nullopt;
    // QUrl accepts nearly any text; the scheme test above is what decides.
    if (!QUrl(*string).isValid())
        return std::nullopt;
    ClipItem clip = makeClip(ClipKind::Url, TextPreview::cut(*string));
    clip.fullText = std::move(*string);
    return clip;
}

std::optional<ClipItem> ClipCapture::text() const
{
    const auto bytes = m_pasteboard.data(PasteboardTypes::string);
    if (!bytes || bytes->isEmpty() || bytes->size() > CaptureLimits::maxTextBytes)
        return std::nullopt;
    ClipItem clip = makeClip(ClipKind::Text, {});
    clip.fullText = LargeData::fromUtf8(*bytes);
    clip.preview = TextPreview::cutOneLine(*clip.fullText);
    return clip;
}

ClipItem ClipCapture::storeImage(const QByteArray &pngBytes, QSize size) const
{
    const QString fileName = QUuid::createUuid().toString(QUuid::WithoutBraces).toUpper() + QStringLiteral(".png");
    QFile file(m_imagesDirPath + u'/' + fileName);
    // What people copy is theirs alone, like the history file.
    if (file.open(QIODevice::WriteOnly | QIODevice::Truncate, QFileDevice::ReadOwner | QFileDevice::WriteOwner))
        file.write(pngBytes);
    ClipItem clip = makeClip(ClipKind::Image, imagePreview(size));
    clip.imageRelPath = fileName;
    return clip;
}
