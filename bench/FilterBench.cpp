// SPDX-License-Identifier: GPL-3.0-or-later
// The picker's filter, as one key press costs it on the main thread: the
// history searched for the query typed so far, the searched texts already
// prepared (steady) or prepared by this search (first key after a start).
#include "ClipItem.h"
#include "SearchIndex.h"

#include <benchmark/benchmark.h>

#include <random>

namespace {

// Mixed-case prose with a few letters outside ASCII, so that lower-casing
// and composition have work to do.
QList<ClipItem> history(int entries, qsizetype length)
{
    static const QStringList words { QStringLiteral("Presse-papier"), QStringLiteral("historique"),
        QStringLiteral("Entrée"), QStringLiteral("the"), QStringLiteral("Picker"), QStringLiteral("café"),
        QStringLiteral("return"), QStringLiteral("{ value: 42 },"), QStringLiteral("ÉTÉ"), QStringLiteral("zettly") };
    std::mt19937 random(7);
    QList<ClipItem> items;
    for (int i = 0; i < entries; ++i) {
        QString text;
        text.reserve(length + 16);
        while (text.size() < length)
            text += words[random() % words.size()] + QLatin1Char(' ');
        text.truncate(length);
        items.append({ .kind = ClipKind::Text, .preview = text.left(200), .fullText = text });
    }
    return items;
}

void filter(benchmark::State &state, int entries, qsizetype length, const QString &query, bool prepared)
{
    const QList<ClipItem> items = history(entries, length);
    SearchIndex index;
    if (prepared)
        index.matchingRows(items, QStringLiteral("warm"));
    qsizetype found = 0;
    for (auto _ : state) {
        if (!prepared) {
            state.PauseTiming();
            index = SearchIndex();
            state.ResumeTiming();
        }
        found = index.matchingRows(items, query).size();
        benchmark::DoNotOptimize(found);
    }
    state.counters["matches"] = double(found);
    state.counters["MB"] = double(entries) * double(length) / 1e6;
}

// 2,000 entries of 200 characters; 200 entries of 100 KB (20 MB). A query
// of one letter matches nearly everything; one that matches nothing reads
// every character.
void BM_Filter2000Short_OneLetter(benchmark::State &state)
{
    filter(state, 2'000, 200, QStringLiteral("e"), true);
}
void BM_Filter2000Short_NoMatch(benchmark::State &state)
{
    filter(state, 2'000, 200, QStringLiteral("xyzzy"), true);
}
void BM_Filter200Long_OneLetter(benchmark::State &state)
{
    filter(state, 200, 100'000, QStringLiteral("q"), true);
}
void BM_Filter200Long_NoMatch(benchmark::State &state)
{
    filter(state, 200, 100'000, QStringLiteral("xyzzy"), true);
}
void BM_Filter200Long_AccentedNoMatch(benchmark::State &state)
{
    filter(state, 200, 100'000, QStringLiteral("Été xyz"), true);
}
void BM_Filter2000Short_FirstKey(benchmark::State &state)
{
    filter(state, 2'000, 200, QStringLiteral("xyzzy"), false);
}
void BM_Filter200Long_FirstKey(benchmark::State &state)
{
    filter(state, 200, 100'000, QStringLiteral("xyzzy"), false);
}

} // namespace

BENCHMARK(BM_Filter2000Short_OneLetter)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_Filter2000Short_NoMatch)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_Filter200Long_OneLetter)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Filter200Long_NoMatch)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Filter200Long_AccentedNoMatch)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Filter2000Short_FirstKey)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Filter200Long_FirstKey)->Unit(benchmark::kMillisecond)->Iterations(5);
