// SPDX-License-Identifier: GPL-3.0-or-later
// A native Wayland window for the tests, with the app_id it is given: prints
// "focus" when it gets the keyboard focus, then each shortcut it receives.
#include <QGuiApplication>
#include <QKeyEvent>
#include <QKeySequence>
#include <QRasterWindow>

#include <cstdio>

namespace {

class KeyWindow : public QRasterWindow {
protected:
    void focusInEvent(QFocusEvent *) override { print("focus"); }
    void keyPressEvent(QKeyEvent *event) override
    {
        const int key = event->key();
        if (key != Qt::Key_Control && key != Qt::Key_Shift && key != Qt::Key_Alt && key != Qt::Key_Meta)
            print(QKeySequence(event->keyCombination()).toString(QKeySequence::PortableText).toUtf8());
    }

private:
    static void print(const QByteArray &line)
    {
        std::fputs(line.constData(), stdout);
        std::fputc('\n', stdout);
        std::fflush(stdout);
    }
};

} // namespace

int main(int argc, char *argv[])
{
    qputenv("QT_QPA_PLATFORM", "wayland");
    QGuiApplication app(argc, argv);
    if (argc > 1)
        QGuiApplication::setDesktopFileName(QString::fromLocal8Bit(argv[1]));
    KeyWindow window;
    window.resize(320, 200);
    window.show();
    return app.exec();
}
