// SPDX-License-Identifier: GPL-3.0-or-later
#include "DataControlSession.h"

#include "CaptureLimits.h"
#include "ImageHeader.h"
#include "PasteboardTypes.h"

#include "ext-data-control-v1-client.h"
#include "wlr-data-control-unstable-v1-client.h"

#include <QHash>
#include <QLoggingCategory>

#include <wayland-client.h>

#include <fcntl.h>
#include <poll.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <chrono>
#include <condition_variable>
#include <cstring>
#include <mutex>
#include <optional>
#include <thread>

namespace {

Q_LOGGING_CATEGORY(lcWayland, "zettly.wayland", QtWarningMsg)

using Clock = std::chrono::steady_clock;

constexpr auto answerTimeout = std::chrono::milliseconds(DataControlSession::answerTimeoutMs);

enum class Wake { Data, Display, Command, TimedOut, Broken };
enum class Outcome { Read, Refused, TooLarge, TimedOut, Abandoned };

// Names programs offer text under, best first; all become text/plain.
const QStringList textTypes = { QStringLiteral("text/plain;charset=utf-8"), QStringLiteral("UTF8_STRING"),
    QStringLiteral("text/plain"), QStringLiteral("STRING"), QStringLiteral("TEXT") };

// Where a text type stands among textTypes; unreadable encodings of text
// come last, and anything else is no text.
constexpr int unreadableTextRank = 100;

int textRank(const QString &type)
{
    QString lower = type.toLower();
    lower.remove(u' ');
    if (lower == QStringLiteral("text/plain;charset=utf8"))
        return 0;
    const qsizetype exact = textTypes.indexOf(type);
    if (exact >= 0)
        return int(exact);
    const qsizetype folded = textTypes.indexOf(lower);
    if (folded >= 0)
        return int(folded);
    return lower.startsWith(QStringLiteral("text/plain;")) ? unreadableTextRank : -1;
}

wl_proxy *proxyOf(void *object)
{
    return static_cast<wl_proxy *>(object);
}

} // namespace

struct DataControlSession::Worker {
    Worker(DataControlSession *session, wl_display *display, wl_seat *seat);
    virtual ~Worker();

    void start();
    void stop();
    void run();
    Wake wait(int dataFd, std::optional<Clock::time_point> deadline);
    void applyCommands();
    bool read(quint64 generation, ReadScope scope, ClipboardSnapshot &snapshot);
    Outcome readType(const QString &type, qint64 maxBytes, quint64 generation, QByteArray &bytes);
    void serveTo(const char *type, int fd);

    // Called by the protocol's listeners.
    void offerIntroduced(wl_proxy *offer) { m_offerTypes.insert(offer, {}); }
    void offerTyped(wl_proxy *offer, const char *type) { m_offerTypes[offer].append(QString::fromUtf8(type)); }
    void selectionChanged(wl_proxy *offer);
    void sourceCancelled(wl_proxy *source);
    void deviceFinished();

    // The protocol's requests.
    virtual const char *protocolName() const = 0;
    virtual void receive(wl_proxy *offer, const QString &type, int fd) = 0;
    virtual void destroyOffer(wl_proxy *offer) = 0;
    virtual wl_proxy *createSource(const QStringList &types) = 0;
    virtual void destroySource(wl_proxy *source) = 0;
    virtual void setSelection(wl_proxy *source) = 0;
    virtual void destroyDevice() = 0;

    DataControlSession *m_session = nullptr;
    wl_display *m_display;
    wl_seat *m_seat;
    int m_wakeFd = -1;
    std::thread m_thread;

    std::atomic<quint64> m_generation = 0;
    std::atomic<bool> m_unowned = true;
    std::mutex m_mutex;
    std::optional<std::pair<ClipboardSnapshot, quint64>> m_pendingServe;
    // The generation of the last contents of ours the compositor was sent.
    quint64 m_appliedGeneration = 0;
    std::condition_variable m_applied;
    std::optional<std::pair<quint64, ReadScope>> m_pendingRead;
    bool m_stopping = false;

    // Worker thread only, once started.
    QHash<wl_proxy *, QStringList> m_offerTypes;
    wl_proxy *m_selection = nullptr;
    bool m_ready = false;
    bool m_broken = false;
    wl_proxy *m_ownSource = nullptr;
    ClipboardSnapshot m_served;
    bool m_ownClearPending = false;
};

namespace {

struct WlrProtocol {
    using Manager = zwlr_data_control_manager_v1;
    using Device = zwlr_data_control_device_v1;
    using Source = zwlr_data_control_source_v1;
    using Offer = zwlr_data_control_offer_v1;
    using DeviceListener = zwlr_data_control_device_v1_listener;
    using SourceListener = zwlr_data_control_source_v1_listener;
    using OfferListener = zwlr_data_control_offer_v1_listener;
    static constexpr const char *name = "zwlr_data_control_manager_v1";
    static const wl_interface *interface() { return &zwlr_data_control_manager_v1_interface; }
    static constexpr auto getDevice = &zwlr_data_control_manager_v1_get_data_device;
    static constexpr auto createSource = &zwlr_data_control_manager_v1_create_data_source;
    static constexpr auto destroyManager = &zwlr_data_control_manager_v1_destroy;
    static constexpr auto addDeviceListener = &zwlr_data_control_device_v1_add_listener;
    static constexpr auto setSelection = &zwlr_data_control_device_v1_set_selection;
    static constexpr auto destroyDevice = &zwlr_data_control_device_v1_destroy;
    static constexpr auto addSourceListener = &zwlr_data_control_source_v1_add_listener;
    static constexpr auto offer = &zwlr_data_control_source_v1_offer;
    static constexpr auto destroySource = &zwlr_data_control_source_v1_destroy;
    static constexpr auto addOfferListener = &zwlr_data_control_offer_v1_add_listener;
    static constexpr auto receive = &zwlr_data_control_offer_v1_receive;
    static constexpr auto destroyOffer = &zwlr_data_control_offer_v1_destroy;
};

struct ExtProtocol {
    using Manager = ext_data_control_manager_v1;
    using Device = ext_data_control_device_v1;
    using Source = ext_data_control_source_v1;
    using Offer = ext_data_control_offer_v1;
    using DeviceListener = ext_data_control_device_v1_listener;
    using SourceListener = ext_data_control_source_v1_listener;
    using OfferListener = ext_data_control_offer_v1_listener;
    static constexpr const char *name = "ext_data_control_manager_v1";
    static const wl_interface *interface() { return &ext_data_control_manager_v1_interface; }
    static constexpr auto getDevice = &ext_data_control_manager_v1_get_data_device;
    static constexpr auto createSource = &ext_data_control_manager_v1_create_data_source;
    static constexpr auto destroyManager = &ext_data_control_manager_v1_destroy;
    static constexpr auto addDeviceListener = &ext_data_control_device_v1_add_listener;
    static constexpr auto setSelection = &ext_data_control_device_v1_set_selection;
    static constexpr auto destroyDevice = &ext_data_control_device_v1_destroy;
    static constexpr auto addSourceListener = &ext_data_control_source_v1_add_listener;
    static constexpr auto offer = &ext_data_control_source_v1_offer;
    static constexpr auto destroySource = &ext_data_control_source_v1_destroy;
    static constexpr auto addOfferListener = &ext_data_control_offer_v1_add_listener;
    static constexpr auto receive = &ext_data_control_offer_v1_receive;
    static constexpr auto destroyOffer = &ext_data_control_offer_v1_destroy;
};

// The worker on one of the two protocols, which differ only in their names.
template<typename P> struct BoundWorker final : DataControlSession::Worker {
    using Worker = DataControlSession::Worker;

    BoundWorker(DataControlSession *session, wl_display *display, wl_seat *seat, typename P::Manager *manager)
        : Worker(session, display, seat)
        , m_manager(manager)
        , m_device(P::getDevice(manager, seat))
    {
        P::addDeviceListener(m_device, &deviceListener, static_cast<Worker *>(this));
    }

    ~BoundWorker() override
    {
        stop();
        P::destroyManager(m_manager);
    }

    static Worker *worker(void *data) { return static_cast<Worker *>(data); }

    static void onDataOffer(void *data, typename P::Device *, typename P::Offer *offer)
    {
        P::addOfferListener(offer, &offerListener, data);
        worker(data)->offerIntroduced(proxyOf(offer));
    }
    static void onSelection(void *data, typename P::Device *, typename P::Offer *offer)
    {
        worker(data)->selectionChanged(offer ? proxyOf(offer) : nullptr);
    }
    static void onFinished(void *data, typename P::Device *) { worker(data)->deviceFinished(); }
    static void onPrimarySelection(void *data, typename P::Device *, typename P::Offer *offer)
    {
        // Only the clipboard is recorded.
        if (offer && proxyOf(offer) != worker(data)->m_selection) {
            worker(data)->m_offerTypes.remove(proxyOf(offer));
            P::destroyOffer(offer);
        }
    }
    static void onOffer(void *data, typename P::Offer *offer, const char *type)
    {
        worker(data)->offerTyped(proxyOf(offer), type);
    }
    static void onSend(void *data, typename P::Source *, const char *type, int32_t fd)
    {
        worker(data)->serveTo(type, fd);
    }
    static void onCancelled(void *data, typename P::Source *source) { worker(data)->sourceCancelled(proxyOf(source)); }

    static inline const typename P::DeviceListener deviceListener
        = { &onDataOffer, &onSelection, &onFinished, &onPrimarySelection };
    static inline const typename P::OfferListener offerListener = { &onOffer };
    static inline const typename P::SourceListener sourceListener = { &onSend, &onCancelled };

    const char *protocolName() const override { return P::name; }
    void receive(wl_proxy *offer, const QString &type, int fd) override
    {
        P::receive(reinterpret_cast<typename P::Offer *>(offer), type.toUtf8().constData(), fd);
    }
    void destroyOffer(wl_proxy *offer) override { P::destroyOffer(reinterpret_cast<typename P::Offer *>(offer)); }
    wl_proxy *createSource(const QStringList &types) override
    {
        typename P::Source *source = P::createSource(m_manager);
        P::addSourceListener(source, &sourceListener, static_cast<Worker *>(this));
        for (const QString &type : types)
            P::offer(source, type.toUtf8().constData());
        return proxyOf(source);
    }
    void destroySource(wl_proxy *source) override { P::destroySource(reinterpret_cast<typename P::Source *>(source)); }
    void setSelection(wl_proxy *source) override
    {
        P::setSelection(m_device, reinterpret_cast<typename P::Source *>(source));
    }
    void destroyDevice() override
    {
        if (m_device)
            P::destroyDevice(std::exchange(m_device, nullptr));
    }

    typename P::Manager *m_manager;
    typename P::Device *m_device;
};

struct Globals {
    wl_seat *seat = nullptr;
    std::optional<std::pair<uint32_t, uint32_t>> ext;
    std::optional<std::pair<uint32_t, uint32_t>> wlr;
};

void onGlobal(void *data, wl_registry *registry, uint32_t name, const char *interface, uint32_t)
{
    auto *globals = static_cast<Globals *>(data);
    if (std::strcmp(interface, wl_seat_interface.name) == 0 && !globals->seat)
        globals->seat = static_cast<wl_seat *>(wl_registry_bind(registry, name, &wl_seat_interface, 1));
    else if (std::strcmp(interface, ExtProtocol::name) == 0)
        globals->ext = { name, 1 };
    else if (std::strcmp(interface, WlrProtocol::name) == 0)
        globals->wlr = { name, 1 };
}

void onGlobalRemoved(void *, wl_registry *, uint32_t) { }

const wl_registry_listener registryListener = { &onGlobal, &onGlobalRemoved };

} // namespace

DataControlSession::Worker::Worker(DataControlSession *session, wl_display *display, wl_seat *seat)
    : m_session(session)
    , m_display(display)
    , m_seat(seat)
    , m_wakeFd(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK))
{
}

DataControlSession::Worker::~Worker()
{
    if (m_wakeFd >= 0)
        close(m_wakeFd);
}

void DataControlSession::Worker::start()
{
    // The selection there before us is the user's past, not a new copy.
    wl_display_roundtrip(m_display);
    m_ready = true;
    m_thread = std::thread(&Worker::run, this);
}

void DataControlSession::Worker::stop()
{
    {
        std::lock_guard lock(m_mutex);
        m_stopping = true;
    }
    ++m_generation;
    const uint64_t one = 1;
    [[maybe_unused]] const ssize_t written = ::write(m_wakeFd, &one, sizeof one);
    if (m_thread.joinable())
        m_thread.join();
    for (auto it = m_offerTypes.cbegin(); it != m_offerTypes.cend(); ++it)
        destroyOffer(it.key());
    m_offerTypes.clear();
    if (m_ownSource)
        destroySource(std::exchange(m_ownSource, nullptr));
    destroyDevice();
}

void DataControlSession::Worker::run()
{
    for (;;) {
        {
            std::lock_guard lock(m_mutex);
            if (m_stopping)
                return;
        }
        applyCommands();
        std::optional<std::pair<quint64, ReadScope>> request;
        {
            std::lock_guard lock(m_mutex);
            request = std::exchange(m_pendingRead, std::nullopt);
        }
        if (request && request->first == m_generation) {
            ClipboardSnapshot snapshot;
            if (read(request->first, request->second, snapshot) && m_generation == request->first)
                Q_EMIT m_session->snapshotRead(request->first, snapshot);
            continue;
        }
        if (m_broken || wait(-1, std::nullopt) == Wake::Broken) {
            if (!m_broken)
                qCWarning(lcWayland) << "The connection to the compositor broke; the clipboard is no longer watched";
            m_broken = true;
            // Nothing left to do but wait for stop().
            pollfd wake { m_wakeFd, POLLIN, 0 };
            poll(&wake, 1, -1);
            uint64_t count;
            [[maybe_unused]] const ssize_t drained = ::read(m_wakeFd, &count, sizeof count);
        }
    }
}

Wake DataControlSession::Worker::wait(int dataFd, std::optional<Clock::time_point> deadline)
{
    if (m_broken)
        return Wake::Broken;
    while (wl_display_prepare_read(m_display) != 0) {
        if (wl_display_dispatch_pending(m_display) < 0)
            return Wake::Broken;
    }
    if (wl_display_flush(m_display) < 0 && errno != EAGAIN) {
        wl_display_cancel_read(m_display);
        return Wake::Broken;
    }
    pollfd fds[] = { { wl_display_get_fd(m_display), POLLIN, 0 }, { m_wakeFd, POLLIN, 0 }, { dataFd, POLLIN, 0 } };
    int timeout = -1;
    if (deadline) {
        const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(*deadline - Clock::now()).count();
        timeout = int(std::max<decltype(left)>(0, left));
    }
    const int ready = poll(fds, dataFd >= 0 ? 3 : 2, timeout);
    if (ready > 0 && (fds[0].revents & POLLIN)) {
        if (wl_display_read_events(m_display) < 0)
            return Wake::Broken;
    } else {
        wl_display_cancel_read(m_display);
        if (ready > 0 && (fds[0].revents & (POLLERR | POLLHUP)))
            return Wake::Broken;
    }
    if (wl_display_dispatch_pending(m_display) < 0)
        return Wake::Broken;
    if (fds[1].revents & POLLIN) {
        uint64_t count;
        [[maybe_unused]] const ssize_t drained = ::read(m_wakeFd, &count, sizeof count);
        return Wake::Command;
    }
    if (dataFd >= 0 && fds[2].revents)
        return Wake::Data;
    return ready == 0 ? Wake::TimedOut : Wake::Display;
}

void DataControlSession::Worker::applyCommands()
{
    std::optional<std::pair<ClipboardSnapshot, quint64>> serve;
    {
        std::lock_guard lock(m_mutex);
        serve = std::exchange(m_pendingServe, std::nullopt);
    }
    if (!serve)
        return;
    wl_proxy *previous = std::exchange(m_ownSource, nullptr);
    m_served = std::move(serve->first);
    if (m_served.types.isEmpty()) {
        setSelection(nullptr);
        m_ownClearPending = true;
    } else {
        QStringList types = m_served.types;
        // Programs ask for text under several names; they all get ours.
        if (m_served.data.contains(PasteboardTypes::string)) {
            for (const QString &alias : textTypes) {
                if (!types.contains(alias))
                    types.append(alias);
            }
        }
        m_ownSource = createSource(types);
        setSelection(m_ownSource);
    }
    if (previous)
        destroySource(previous);
    wl_display_flush(m_display);
    {
        std::lock_guard lock(m_mutex);
        m_appliedGeneration = serve->second;
    }
    m_applied.notify_all();
}

void DataControlSession::Worker::selectionChanged(wl_proxy *offer)
{
    // Offers never selected, and the one this replaces, are done with.
    for (auto it = m_offerTypes.begin(); it != m_offerTypes.end();) {
        if (it.key() != offer) {
            destroyOffer(it.key());
            it = m_offerTypes.erase(it);
        } else {
            ++it;
        }
    }
    m_selection = offer;
    // While our source stands, the selection is ours: another program taking
    // it cancels our source first.
    const bool own = m_ownSource || (m_ownClearPending && !offer);
    m_ownClearPending = false;
    m_unowned = !offer;
    if (!m_ready || own)
        return;
    Q_EMIT m_session->selectionAnnounced(++m_generation, !offer);
}

void DataControlSession::Worker::sourceCancelled(wl_proxy *source)
{
    if (source == m_ownSource)
        m_ownSource = nullptr;
    destroySource(source);
}

void DataControlSession::Worker::deviceFinished()
{
    qCWarning(lcWayland) << "The compositor ended the clipboard device";
    destroyDevice();
    m_broken = true;
}

bool DataControlSession::Worker::read(quint64 generation, ReadScope scope, ClipboardSnapshot &snapshot)
{
    if (!m_selection)
        return true;
    QStringList offeredText;
    for (const QString &type : m_offerTypes.value(m_selection)) {
        if (const int rank = textRank(type); rank >= 0) {
            if (rank != unreadableTextRank)
                offeredText.append(type);
            if (!snapshot.types.contains(PasteboardTypes::string))
                snapshot.types.append(PasteboardTypes::string);
        } else if (!snapshot.types.contains(type)) {
            snapshot.types.append(type);
        }
    }
    std::stable_sort(offeredText.begin(), offeredText.end(),
        [](const QString &a, const QString &b) { return textRank(a) < textRank(b); });

    if (scope == ReadScope::TypesOnly)
        return true;
    for (const QString &type : PasteboardTypes::captured) {
        if (!snapshot.types.contains(type))
            continue;
        // The hint comes first: a secret's data is better never fetched.
        if (scope == ReadScope::UnlessMarkedSecret && type != PasteboardTypes::passwordManagerHint
            && snapshot.isMarkedSecret())
            return true;
        if (type == PasteboardTypes::tiff && ImageHeader::size(snapshot.data.value(PasteboardTypes::png), "png"))
            continue;
        const QStringList names = type == PasteboardTypes::string ? offeredText : QStringList { type };
        for (const QString &name : names) {
            QByteArray bytes;
            const Outcome outcome = readType(name, CaptureLimits::maxBytes(type), generation, bytes);
            if (outcome == Outcome::Abandoned)
                return false;
            if (outcome == Outcome::TimedOut) {
                qCDebug(lcWayland) << "The clipboard owner did not answer for" << name;
                return true;
            }
            if (outcome == Outcome::Read) {
                if (name == QStringLiteral("STRING"))
                    bytes = QString::fromLatin1(bytes).toUtf8();
                snapshot.data.insert(type, bytes);
                break;
            }
        }
    }
    return true;
}

Outcome DataControlSession::Worker::readType(
    const QString &type, qint64 maxBytes, quint64 generation, QByteArray &bytes)
{
    int fds[2];
    if (pipe2(fds, O_CLOEXEC | O_NONBLOCK) != 0)
        return Outcome::Refused;
    receive(m_selection, type, fds[1]);
    close(fds[1]);
    const Clock::time_point deadline = Clock::now() + answerTimeout;
    Outcome outcome = Outcome::TimedOut;
    for (;;) {
        if (m_generation != generation) {
            outcome = Outcome::Abandoned;
            break;
        }
        const Wake wake = wait(fds[0], deadline);
        if (wake == Wake::Broken) {
            m_broken = true;
            outcome = Outcome::Abandoned;
            break;
        }
        if (wake == Wake::TimedOut)
            break;
        if (wake == Wake::Command) {
            applyCommands();
            std::lock_guard lock(m_mutex);
            if (m_stopping) {
                outcome = Outcome::Abandoned;
                break;
            }
            continue;
        }
        if (wake != Wake::Data)
            continue;
        char buffer[65536];
        const ssize_t got = ::read(fds[0], buffer, sizeof buffer);
        if (got > 0) {
            bytes.append(buffer, got);
            if (bytes.size() > maxBytes) {
                outcome = Outcome::TooLarge;
                break;
            }
        } else if (got == 0) {
            outcome = Outcome::Read;
            break;
        } else if (errno != EAGAIN && errno != EINTR) {
            outcome = Outcome::Refused;
            break;
        }
    }
    close(fds[0]);
    if (outcome != Outcome::Read)
        bytes.clear();
    return outcome;
}

void DataControlSession::Worker::serveTo(const char *type, int fd)
{
    const QString name = QString::fromUtf8(type);
    const QByteArray data = m_served.data.value(
        textTypes.contains(name) && !m_served.data.contains(name) ? PasteboardTypes::string : name);
    fcntl(fd, F_SETFL, fcntl(fd, F_GETFL) | O_NONBLOCK);
    qint64 done = 0;
    // A reader that stops taking bytes is given up on; the next copy waits
    // for no one.
    while (done < data.size()) {
        pollfd out { fd, POLLOUT, 0 };
        if (poll(&out, 1, DataControlSession::answerTimeoutMs) <= 0)
            break;
        const ssize_t written = ::write(fd, data.constData() + done, size_t(data.size() - done));
        if (written < 0 && errno != EAGAIN && errno != EINTR)
            break;
        if (written > 0)
            done += written;
    }
    close(fd);
}

std::unique_ptr<DataControlSession> DataControlSession::open()
{
    if (qEnvironmentVariableIsEmpty("WAYLAND_DISPLAY"))
        return nullptr;
    wl_display *display = wl_display_connect(nullptr);
    if (!display)
        return nullptr;
    Globals globals;
    wl_registry *registry = wl_display_get_registry(display);
    wl_registry_add_listener(registry, &registryListener, &globals);
    wl_display_roundtrip(display);
    std::unique_ptr<Worker> worker;
    std::unique_ptr<DataControlSession> session(new DataControlSession(nullptr));
    if (globals.seat && globals.ext) {
        auto *manager = static_cast<ExtProtocol::Manager *>(
            wl_registry_bind(registry, globals.ext->first, ExtProtocol::interface(), globals.ext->second));
        worker = std::make_unique<BoundWorker<ExtProtocol>>(session.get(), display, globals.seat, manager);
    } else if (globals.seat && globals.wlr) {
        auto *manager = static_cast<WlrProtocol::Manager *>(
            wl_registry_bind(registry, globals.wlr->first, WlrProtocol::interface(), globals.wlr->second));
        worker = std::make_unique<BoundWorker<WlrProtocol>>(session.get(), display, globals.seat, manager);
    }
    wl_registry_destroy(registry);
    if (!worker) {
        if (globals.seat)
            wl_seat_destroy(globals.seat);
        wl_display_disconnect(display);
        return nullptr;
    }
    worker->start();
    session->m_worker = std::move(worker);
    return session;
}

DataControlSession::DataControlSession(std::unique_ptr<Worker> worker)
    : m_worker(std::move(worker))
{
}

DataControlSession::~DataControlSession()
{
    if (!m_worker)
        return;
    wl_display *display = m_worker->m_display;
    wl_seat *seat = m_worker->m_seat;
    m_worker.reset();
    wl_seat_destroy(seat);
    wl_display_disconnect(display);
}

QString DataControlSession::protocolName() const
{
    return QString::fromLatin1(m_worker->protocolName());
}

void DataControlSession::read(quint64 generation, ReadScope scope)
{
    {
        std::lock_guard lock(m_worker->m_mutex);
        m_worker->m_pendingRead = { generation, scope };
    }
    const uint64_t one = 1;
    [[maybe_unused]] const ssize_t written = ::write(m_worker->m_wakeFd, &one, sizeof one);
}

quint64 DataControlSession::serve(const ClipboardSnapshot &snapshot)
{
    std::unique_lock lock(m_worker->m_mutex);
    const quint64 generation = ++m_worker->m_generation;
    m_worker->m_pendingServe = { snapshot, generation };
    const uint64_t one = 1;
    [[maybe_unused]] const ssize_t written = ::write(m_worker->m_wakeFd, &one, sizeof one);
    // A paste may follow at once: the compositor must have our contents
    // first. A worker busy with a slow reader is not waited for long.
    m_worker->m_applied.wait_for(lock, std::chrono::seconds(1),
        [&] { return m_worker->m_appliedGeneration >= generation || m_worker->m_stopping; });
    return generation;
}

bool DataControlSession::isCurrent(quint64 generation) const
{
    return m_worker->m_generation == generation;
}

bool DataControlSession::isUnowned() const
{
    return m_worker->m_unowned;
}
