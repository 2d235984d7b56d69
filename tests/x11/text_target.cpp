// SPDX-License-Identifier: GPL-3.0-or-later
// A small text window of another process, to paste into. Reports on stdout,
// one line each: "focus 1" or "focus 0" when it gains or loses the keyboard
// focus, and "text <ms> <base64>" when its text changes, <ms> being the
// monotonic clock (CLOCK_MONOTONIC) in milliseconds and <base64> the whole text in UTF-8.
#include <QApplication>
#include <QPlainTextEdit>
#include <QWindow>

#include <chrono>
#include <cstdio>

namespace {

void report(const QByteArray &line)
{
    std::fwrite(line.constData(), 1, size_t(line.size()), stdout);
    std::fputc('\n', stdout);
    std::fflush(stdout);
}

} // namespace

int main(int argc, char *argv[])
{
    QApplication app(argc, argv);
    QPlainTextEdit editor;
    editor.setWindowTitle(QStringLiteral("text target"));
    editor.setGeometry(40, 40, 500, 300);
    QObject::connect(&editor, &QPlainTextEdit::textChanged, &editor, [&] {
        report("text "
            + QByteArray::number(qint64(std::chrono::duration_cast<std::chrono::milliseconds>(
                std::chrono::steady_clock::now().time_since_epoch())
                                            .count()))
            + ' ' + editor.toPlainText().toUtf8().toBase64());
    });
    QObject::connect(&app, &QGuiApplication::focusWindowChanged, &editor,
        [&](QWindow *focus) { report(focus == editor.windowHandle() ? "focus 1" : "focus 0"); });
    editor.show();
    return app.exec();
}
