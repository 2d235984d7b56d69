// SPDX-License-Identifier: GPL-3.0-or-later
#include "X11SelectionReader.h"

#include "X11Logging.h"
#include "XcbReply.h"

#include "CaptureLimits.h"
#include "ImageDecoder.h"
#include "LargeData.h"
#include "PasteboardTypes.h"

#include <QHash>

#include <xcb/xcb.h>

#include <poll.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <mutex>
#include <optional>
#include <thread>
#include <utility>

namespace {

using Clock = std::chrono::steady_clock;

constexpr auto answerTimeout = std::chrono::milliseconds(X11SelectionReader::answerTimeoutMs);
// Each conversion gets a property of its own, so that a late answer to an
// abandoned one is never taken for the answer to the current one.
constexpr int propertyPoolSize = 8;
// TARGETS is a list of atoms: a few dozen in practice.
constexpr qint64 maxTargetsBytes = 64 * 1024;

enum class Wait { Event, TimedOut, Abandoned, Broken };

enum class Outcome {
    Read,
    Refused,
    TooLarge,
    // The owner is stuck: nothing more is asked of it in this request.
    TimedOut,
    // A newer request or cancel() came, or the connection broke.
    Abandoned,
};

struct Conversion {
    Conversion(
        Outcome outcome = Outcome::Refused, QByteArray bytes = {}, xcb_atom_t type = XCB_NONE, uint8_t format = 0)
        : outcome(outcome)
        , bytes(std::move(bytes))
        , type(type)
        , format(format)
    {
    }

    Outcome outcome;
    QByteArray bytes;
    xcb_atom_t type;
    uint8_t format;
};

// Names that stand for plain text, whatever their encoding.
bool isTextTarget(const QByteArray &name)
{
    if (name == "UTF8_STRING" || name == "STRING" || name == "TEXT")
        return true;
    const QByteArray lower = name.toLower();
    return lower == "text/plain" || lower.startsWith("text/plain;");
}

bool isUtf8PlainText(const QByteArray &name)
{
    QByteArray lower = name.toLower();
    lower.replace(' ', QByteArray());
    return lower == "text/plain;charset=utf-8" || lower == "text/plain;charset=utf8";
}

// X's own names (TARGETS, MULTIPLE, PIXMAP, COMPOUND_TEXT, …) are all
// uppercase; MIME types and markers never are.
bool isProtocolTarget(const QByteArray &name)
{
    for (const char c : name) {
        if (!((c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_'))
            return false;
    }
    return true;
}

} // namespace

struct X11SelectionReader::Worker {
    Worker(X11SelectionReader *reader, const QByteArray &displayName);
    ~Worker();

    void post(std::optional<qint64> serial, ReadScope scope = ReadScope::Everything);
    void run();

    bool isStopping();
    bool isAbandoned();
    void drainWake();
    void idle();
    Wait waitForEvent(Clock::time_point deadline, XcbReply<xcb_generic_event_t> &event);

    bool read(ClipboardSnapshot &snapshot, ReadScope scope);
    static bool isWorthReading(const QString &type, const ClipboardSnapshot &snapshot);
    Outcome readText(const QList<QByteArray> &offered, QByteArray &text);
    bool fetchAtomNames(const QList<xcb_atom_t> &atoms);
    xcb_atom_t atom(const QByteArray &name) const { return m_atoms.value(name, XCB_NONE); }

    // Waits at most answerTimeout for an event of the owner's that decides
    // the outcome: decide() gives it, or nothing to go on waiting.
    template<typename Event>
    Outcome awaitOwner(uint8_t responseType, const std::function<std::optional<Outcome>(const Event &)> &decide);
    Conversion convert(xcb_atom_t target, qint64 maxBytes);
    Conversion awaitConversion(xcb_atom_t target, xcb_atom_t property, qint64 maxBytes);
    Conversion readIncrementally(xcb_atom_t property, qint64 maxBytes, quint32 announcedBytes);
    Conversion readProperty(xcb_atom_t property, qint64 maxBytes);

    X11SelectionReader *m_reader;
    xcb_connection_t *m_connection = nullptr;
    xcb_window_t m_window = XCB_NONE;
    int m_wakeFd = -1;
    bool m_valid = false;

    xcb_atom_t m_clipboard = XCB_NONE;
    xcb_atom_t m_targets = XCB_NONE;
    xcb_atom_t m_incr = XCB_NONE;
    std::array<xcb_atom_t, propertyPoolSize> m_properties {};
    // Properties whose conversion was given up: the owner may still write to
    // them, so they are not reused while others are free. Worker thread only.
    std::array<bool, propertyPoolSize> m_abandoned {};
    int m_nextProperty = 0;
    QHash<xcb_atom_t, QByteArray> m_atomNames;
    QHash<QByteArray, xcb_atom_t> m_atoms;

    // Recursive: a receiver connected directly may call request() from the
    // signal, which is sent with the lock held.
    std::recursive_mutex m_mutex;
    qint64 m_serial = 0;
    ReadScope m_scope = ReadScope::Everything;
    bool m_pending = false;
    bool m_stopping = false;
    quint64 m_generation = 0;
    // The generation the worker is serving. Worker thread only.
    quint64 m_readGeneration = 0;

    std::thread m_thread;
};

X11SelectionReader::Worker::Worker(X11SelectionReader *reader, const QByteArray &displayName)
    : m_reader(reader)
    , m_wakeFd(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK))
{
    m_connection = xcb_connect(displayName.isEmpty() ? nullptr : displayName.constData(), nullptr);
    if (m_wakeFd < 0 || xcb_connection_has_error(m_connection))
        return;
    const xcb_screen_t *screen = xcb_setup_roots_iterator(xcb_get_setup(m_connection)).data;
    if (!screen)
        return;

    QList<QByteArray> names = { "CLIPBOARD", "TARGETS", "INCR", "UTF8_STRING", "TEXT" };
    for (int i = 0; i < propertyPoolSize; ++i)
        names.append("ZETTLY_SELECTION_" + QByteArray::number(i));
    QList<xcb_intern_atom_cookie_t> cookies;
    for (const QByteArray &name : names)
        cookies.append(xcb_intern_atom(m_connection, false, name.size(), name.constData()));
    for (qsizetype i = 0; i < names.size(); ++i) {
        XcbReply<xcb_intern_atom_reply_t> reply(xcb_intern_atom_reply(m_connection, cookies.at(i), nullptr));
        if (!reply)
            return;
        m_atoms.insert(names.at(i), reply->atom);
        m_atomNames.insert(reply->atom, names.at(i));
    }
    m_atoms.insert("STRING", XCB_ATOM_STRING);
    m_atomNames.insert(XCB_ATOM_STRING, "STRING");
    m_clipboard = atom("CLIPBOARD");
    m_targets = atom("TARGETS");
    m_incr = atom("INCR");
    for (int i = 0; i < propertyPoolSize; ++i)
        m_properties[i] = atom("ZETTLY_SELECTION_" + QByteArray::number(i));

    // The requestor: owners write to its properties, and INCR chunks are
    // announced by property changes on it.
    m_window = xcb_generate_id(m_connection);
    const uint32_t eventMask = XCB_EVENT_MASK_PROPERTY_CHANGE;
    xcb_create_window(m_connection, XCB_COPY_FROM_PARENT, m_window, screen->root, 0, 0, 1, 1, 0,
        XCB_WINDOW_CLASS_INPUT_ONLY, XCB_COPY_FROM_PARENT, XCB_CW_EVENT_MASK, &eventMask);
    xcb_flush(m_connection);

    m_valid = true;
    m_thread = std::thread(&Worker::run, this);
}

X11SelectionReader::Worker::~Worker()
{
    {
        std::lock_guard lock(m_mutex);
        m_stopping = true;
    }
    if (m_thread.joinable()) {
        const uint64_t one = 1;
        (void)!write(m_wakeFd, &one, sizeof one);
        m_thread.join();
    }
    if (m_window != XCB_NONE)
        xcb_destroy_window(m_connection, m_window);
    // Also for a failed connection: xcb_connect always allocates.
    if (m_connection)
        xcb_disconnect(m_connection);
    if (m_wakeFd >= 0)
        close(m_wakeFd);
}

void X11SelectionReader::Worker::post(std::optional<qint64> serial, ReadScope scope)
{
    {
        std::lock_guard lock(m_mutex);
        ++m_generation;
        m_pending = serial.has_value();
        m_scope = scope;
        if (serial)
            m_serial = *serial;
    }
    if (m_wakeFd >= 0) {
        const uint64_t one = 1;
        (void)!write(m_wakeFd, &one, sizeof one);
    }
}

void X11SelectionReader::Worker::run()
{
    for (;;) {
        std::optional<qint64> serial;
        ReadScope scope = ReadScope::Everything;
        {
            std::lock_guard lock(m_mutex);
            if (m_stopping)
                return;
            m_readGeneration = m_generation;
            if (m_pending) {
                m_pending = false;
                serial = m_serial;
                scope = m_scope;
            }
        }
        if (!serial) {
            idle();
            continue;
        }
        ClipboardSnapshot snapshot;
        if (!read(snapshot, scope))
            continue;
        // Under the lock, so that a cancel() that has returned is never
        // followed by an answer to the request it cancelled.
        std::lock_guard lock(m_mutex);
        if (!m_stopping && m_generation == m_readGeneration)
            Q_EMIT m_reader->snapshotRead(*serial, snapshot);
    }
}

bool X11SelectionReader::Worker::isStopping()
{
    std::lock_guard lock(m_mutex);
    return m_stopping;
}

bool X11SelectionReader::Worker::isAbandoned()
{
    std::lock_guard lock(m_mutex);
    return m_stopping || m_generation != m_readGeneration;
}

void X11SelectionReader::Worker::drainWake()
{
    uint64_t count;
    while (::read(m_wakeFd, &count, sizeof count) > 0) { }
}

void X11SelectionReader::Worker::idle()
{
    XcbReply<xcb_generic_event_t> event;
    // Events now are late answers to abandoned reads: of no use.
    Wait wait;
    while ((wait = waitForEvent(Clock::time_point::max(), event)) == Wait::Event) { }
    // A broken connection has nothing more to say: sleep until woken, unless
    // the wake that asks us to stop was already taken while waiting.
    if (wait == Wait::Broken && !isStopping()) {
        pollfd wake = { m_wakeFd, POLLIN, 0 };
        while (poll(&wake, 1, -1) < 0 && errno == EINTR) { }
        drainWake();
    }
}

Wait X11SelectionReader::Worker::waitForEvent(Clock::time_point deadline, XcbReply<xcb_generic_event_t> &event)
{
    for (;;) {
        event.reset(xcb_poll_for_event(m_connection));
        if (event)
            return Wait::Event;
        if (xcb_connection_has_error(m_connection))
            return Wait::Broken;
        if (isAbandoned())
            return Wait::Abandoned;
        int timeoutMs = -1;
        if (deadline != Clock::time_point::max()) {
            const auto left = std::chrono::ceil<std::chrono::milliseconds>(deadline - Clock::now());
            if (left.count() <= 0)
                return Wait::TimedOut;
            timeoutMs = int(left.count());
        }
        std::array<pollfd, 2> fds = { {
            { xcb_get_file_descriptor(m_connection), POLLIN, 0 },
            { m_wakeFd, POLLIN, 0 },
        } };
        if (poll(fds.data(), fds.size(), timeoutMs) < 0 && errno != EINTR)
            return Wait::Broken;
        if (fds[1].revents & POLLIN)
            drainWake();
    }
}

bool X11SelectionReader::Worker::read(ClipboardSnapshot &snapshot, ReadScope scope)
{
    XcbReply<xcb_get_selection_owner_reply_t> owner(
        xcb_get_selection_owner_reply(m_connection, xcb_get_selection_owner(m_connection, m_clipboard), nullptr));
    if (!owner)
        return false;
    if (owner->owner == XCB_NONE)
        return true;

    const Conversion targets = convert(m_targets, maxTargetsBytes);
    if (targets.outcome == Outcome::Abandoned)
        return false;
    if (targets.outcome == Outcome::TimedOut)
        return true;
    QList<xcb_atom_t> offered;
    if (targets.outcome == Outcome::Read && targets.format == 32) {
        offered.resize(targets.bytes.size() / qsizetype(sizeof(xcb_atom_t)));
        std::memcpy(offered.data(), targets.bytes.constData(), offered.size() * sizeof(xcb_atom_t));
    }

    if (offered.isEmpty()) {
        // Some owners refuse TARGETS yet serve text.
        QByteArray text;
        const Outcome outcome = readText({ "UTF8_STRING", "STRING" }, text);
        if (outcome == Outcome::Abandoned)
            return false;
        if (outcome == Outcome::Read) {
            snapshot.types = QStringList { PasteboardTypes::string };
            snapshot.data.insert(PasteboardTypes::string, text);
        }
        return true;
    }

    if (!fetchAtomNames(offered))
        return false;
    QList<QByteArray> textTargets;
    for (const xcb_atom_t atom : offered) {
        const QByteArray name = m_atomNames.value(atom);
        QString type;
        if (isTextTarget(name)) {
            textTargets.append(name);
            type = PasteboardTypes::string;
        } else if (!name.isEmpty() && !isProtocolTarget(name)) {
            type = QString::fromLatin1(name);
        }
        if (!type.isEmpty() && !snapshot.types.contains(type))
            snapshot.types.append(type);
    }

    if (scope == ReadScope::TypesOnly)
        return true;
    for (const QString &type : PasteboardTypes::captured) {
        // The markers come first: a secret's data is never fetched.
        if (scope == ReadScope::UnlessMarkedSecret && type != PasteboardTypes::passwordManagerHint
            && snapshot.isMarkedSecret())
            return true;
        if (!isWorthReading(type, snapshot))
            continue;
        Conversion conversion;
        if (type == PasteboardTypes::string)
            conversion.outcome = readText(textTargets, conversion.bytes);
        else
            conversion = convert(atom(type.toLatin1()), CaptureLimits::maxBytes(type));
        if (conversion.outcome == Outcome::Abandoned)
            return false;
        if (conversion.outcome == Outcome::TimedOut) {
            qCDebug(lcX11) << "The clipboard owner did not answer for" << type;
            return true;
        }
        if (conversion.outcome == Outcome::TooLarge)
            qCDebug(lcX11) << type << "is larger than capture takes";
        if (conversion.outcome == Outcome::Read)
            snapshot.data.insert(type, conversion.bytes);
    }
    return true;
}

bool X11SelectionReader::Worker::isWorthReading(const QString &type, const ClipboardSnapshot &snapshot)
{
    if (!snapshot.types.contains(type))
        return false;
    if (type == PasteboardTypes::tiff) {
        const auto png = snapshot.data.constFind(PasteboardTypes::png);
        return png == snapshot.data.cend() || !ImageDecoder::decodedSize(*png, "png");
    }
    if (type == PasteboardTypes::copiedFiles)
        return !snapshot.types.contains(PasteboardTypes::uriList);
    if (type == PasteboardTypes::mozUrl)
        return !snapshot.types.contains(PasteboardTypes::uriList) && !snapshot.types.contains(PasteboardTypes::string);
    return true;
}

// Reads text from the best of the offered text targets, as UTF-8.
Outcome X11SelectionReader::Worker::readText(const QList<QByteArray> &offered, QByteArray &text)
{
    QList<QByteArray> candidates;
    const auto add = [&](auto matches) {
        for (const QByteArray &name : offered) {
            if (matches(name) && !candidates.contains(name))
                candidates.append(name);
        }
    };
    add([](const QByteArray &name) { return name == "UTF8_STRING"; });
    add(isUtf8PlainText);
    add([](const QByteArray &name) { return name.toLower() == "text/plain"; });
    add([](const QByteArray &name) { return name == "STRING"; });
    // The owner picks the encoding of TEXT; only the two we know are taken.
    add([](const QByteArray &name) { return name == "TEXT"; });

    const qint64 maxBytes = CaptureLimits::maxTextBytes;
    for (const QByteArray &name : candidates) {
        if (!m_atoms.contains(name))
            continue;
        Conversion conversion = convert(atom(name), maxBytes);
        if (conversion.outcome == Outcome::Refused)
            continue;
        if (conversion.outcome != Outcome::Read)
            return conversion.outcome;
        const bool latin1 = name == "STRING" || (name == "TEXT" && conversion.type == XCB_ATOM_STRING);
        if (name == "TEXT" && !latin1 && conversion.type != atom("UTF8_STRING"))
            continue;
        // Raw bytes otherwise: invalid UTF-8 is dealt with by capture.
        text = latin1 ? QString::fromLatin1(conversion.bytes).toUtf8() : conversion.bytes;
        return text.size() > maxBytes ? Outcome::TooLarge : Outcome::Read;
    }
    return Outcome::Refused;
}

bool X11SelectionReader::Worker::fetchAtomNames(const QList<xcb_atom_t> &atoms)
{
    QList<std::pair<xcb_atom_t, xcb_get_atom_name_cookie_t>> cookies;
    for (const xcb_atom_t atom : atoms) {
        if (!m_atomNames.contains(atom))
            cookies.append({ atom, xcb_get_atom_name(m_connection, atom) });
    }
    for (const auto &[atom, cookie] : cookies) {
        // An owner may list atoms that do not exist: those stay nameless.
        XcbReply<xcb_get_atom_name_reply_t> reply(xcb_get_atom_name_reply(m_connection, cookie, nullptr));
        if (!reply)
            continue;
        const QByteArray name(xcb_get_atom_name_name(reply.get()), xcb_get_atom_name_name_length(reply.get()));
        m_atomNames.insert(atom, name);
        m_atoms.insert(name, atom);
    }
    return !xcb_connection_has_error(m_connection);
}

Conversion X11SelectionReader::Worker::convert(xcb_atom_t target, qint64 maxBytes)
{
    if (target == XCB_NONE)
        return { Outcome::Refused };
    int index = -1;
    for (int i = 0; i < propertyPoolSize && index < 0; ++i) {
        const int candidate = (m_nextProperty + i) % propertyPoolSize;
        if (!m_abandoned[candidate])
            index = candidate;
    }
    if (index < 0) {
        // All given up on long ago: their owners have surely moved on.
        m_abandoned.fill(false);
        index = m_nextProperty;
    }
    m_nextProperty = (index + 1) % propertyPoolSize;
    const xcb_atom_t property = m_properties[index];

    xcb_delete_property(m_connection, m_window, property);
    xcb_convert_selection(m_connection, m_window, m_clipboard, target, property, XCB_CURRENT_TIME);
    xcb_flush(m_connection);
    Conversion conversion = awaitConversion(target, property, maxBytes);
    if (conversion.outcome == Outcome::TimedOut || conversion.outcome == Outcome::Abandoned
        || conversion.outcome == Outcome::TooLarge)
        m_abandoned[index] = true;
    return conversion;
}

template<typename Event>
Outcome X11SelectionReader::Worker::awaitOwner(
    uint8_t responseType, const std::function<std::optional<Outcome>(const Event &)> &decide)
{
    const auto deadline = Clock::now() + answerTimeout;
    for (;;) {
        XcbReply<xcb_generic_event_t> event;
        const Wait wait = waitForEvent(deadline, event);
        if (wait == Wait::TimedOut)
            return Outcome::TimedOut;
        if (wait != Wait::Event)
            return Outcome::Abandoned;
        if ((event->response_type & 0x7f) != responseType)
            continue;
        if (const auto outcome = decide(*reinterpret_cast<const Event *>(event.get())))
            return *outcome;
    }
}

Conversion X11SelectionReader::Worker::awaitConversion(xcb_atom_t target, xcb_atom_t property, qint64 maxBytes)
{
    const Outcome answer = awaitOwner<xcb_selection_notify_event_t>(
        XCB_SELECTION_NOTIFY, [&](const xcb_selection_notify_event_t &notify) -> std::optional<Outcome> {
            if (notify.requestor != m_window || notify.selection != m_clipboard)
                return std::nullopt;
            if (notify.property == property)
                return Outcome::Read;
            if (notify.property == XCB_NONE && notify.target == target)
                return Outcome::Refused;
            return std::nullopt;
        });
    if (answer != Outcome::Read)
        return { answer };

    Conversion value = readProperty(property, maxBytes);
    if (value.outcome == Outcome::Read && value.type == m_incr) {
        // Some owners leave the size out.
        quint32 announcedBytes = 0;
        if (value.format == 32 && value.bytes.size() >= 4)
            std::memcpy(&announcedBytes, value.bytes.constData(), sizeof announcedBytes);
        return readIncrementally(property, maxBytes, announcedBytes);
    }
    xcb_delete_property(m_connection, m_window, property);
    xcb_flush(m_connection);
    if (value.outcome == Outcome::Read && value.type == XCB_NONE)
        return { Outcome::Refused };
    return value;
}

Conversion X11SelectionReader::Worker::readIncrementally(xcb_atom_t property, qint64 maxBytes, quint32 announcedBytes)
{
    // The announced size is a lower bound. Leaving the property in place
    // keeps the owner from sending anything.
    if (announcedBytes > maxBytes)
        return { Outcome::TooLarge };
    Conversion result { Outcome::Read };
    // Growing by doubling would hold the old and the new buffer at once.
    result.bytes.reserve(announcedBytes);
    LargeData::adviseHugePages(result.bytes.data(), result.bytes.capacity());
    // Deleting the property asks for the next chunk.
    xcb_delete_property(m_connection, m_window, property);
    xcb_flush(m_connection);
    for (;;) {
        const Outcome chunkReady = awaitOwner<xcb_property_notify_event_t>(
            XCB_PROPERTY_NOTIFY, [&](const xcb_property_notify_event_t &notify) -> std::optional<Outcome> {
                if (notify.window == m_window && notify.atom == property && notify.state == XCB_PROPERTY_NEW_VALUE)
                    return Outcome::Read;
                return std::nullopt;
            });
        if (chunkReady != Outcome::Read)
            return { chunkReady };
        Conversion chunk = readProperty(property, maxBytes - result.bytes.size());
        if (chunk.outcome != Outcome::Read)
            return chunk;
        xcb_delete_property(m_connection, m_window, property);
        xcb_flush(m_connection);
        if (chunk.bytes.isEmpty())
            return result;
        result.bytes.append(chunk.bytes);
        result.type = chunk.type;
        result.format = chunk.format;
    }
}

// The property's value as it is, or TooLarge beyond maxBytes.
Conversion X11SelectionReader::Worker::readProperty(xcb_atom_t property, qint64 maxBytes)
{
    // One unit more than allowed shows whether there is more.
    const auto units = uint32_t(maxBytes / 4 + 1);
    XcbReply<xcb_get_property_reply_t> reply(xcb_get_property_reply(m_connection,
        xcb_get_property(m_connection, false, m_window, property, XCB_GET_PROPERTY_TYPE_ANY, 0, units), nullptr));
    if (!reply)
        return { Outcome::Abandoned };
    const int length = xcb_get_property_value_length(reply.get());
    if (reply->bytes_after > 0 || length > maxBytes)
        return { Outcome::TooLarge };
    return { Outcome::Read, QByteArray(static_cast<const char *>(xcb_get_property_value(reply.get())), length),
        reply->type, reply->format };
}

X11SelectionReader::X11SelectionReader(const QByteArray &displayName, QObject *parent)
    : QObject(parent)
{
    qRegisterMetaType<ClipboardSnapshot>();
    m_worker = std::make_unique<Worker>(this, displayName);
}

X11SelectionReader::~X11SelectionReader() = default;

bool X11SelectionReader::isValid() const
{
    return m_worker->m_valid;
}

void X11SelectionReader::request(qint64 serial, ReadScope scope)
{
    m_worker->post(serial, scope);
}

void X11SelectionReader::cancel()
{
    m_worker->post(std::nullopt);
}
