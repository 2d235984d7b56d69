// SPDX-License-Identifier: GPL-3.0-or-later
#include "PanelController.h"

#include "ClickMonitor.h"

#include "ClipPanel.h"
#include "PanelPlacement.h"

#include <QCursor>
#include <QEasingCurve>
#include <QEvent>
#include <QGuiApplication>
#include <QPropertyAnimation>
#include <QScreen>
#include <QTimer>
#include <QWindow>

namespace {

constexpr int fadeInMilliseconds = 160;
constexpr int fadeOutMilliseconds = 100;
// Qt's own wait for the focus to come back, before it reports it lost.
constexpr int focusCheckMilliseconds = 400;
// How long a window manager may take to focus a clicked window.
constexpr int focusSettleMilliseconds = 300;

// The usual "ease out" timing curve.
QEasingCurve easeOut()
{
    QEasingCurve curve(QEasingCurve::BezierSpline);
    curve.addCubicBezierSegment(QPointF(0, 0), QPointF(0.58, 1), QPointF(1, 1));
    return curve;
}

QList<PanelPlacement::Screen> screens(qsizetype &primaryIndex)
{
    const QList<QScreen *> all = QGuiApplication::screens();
    QList<PanelPlacement::Screen> result;
    for (const QScreen *screen : all)
        result.append({ screen->geometry(), screen->availableGeometry() });
    primaryIndex = all.indexOf(QGuiApplication::primaryScreen());
    return result;
}

} // namespace

PanelController::PanelController(
    QWidget *rootView, Workspace &workspace, DesktopWindows &desktopWindows, QObject *parent)
    : QObject(parent)
    , m_workspace(workspace)
    , m_desktopWindows(desktopWindows)
    , m_unmanaged(desktopWindows.takesUnmanagedPanels())
    , m_panel(std::make_unique<ClipPanel>(rootView, m_unmanaged))
    , m_fadeIn(new QPropertyAnimation(m_panel.get(), "windowOpacity", this))
    , m_fadeOut(new QPropertyAnimation(m_panel.get(), "windowOpacity", this))
    , m_focusCheck(new QTimer(this))
{
    m_fadeIn->setDuration(fadeInMilliseconds);
    m_fadeIn->setStartValue(0.0);
    m_fadeIn->setEndValue(1.0);
    m_fadeIn->setEasingCurve(easeOut());
    m_fadeOut->setDuration(fadeOutMilliseconds);
    m_fadeOut->setEndValue(0.0);
    connect(m_fadeOut, &QPropertyAnimation::finished, m_panel.get(), &QWidget::hide);

    // Focus that leaves for another application's window: X11 tells us no
    // more about a click elsewhere. Focus that moves to one of our other
    // windows keeps the panel. (The application state follows the same
    // focus changes.)
    connect(qGuiApp, &QGuiApplication::focusWindowChanged, this, &PanelController::followFocus);
    m_focusCheck->setSingleShot(true);
    m_focusCheck->setInterval(focusCheckMilliseconds);
    connect(m_focusCheck, &QTimer::timeout, this, &PanelController::hideIfAnotherAppInFront);
    connect(m_panel.get(), &ClipPanel::dismissed, this, &PanelController::giveFocusBack);
    // The native window exists from here on, hidden, for its id and to
    // watch it come on the screen.
    m_panel->winId();
    m_panel->windowHandle()->installEventFilter(this);
}

PanelController::~PanelController()
{
    m_fadeIn->stop();
    m_fadeOut->stop();
}

void PanelController::setClickMonitor(ClickMonitor *monitor)
{
    m_clickMonitor = monitor;
    connect(monitor, &ClickMonitor::clicked, this, &PanelController::hideIfClickedOutside);
}

void PanelController::showNearCursor()
{
    // A panel fading out has handed the focus on, though Qt may not have
    // said so yet: that late report must not hide this showing.
    const bool wasFadingOut = m_fadeOut->state() == QAbstractAnimation::Running;
    // Stopping the fade-out keeps its end from hiding this showing.
    m_fadeOut->stop();
    m_fadeIn->stop();
    m_focusCheck->stop();
    m_focusArrived = !wasFadingOut && m_panel->isVisible() && QGuiApplication::focusWindow() == m_panel->windowHandle();

    if (const std::optional<RunningApp> front = m_workspace.frontmostApp();
        front && front->identifier != Workspace::ownIdentifier)
        m_previousApp = front;

    qsizetype primaryIndex = -1;
    const QList<PanelPlacement::Screen> all = screens(primaryIndex);
    m_panel->move(PanelPlacement::topLeft(QCursor::pos(), all, primaryIndex));

    m_panel->setTranslucent(m_desktopWindows.hasCompositor());
    const bool fade = m_desktopWindows.fadesWindows();
    // Left alone where it cannot change: Qt would warn at each call.
    if (fade || m_panel->windowOpacity() < 1.0)
        m_panel->setWindowOpacity(fade ? 0.0 : 1.0);
    // A panel still on the screen starts over where it is mapped: unmapped
    // and mapped again at once, it would meet the window manager's late
    // withdrawal, which strips the hints set for the new mapping.
    // An unmanaged panel has no window manager to read the hints.
    if (!m_panel->isVisible() && !m_unmanaged)
        m_desktopWindows.prepareFloatingPanel(m_panel->winId());
    m_panel->show();
    m_panel->raise();
    // X11 has no panel that takes keys without being active: it takes the
    // focus, and hide() gives it back. Asked once the window is on the
    // screen: a window manager ignores requests for windows it does not
    // manage yet.
    m_focusPending = true;
    takeFocusIfExposed();
    if (fade)
        m_fadeIn->start();
    m_shown = true;
    if (m_clickMonitor)
        m_clickMonitor->start();
}

void PanelController::hide(HideReason reason)
{
    m_shown = false;
    if (m_clickMonitor)
        m_clickMonitor->stop();
    m_focusPending = false;
    m_focusCheck->stop();
    m_fadeIn->stop();
    const bool hadFocus = m_panel->isVisible() && QGuiApplication::focusWindow() == m_panel->windowHandle();
    if (m_panel->isVisible()) {
        if (m_desktopWindows.fadesWindows()) {
            if (m_fadeOut->state() != QAbstractAnimation::Running)
                m_fadeOut->start();
        } else {
            m_panel->hide();
        }
    }
    // After a click elsewhere the window manager has already focused the
    // clicked window, or is about to: Qt may not have heard yet that the
    // panel lost the focus, and handing it back would undo the user's click.
    if (hadFocus && reason == HideReason::Dismissed)
        giveFocusBack();
}

bool PanelController::eventFilter(QObject *watched, QEvent *event)
{
    if (event->type() == QEvent::Expose && watched == m_panel->windowHandle())
        takeFocusIfExposed();
    return QObject::eventFilter(watched, event);
}

// Through the desktop rather than QWidget::activateWindow(): for a managed
// panel Qt asks as an application, which focus-stealing prevention may refuse
// while another application is in front, and that is always the case here;
// for an unmanaged one Qt would focus with the time of the last event it saw,
// older than the shortcut's key press, which comes on another connection.
void PanelController::takeFocusIfExposed()
{
    if (!m_focusPending || !m_panel->isVisible() || !m_panel->windowHandle()->isExposed())
        return;
    m_focusPending = false;
    m_desktopWindows.activate({ m_panel->winId(), Workspace::ownIdentifier });
}

void PanelController::followFocus(QWindow *focus)
{
    if (focus && focus == m_panel->windowHandle()) {
        m_focusArrived = true;
        return;
    }
    // A panel that Escape took away stays shown until the next toggle.
    if (focus || !m_shown || !m_panel->isVisible())
        return;
    if (m_focusArrived) {
        hide(HideReason::ClickedElsewhere);
        return;
    }
    // Qt reports a lost focus up to 0.4 s late, so this one may have been
    // lost before the panel was shown; and Qt says nothing when the panel
    // gets the focus back that it had when it was hidden. Ask the desktop
    // once the panel's own request for the focus has been served.
    m_focusCheck->start();
}

void PanelController::hideIfAnotherAppInFront()
{
    if (!m_shown || !m_panel->isVisible() || QGuiApplication::focusWindow())
        return;
    const std::optional<RunningApp> front = m_workspace.frontmostApp();
    if (!front || front->identifier != Workspace::ownIdentifier)
        hide(HideReason::ClickedElsewhere);
}

void PanelController::giveFocusBack()
{
    if (m_previousApp)
        m_desktopWindows.activate(*m_previousApp);
}

void PanelController::hideIfClickedOutside()
{
    // Raw presses carry no position: the pointer is taken to be still where
    // it was pressed. Our own windows, the panel or the preferences, keep it.
    if (!m_shown || QGuiApplication::topLevelAt(QCursor::pos()))
        return;
    hide(HideReason::ClickedElsewhere);
    // A click on something that takes no focus leaves the keys going
    // nowhere under some window managers: the previous window gets them
    // back, once a window that does take the focus has had time to.
    QTimer::singleShot(focusSettleMilliseconds, this, [this] {
        if (!m_shown && m_desktopWindows.focusIsNowhere())
            giveFocusBack();
    });
}
