// SPDX-License-Identifier: GPL-3.0-or-later
#include "ClipRowContent.h"

#include <QFileInfo>
#include <QHash>
#include <QMimeDatabase>
#include <QSet>

namespace {

using Symbol = ClipRowContent::Symbol;

QColor rgb(double red, double green, double blue)
{
    return QColor::fromRgbF(float(red), float(green), float(blue));
}

// Named colours in the desktop's usual shades.
const QColor blue(0x35, 0x84, 0xe4);
const QColor pink(0xe0, 0x3a, 0x8c);
const QColor orange(0xff, 0x78, 0x00);
const QColor gray(0x9a, 0x99, 0x96);
// Invalid: the theme's secondary text colour, resolved when drawn.
const QColor secondary;

// Freedesktop names of the symbols, all present in Adwaita.
const QString documentIcon = QStringLiteral("x-office-document-symbolic");
const QString plainTextIcon = QStringLiteral("text-x-generic-symbolic");
const QString spreadsheetIcon = QStringLiteral("x-office-spreadsheet-symbolic");
const QString presentationIcon = QStringLiteral("x-office-presentation-symbolic");
const QString packageIcon = QStringLiteral("package-x-generic-symbolic");
const QString discIcon = QStringLiteral("media-optical-symbolic");
const QString audioIcon = QStringLiteral("audio-x-generic-symbolic");
const QString videoIcon = QStringLiteral("video-x-generic-symbolic");
const QString imageIcon = QStringLiteral("image-x-generic-symbolic");
const QString markupIcon = QStringLiteral("applications-engineering-symbolic");
const QString codeIcon = QStringLiteral("text-editor-symbolic");
const QString terminalIcon = QStringLiteral("utilities-terminal-symbolic");
const QString applicationIcon = QStringLiteral("application-x-executable-symbolic");

const Symbol otherFile { plainTextIcon, rgb(0.4, 0.55, 0.45) };

// Lower-case extension to the badge of a file whose path is gone.
const QHash<QString, Symbol> &fileTypeIcons()
{
    static const QHash<QString, Symbol> table = [] {
        QHash<QString, Symbol> icons;
        const auto add = [&](std::initializer_list<const char *> extensions, const QString &icon, const QColor &tint) {
            for (const char *extension : extensions)
                icons.insert(QString::fromLatin1(extension), { icon, tint });
        };
        add({ "pdf" }, documentIcon, rgb(0.85, 0.18, 0.18));
        add({ "doc", "docx" }, documentIcon, rgb(0.15, 0.42, 0.85));
        add({ "rtf" }, documentIcon, rgb(0.4, 0.45, 0.7));
        add({ "txt" }, plainTextIcon, secondary);
        add({ "md" }, plainTextIcon, rgb(0.3, 0.3, 0.3));
        add({ "xls", "xlsx", "numbers" }, spreadsheetIcon, rgb(0.1, 0.55, 0.3));
        add({ "csv", "tsv" }, spreadsheetIcon, rgb(0.15, 0.6, 0.45));
        add({ "ppt", "pptx" }, presentationIcon, rgb(0.85, 0.4, 0.1));
        add({ "key" }, presentationIcon, rgb(0.55, 0.3, 0.85));
        add({ "zip", "rar", "7z", "tar", "gz", "bz2" }, packageIcon, rgb(0.55, 0.4, 0.2));
        add({ "dmg", "iso" }, discIcon, gray);
        add({ "mp3", "wav", "flac", "m4a", "aac", "ogg" }, audioIcon, rgb(0.85, 0.3, 0.55));
        add({ "mp4", "mov", "mkv", "avi", "webm", "m4v" }, videoIcon, rgb(0.55, 0.2, 0.75));
        add({ "png", "jpg", "jpeg", "heic", "webp", "tiff", "bmp" }, imageIcon, pink);
        add({ "gif" }, imageIcon, rgb(0.95, 0.55, 0.2));
        add({ "svg" }, imageIcon, rgb(0.95, 0.65, 0.1));
        add({ "html" }, markupIcon, rgb(0.95, 0.4, 0.15));
        add({ "css" }, markupIcon, rgb(0.15, 0.45, 0.85));
        add({ "js" }, codeIcon, rgb(0.95, 0.85, 0.1));
        add({ "ts", "tsx", "jsx" }, codeIcon, rgb(0.2, 0.5, 0.85));
        add({ "json", "yaml", "yml" }, codeIcon, rgb(0.4, 0.4, 0.4));
        add({ "xml" }, codeIcon, rgb(0.55, 0.3, 0.2));
        add({ "py" }, codeIcon, rgb(0.25, 0.55, 0.85));
        add({ "swift" }, codeIcon, rgb(0.95, 0.45, 0.2));
        add({ "rb" }, codeIcon, rgb(0.85, 0.2, 0.2));
        add({ "go" }, codeIcon, rgb(0.2, 0.65, 0.85));
        add({ "rs" }, codeIcon, rgb(0.85, 0.45, 0.2));
        add({ "sh", "bash", "zsh" }, terminalIcon, rgb(0.2, 0.2, 0.2));
        add({ "app" }, applicationIcon, rgb(0.2, 0.45, 0.85));
        add({ "pkg" }, packageIcon, rgb(0.55, 0.4, 0.2));
        return icons;
    }();
    return table;
}

QString extensionOf(const QString &path)
{
    const QString name = path.mid(path.lastIndexOf(QLatin1Char('/')) + 1);
    const qsizetype dot = name.lastIndexOf(QLatin1Char('.'));
    return dot < 0 ? QString() : name.mid(dot + 1).toLower();
}

} // namespace

namespace ClipRowContent {

std::optional<QString> fileExt(const ClipItem &item)
{
    if (item.kind != ClipKind::File || !item.filePaths || item.filePaths->isEmpty())
        return std::nullopt;
    QString extension = extensionOf(item.filePaths->first());
    if (extension.isEmpty())
        return std::nullopt;
    return extension;
}

Symbol symbol(const ClipItem &item)
{
    switch (item.kind) {
    case ClipKind::Text:
        return { QStringLiteral("format-justify-left-symbolic"), secondary };
    case ClipKind::Url:
        return { QStringLiteral("insert-link-symbolic"), blue };
    case ClipKind::Image:
        return { imageIcon, pink };
    case ClipKind::Color:
        return { QStringLiteral("applications-graphics-symbolic"), orange };
    case ClipKind::File:
        break;
    }
    const std::optional<QString> extension = fileExt(item);
    return extension ? fileTypeIcons().value(*extension, otherFile) : otherFile;
}

QString subtitle(const ClipItem &item)
{
    if (item.kind != ClipKind::File || !item.filePaths)
        return {};
    const QStringList &paths = *item.filePaths;
    if (paths.size() >= 2) {
        QSet<QString> extensions;
        for (const QString &path : paths)
            extensions.insert(extensionOf(path));
        const QString count = QString::number(paths.size());
        if (extensions.size() == 1 && !extensions.cbegin()->isEmpty())
            return count + QStringLiteral(" fichiers · .") + *extensions.cbegin();
        return count + QStringLiteral(" fichiers");
    }
    const std::optional<QString> extension = fileExt(item);
    return extension ? QStringLiteral(".") + extension->toUpper() : QString();
}

std::optional<QString> existingFirstPath(const ClipItem &item)
{
    if (item.kind != ClipKind::File || !item.filePaths || item.filePaths->isEmpty())
        return std::nullopt;
    const QString &path = item.filePaths->first();
    if (!QFileInfo::exists(path))
        return std::nullopt;
    return path;
}

QStringList fileIconNames(const QString &path)
{
    if (QFileInfo(path).isDir())
        return { QStringLiteral("folder") };
    static const QMimeDatabase database;
    const QMimeType type = database.mimeTypeForFile(path);
    return { type.iconName(), type.genericIconName(), QStringLiteral("text-x-generic") };
}

QString previewLine(const ClipItem &item)
{
    QString line = item.preview;
    for (QChar &character : line) {
        if (character == QLatin1Char('\n') || character == QLatin1Char('\r') || character == QLatin1Char('\t'))
            character = QLatin1Char(' ');
    }
    return line;
}

QString spokenText(const ClipItem &item, const QString &age)
{
    QStringList parts { previewLine(item) };
    if (const QString extra = subtitle(item); !extra.isEmpty())
        parts.append(extra);
    if (!age.isEmpty())
        parts.append(age);
    return parts.join(QStringLiteral(", "));
}

} // namespace ClipRowContent
