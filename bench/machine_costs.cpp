// SPDX-License-Identifier: GPL-3.0-or-later
// What the machine itself costs, whatever program runs on it: touching fresh
// memory, and waking a thread that sleeps 2 ms at a time. On a virtual
// machine both may cost many times what they cost on a desktop, which then
// shows in Zettly's load times and stall figures. Reports figures, asserts
// nothing.
//
//   machine_costs [seconds of wake-ups, 10 by default]
//
// Run it once idle and once beside busy programs (for example one
// `sh -c 'while :; do :; done'` per core) to see what a loaded machine adds.
#include <sys/mman.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <thread>

namespace {

using Clock = std::chrono::steady_clock;

double millisecondsSince(Clock::time_point start)
{
    return std::chrono::duration<double, std::milli>(Clock::now() - start).count();
}

// As much as a 21 MB history's texts take once decoded to UTF-16.
void freshMemory()
{
    constexpr std::size_t bytes = 40u << 20;
    constexpr std::size_t page = 4096;
    for (int round = 0; round < 3; ++round) {
        void *mapped = ::mmap(nullptr, bytes, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
        if (mapped == MAP_FAILED) {
            std::perror("mmap");
            return;
        }
        auto *memory = static_cast<volatile char *>(mapped);
        const Clock::time_point first = Clock::now();
        for (std::size_t at = 0; at < bytes; at += page)
            memory[at] = 1;
        const double firstMs = millisecondsSince(first);
        const Clock::time_point again = Clock::now();
        std::memset(mapped, 2, bytes);
        const double againMs = millisecondsSince(again);
        std::printf("40 MiB of fresh memory: first touch %.1f ms (%.2f µs a page), written again %.1f ms\n", firstMs,
            firstMs * 1000 / double(bytes / page), againMs);
        ::munmap(mapped, bytes);
    }
}

void wakeUps(int seconds)
{
    constexpr auto interval = std::chrono::milliseconds(2);
    const Clock::time_point end = Clock::now() + std::chrono::seconds(seconds);
    double longest = 0;
    int late = 0;
    int count = 0;
    while (Clock::now() < end) {
        const Clock::time_point start = Clock::now();
        std::this_thread::sleep_for(interval);
        const double gap = millisecondsSince(start);
        longest = std::max(longest, gap);
        late += gap > 10 ? 1 : 0;
        ++count;
    }
    std::printf("sleeping 2 ms, %d times: longest gap %.1f ms, %d gaps over 10 ms\n", count, longest, late);
}

} // namespace

int main(int argc, char *argv[])
{
    const int seconds = argc > 1 ? std::max(1, std::atoi(argv[1])) : 10;
    freshMemory();
    wakeUps(seconds);
    return 0;
}
