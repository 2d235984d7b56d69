// SPDX-License-Identifier: GPL-3.0-or-later
// Load, save and add on histories of realistic sizes, with encoding and
// decoding also timed alone to show where the time of a load or save goes.
#include "AppSettings.h"
#include "ClipboardStore.h"
#include "HistoryCodec.h"
#include "HistoryFolder.h"
#include "PrivateFiles.h"

#include <QFile>
#include <QTemporaryDir>

#include <benchmark/benchmark.h>

#include <sys/resource.h>

#include <algorithm>
#include <random>
#include <string>
#include <utility>
#include <vector>

namespace {

struct Shape {
    int entries;
    qsizetype textLength;
};

// 2,000 entries of 200 characters: a long history of short copies.
constexpr Shape small { 2'000, 200 };
// 200 entries of 100 KB: about 20 MB of long copies.
constexpr Shape large { 200, 100'000 };
// The whole-history bound: 256 entries of 1 Mi characters, run alone for
// its peak memory (a process's peak covers everything it ran before):
//   zettly_bench --benchmark_filter=/bound
constexpr Shape bound { 256, ClipboardStore::historyByteBudget / 256 - ClipboardStore::entryOverhead - 256 };

// Words and punctuation as copied from prose and code, some of which JSON
// must escape, plus a few letters outside ASCII.
QString sampleText(std::mt19937 &random, qsizetype length)
{
    static const QStringList words {
        QStringLiteral("clipboard"),
        QStringLiteral("history"),
        QStringLiteral("the"),
        QStringLiteral("of"),
        QStringLiteral("return"),
        QStringLiteral("value;"),
        QStringLiteral("\"quoted\""),
        QStringLiteral("path/to/file"),
        QStringLiteral("naïve"),
        QStringLiteral("Straße"),
        QStringLiteral("\t"),
        QStringLiteral("\n"),
        QStringLiteral("12345"),
        QStringLiteral("https://example.org/page?q=1"),
    };
    std::uniform_int_distribution<qsizetype> pick(0, words.size() - 1);
    QString text;
    text.reserve(length + 40);
    while (text.size() < length) {
        text += words.at(pick(random));
        text += u' ';
    }
    text.truncate(length);
    return text;
}

QList<ClipItem> history(const Shape &shape)
{
    std::mt19937 random(shape.entries);
    QList<ClipItem> items;
    items.reserve(shape.entries);
    // Long texts are made of a few distinct blocks: varied enough, and quick
    // to build.
    const qsizetype block = std::min<qsizetype>(shape.textLength, 100'000);
    QStringList blocks;
    for (int i = 0; i < 8; ++i)
        blocks.append(sampleText(random, block));
    for (int i = 0; i < shape.entries; ++i) {
        QString text;
        text.reserve(shape.textLength);
        for (qsizetype j = 0; text.size() < shape.textLength; ++j)
            text += blocks.at((i + j * 3) % blocks.size());
        text.truncate(shape.textLength);
        items.append(ClipItem {
            .kind = ClipKind::Text,
            .preview = text.left(200),
            .fullText = text,
            .createdAt = 700'000'000.0 + i * 61.25,
            .sourceApp = QStringLiteral("org.example.Editor"),
        });
    }
    return items;
}

void reportFileSize(benchmark::State &state, qsizetype bytes)
{
    state.SetBytesProcessed(state.iterations() * bytes);
    state.counters["file_MB"] = double(bytes) / 1e6;
    struct rusage usage { };
    ::getrusage(RUSAGE_SELF, &usage);
    state.counters["peak_RSS_MB"] = double(usage.ru_maxrss) / 1024;
}

void BM_Encode(benchmark::State &state, Shape shape)
{
    const QList<ClipItem> items = history(shape);
    qsizetype bytes = 0;
    for (auto _ : state) {
        const QByteArray encoded = HistoryCodec::encode(items);
        bytes = encoded.size();
        benchmark::DoNotOptimize(encoded.constData());
    }
    reportFileSize(state, bytes);
}

void BM_Decode(benchmark::State &state, Shape shape)
{
    const QByteArray encoded = HistoryCodec::encode(history(shape));
    for (auto _ : state) {
        auto items = HistoryCodec::decode(encoded);
        if (!items || items->size() != shape.entries)
            state.SkipWithError("history did not decode");
        benchmark::DoNotOptimize(items);
    }
    reportFileSize(state, encoded.size());
}

// The atomic replacement alone, with bytes encoded beforehand.
void BM_WriteFile(benchmark::State &state, Shape shape)
{
    QTemporaryDir dir;
    const QByteArray encoded = HistoryCodec::encode(history(shape));
    const QString path = dir.filePath(QStringLiteral("clips.json"));
    for (auto _ : state) {
        if (!PrivateFiles::writeAtomically(path, encoded))
            state.SkipWithError("write failed");
    }
    reportFileSize(state, encoded.size());
}

// The read alone.
void BM_ReadFile(benchmark::State &state, Shape shape)
{
    QTemporaryDir dir;
    const HistoryFolder folder(dir.path());
    folder.save(history(shape));
    for (auto _ : state) {
        QFile file(folder.dbPath());
        if (!file.open(QIODevice::ReadOnly))
            state.SkipWithError("read failed");
        const QByteArray bytes = file.readAll();
        benchmark::DoNotOptimize(bytes.constData());
    }
    reportFileSize(state, QFile(folder.dbPath()).size());
}

void BM_Load(benchmark::State &state, Shape shape)
{
    QTemporaryDir dir;
    HistoryFolder folder(dir.path());
    folder.save(history(shape));
    for (auto _ : state) {
        const QList<ClipItem> items = folder.load();
        if (items.size() != shape.entries)
            state.SkipWithError("history did not load");
        benchmark::DoNotOptimize(items.constData());
    }
    reportFileSize(state, QFile(folder.dbPath()).size());
}

void BM_Save(benchmark::State &state, Shape shape)
{
    QTemporaryDir dir;
    const HistoryFolder folder(dir.path());
    const QList<ClipItem> items = history(shape);
    for (auto _ : state) {
        if (!folder.save(items))
            state.SkipWithError("save failed");
    }
    reportFileSize(state, QFile(folder.dbPath()).size());
}

// One capture on a full history: copy, trim to the limit and save.
void BM_StoreAddToFullHistory(benchmark::State &state)
{
    QTemporaryDir dir;
    AppSettings settings(dir.filePath(QStringLiteral("settings/defaults.json")));
    settings.setHistoryLimit(small.entries);
    const QString historyDir = dir.filePath(QStringLiteral("history"));
    HistoryFolder(historyDir).save(history(small));
    ClipboardStore store(settings, historyDir);
    if (store.items().size() != small.entries)
        state.SkipWithError("history did not load");

    std::mt19937 random(1);
    for (auto _ : state) {
        state.PauseTiming();
        const QString text = sampleText(random, small.textLength);
        state.ResumeTiming();
        store.add(ClipItem { .kind = ClipKind::Text, .preview = text, .fullText = text });
    }
    if (store.items().size() != small.entries)
        state.SkipWithError("limit not kept");
    reportFileSize(state, QFile(historyDir + QStringLiteral("/clips.json")).size());
}

// What a change costs the main thread on a history at the bound: the save
// itself runs on the writer thread.
void BM_StoreTogglePinAtBound(benchmark::State &state)
{
    QTemporaryDir dir;
    AppSettings settings(dir.filePath(QStringLiteral("settings/defaults.json")));
    const QString historyDir = dir.filePath(QStringLiteral("history"));
    HistoryFolder(historyDir).save(history(bound));
    ClipboardStore store(settings, historyDir);
    if (store.items().size() != bound.entries)
        state.SkipWithError("history did not load");
    for (auto _ : state)
        store.togglePin(store.items().constLast().id);
    // After the timed loop: the saves still under way are not counted.
    store.flush();
    reportFileSize(state, QFile(historyDir + QStringLiteral("/clips.json")).size());
}

} // namespace

namespace {

// Shared settings; with --benchmark_repetitions the fastest run is reported
// too, which on a busy machine says more than the mean.
benchmark::internal::Benchmark *timed(benchmark::internal::Benchmark *benchmark)
{
    return benchmark->Unit(benchmark::kMillisecond)->ComputeStatistics("min", [](const std::vector<double> &values) {
        return *std::min_element(values.begin(), values.end());
    });
}

const int registered = [] {
    for (const auto &[name, shape] :
        { std::pair { "small", small }, std::pair { "large", large }, std::pair { "bound", bound } }) {
        const std::string suffix = std::string("/") + name;
        timed(benchmark::RegisterBenchmark(("BM_Load" + suffix).c_str(), BM_Load, shape));
        timed(benchmark::RegisterBenchmark(("BM_ReadFile" + suffix).c_str(), BM_ReadFile, shape));
        timed(benchmark::RegisterBenchmark(("BM_Decode" + suffix).c_str(), BM_Decode, shape));
        timed(benchmark::RegisterBenchmark(("BM_Save" + suffix).c_str(), BM_Save, shape));
        timed(benchmark::RegisterBenchmark(("BM_Encode" + suffix).c_str(), BM_Encode, shape));
        timed(benchmark::RegisterBenchmark(("BM_WriteFile" + suffix).c_str(), BM_WriteFile, shape));
    }
    timed(benchmark::RegisterBenchmark("BM_StoreAddToFullHistory", BM_StoreAddToFullHistory));
    timed(benchmark::RegisterBenchmark("BM_StoreTogglePinAtBound", BM_StoreTogglePinAtBound));
    return 0;
}();

} // namespace

BENCHMARK_MAIN();
