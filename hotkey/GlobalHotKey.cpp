// SPDX-License-Identifier: GPL-3.0-or-later
#include "GlobalHotKey.h"

#include "KeyGrabber.h"

namespace {

// Main thread only, like everything else here.
QPointer<GlobalHotKey> s_shared;

} // namespace

GlobalHotKey::GlobalHotKey(KeyGrabber &grabber, QObject *parent)
    : QObject(parent)
    , m_grabber(&grabber)
{
    connect(&grabber, &KeyGrabber::pressed, this, &GlobalHotKey::onPressed);
    connect(&grabber, &KeyGrabber::grabLost, this, [this] { m_registered = false; });
}

GlobalHotKey::~GlobalHotKey()
{
    // A grab nobody answers would only swallow the keys.
    if (s_shared == this && m_registered && m_grabber)
        m_grabber->ungrab();
}

GlobalHotKey *GlobalHotKey::shared()
{
    return s_shared.data();
}

void GlobalHotKey::registerHotKey(quint32 keyCode, quint32 modifiers, std::function<void()> callback)
{
    // Give the old combination back first: taking the same one again is then
    // no duplicate, and a refused new one leaves nothing behind.
    if (m_registered && m_grabber)
        m_grabber->ungrab();
    m_registered = false;
    m_callback = std::move(callback);
    m_combination = std::pair { keyCode, modifiers };
    s_shared = this;
    if (m_grabber && !m_suspended)
        m_registered = m_grabber->grab(keyCode, modifiers);
}

void GlobalHotKey::suspend()
{
    if (m_suspended)
        return;
    m_suspended = true;
    if (m_registered && m_grabber)
        m_grabber->ungrab();
    m_registered = false;
}

void GlobalHotKey::resume()
{
    if (!m_suspended)
        return;
    m_suspended = false;
    if (m_combination && m_grabber)
        m_registered = m_grabber->grab(m_combination->first, m_combination->second);
}

void GlobalHotKey::onPressed()
{
    // Deferred: the callback may show windows or register anew, which must not
    // happen inside the grabber's event handling.
    QMetaObject::invokeMethod(
        this,
        [] {
            GlobalHotKey *instance = shared();
            if (!instance || !instance->m_callback)
                return;
            // A copy: the callback may register a new one, which would destroy
            // the running closure.
            const std::function<void()> callback = instance->m_callback;
            callback();
        },
        Qt::QueuedConnection);
}
