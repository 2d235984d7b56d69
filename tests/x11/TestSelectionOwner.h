// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QList>

#include <chrono>
#include <initializer_list>
#include <memory>

// Owns the CLIPBOARD selection, on an X connection and a thread of its own,
// and serves the given targets as another program would. Data larger than one
// request goes INCR, in chunks of 256 KiB as Qt and GTK owners send it; one
// such transfer at a time.
class TestSelectionOwner {
public:
    struct Target {
        QByteArray name;
        QByteArray bytes;
        // False: requests for this target get no answer at all.
        bool answered = true;
    };

    enum class Behaviour {
        Answers,
        // Refuses TARGETS, serves the targets themselves.
        RefusesTargets,
        // Answers nothing, as a frozen program.
        NeverAnswers,
    };

    // The targets offered. Its own type, so that a single target of two
    // string literals cannot also read as a QList built from two iterators.
    struct Offer {
        Offer(std::initializer_list<Target> targets)
            : targets(targets)
        {
        }
        Offer(QList<Target> targets)
            : targets(std::move(targets))
        {
        }
        QList<Target> targets;
    };

    // Takes the selection, offering targets in this order after TARGETS.
    explicit TestSelectionOwner(Offer offer, Behaviour behaviour = Behaviour::Answers);
    // Gives the selection up, unless another client has taken it since.
    ~TestSelectionOwner();

    TestSelectionOwner(const TestSelectionOwner &) = delete;
    TestSelectionOwner &operator=(const TestSelectionOwner &) = delete;

    // True once the X server names this owner, false if it does not within
    // timeoutMs (another client took the selection, or there is no server).
    bool waitUntilOwner(int timeoutMs = 3000) const;
    // Gives the selection up while staying alive, as a program that clears
    // the clipboard does.
    void giveUp();
    // The targets requested so far, TARGETS included, answered or not.
    QList<QByteArray> requestedTargets() const;
    // When the request taking the selection left for the server: the start of
    // the copy, for latency measurements. Unset when there was no server.
    std::chrono::steady_clock::time_point ownershipRequestedAt() const;

private:
    struct Server;
    std::unique_ptr<Server> m_server;
};
