// SPDX-License-Identifier: GPL-3.0-or-later
#include "ClipItem.h"
#include "HistoryCodec.h"
#include "TestFolder.h"

#include <QSet>

#include <functional>

namespace {

std::optional<ClipItem> decodeOne(const QByteArray &json)
{
    const auto items = HistoryCodec::decode('[' + json + ']');
    if (!items)
        return std::nullopt;
    EXPECT_EQ(items->size(), 1);
    return items->value(0);
}

const char *const validText = R"({"id":"0F1E2D3C-4B5A-4978-8695-A4B3C2D1E0F9","kind":"text",)"
                              R"("preview":"a","fullText":"a","pinned":false,"createdAt":12.5})";

} // namespace

TEST(ClipItemJsonTest, WritesTheExactCompactObject)
{
    const ClipItem item {
        .id = QUuid::fromString(QStringLiteral("0f1e2d3c-4b5a-4978-8695-a4b3c2d1e0f9")),
        .kind = ClipKind::Url,
        .preview = QStringLiteral("https://example.org/a"),
        .fullText = QStringLiteral("https://example.org/a"),
        .pinned = true,
        // Unix time 1,700,000,000 on the 2001 epoch.
        .createdAt = 1700000000.0 - ClipItem::referenceDateOffset + 0.25,
    };
    EXPECT_EQ(item.toJson(),
        QByteArray(R"({"id":"0F1E2D3C-4B5A-4978-8695-A4B3C2D1E0F9","kind":"url",)"
                   R"("preview":"https://example.org/a","fullText":"https://example.org/a",)"
                   R"("pinned":true,"createdAt":721692800.25})"));

    // Absent optionals are left out, never written as null; an empty path list
    // stays a present, empty list.
    ClipItem files { .kind = ClipKind::File, .preview = QStringLiteral("0 fichiers"), .filePaths = QStringList() };
    const QByteArray written = files.toJson();
    for (const char *absent : { "fullText", "sourceApp", "imageRelPath", "null" })
        EXPECT_FALSE(written.contains(absent)) << absent;
    EXPECT_TRUE(written.contains(R"("filePaths":[])"));
    EXPECT_EQ(decodeOne(written), files);
}

TEST(ClipItemJsonTest, RoundTripKeepsEveryFieldExactly)
{
    const QList<ClipItem> items {
        ClipItem { .kind = ClipKind::Text,
            .preview = QStringLiteral("ligne un ligne deux"),
            .fullText = QStringLiteral("ligne un\nligne deux \"/\\ \u00e9\U0001F600"),
            .createdAt = 785000000.123456789,
            .sourceApp = QStringLiteral("org.gnome.gedit") },
        ClipItem { .kind = ClipKind::Image,
            .preview = QStringLiteral("Image 1280×800"),
            .imageRelPath = QStringLiteral("0F1E2D3C-4B5A-4978-8695-A4B3C2D1E0F9.png"),
            .pinned = true,
            .createdAt = -3.5 },
        ClipItem { .kind = ClipKind::File,
            .preview = QStringLiteral("3 fichiers"),
            .filePaths = QStringList { QStringLiteral("/a b/c"), QStringLiteral("/d"), QStringLiteral("/é") },
            .createdAt = 0 },
        ClipItem { .kind = ClipKind::Color, .preview = QStringLiteral("#FF0000"), .createdAt = 1e9 + 1.0 / 3 },
        // Control characters, a lone surrogate at either end, huge and tiny
        // numbers: whatever a hostile clipboard gives must come back as it was.
        ClipItem { .kind = ClipKind::Text,
            .preview = QString(QChar(0xDC00)) + QStringLiteral("\x01\t\r\b\f\x7f\u2028\n\uFEFF"),
            .fullText = QStringLiteral("a") + QChar(0xD800),
            .createdAt = 1e300 },
        ClipItem {
            .kind = ClipKind::Text, .preview = QString(), .fullText = QString(), .createdAt = 9007199254740993.0 },
        ClipItem { .kind = ClipKind::Text, .preview = QStringLiteral("x"), .createdAt = 4.9e-324 },
    };
    const QByteArray bytes = HistoryCodec::encode(items);
    EXPECT_FALSE(bytes.contains('\n'));
    EXPECT_FALSE(bytes.contains(": "));
    // Equality compares createdAt to the exact instant.
    EXPECT_EQ(HistoryCodec::decode(bytes), items);
    EXPECT_EQ(HistoryCodec::encode({}), QByteArray("[]"));
}

TEST(ClipItemJsonTest, ReadingIsAllOrNothing)
{
    // Null optionals read as absent; unknown keys and escaped slashes are fine.
    const auto lenient = decodeOne(R"({"id":"0f1e2d3c-4b5a-4978-8695-a4b3c2d1e0f9","kind":"url","preview":"h:\/\/x",)"
                                   R"("fullText":null,"filePaths":null,"sourceApp":null,"imageRelPath":null,)"
                                   R"("pinned":false,"createdAt":3,"colour":"red"})");
    ASSERT_TRUE(lenient);
    EXPECT_FALSE(lenient->fullText);
    EXPECT_FALSE(lenient->filePaths);
    EXPECT_EQ(lenient->preview, QStringLiteral("h://x"));
    EXPECT_FALSE(lenient->toJson().contains("fullText"));
    ASSERT_TRUE(decodeOne(validText));

    // What the file has always been read as: a name given twice counts with
    // its last value, names may be escaped, a backslash before another
    // character stands for it, a fraction may be empty, a byte-order mark
    // may lead.
    const auto twice = decodeOne(R"({"id":"0F1E2D3C-4B5A-4978-8695-A4B3C2D1E0F9","kind":"text","preview":"a",)"
                                 R"("pinned":1,"\u0070inned":true,"createdAt":"x","createdAt":2.})");
    ASSERT_TRUE(twice);
    EXPECT_TRUE(twice->pinned);
    EXPECT_EQ(twice->createdAt, 2.0);
    const auto escapes = decodeOne(R"({"id":"0F1E2D3C-4B5A-4978-8695-A4B3C2D1E0F9","kind":"text",)"
                                   R"("preview":"\x\u00e9\ud83d\ude00\uDC00","pinned":false,"createdAt":-0})");
    ASSERT_TRUE(escapes);
    EXPECT_EQ(escapes->preview, QStringLiteral("x\u00e9\U0001F600") + QChar(0xDC00));
    EXPECT_TRUE(HistoryCodec::decode("\xEF\xBB\xBF[" + QByteArray(validText) + "] \n"));

    const char *const broken[] = {
        R"({"id":"0F1E2D3C-4B5A-4978-8695-A4B3C2D1E0F9","kind":"URL","preview":"a","pinned":false,"createdAt":1})",
        R"({"id":"0F1E2D3C-4B5A-4978-8695-A4B3C2D1E0F9","kind":"link","preview":"a","pinned":false,"createdAt":1})",
        R"({"id":"0F1E2D3C-4B5A-4978-8695-A4B3C2D1E0F9","kind":"text","preview":"a","createdAt":1})",
        R"({"id":"0F1E2D3C-4B5A-4978-8695-A4B3C2D1E0F9","kind":"text","preview":"a","pinned":null,"createdAt":1})",
        R"({"id":"0F1E2D3C-4B5A-4978-8695-A4B3C2D1E0F9","kind":"text","preview":"a","pinned":0,"createdAt":1})",
        R"({"id":"0F1E2D3C-4B5A-4978-8695-A4B3C2D1E0F9","kind":"text","preview":"a","pinned":false,"createdAt":"1"})",
        R"({"id":"0F1E2D3C-4B5A-4978-8695-A4B3C2D1E0F9","kind":"text","preview":"a","pinned":false})",
        R"({"id":"0F1E2D3C-4B5A-4978-8695-A4B3C2D1E0F9","kind":"text","preview":7,"pinned":false,"createdAt":1})",
        R"({"id":"{0F1E2D3C-4B5A-4978-8695-A4B3C2D1E0F9}","kind":"text","preview":"a","pinned":false,"createdAt":1})",
        R"({"id":"0F1E2D3C4B5A49788695A4B3C2D1E0F9","kind":"text","preview":"a","pinned":false,"createdAt":1})",
        R"({"id":"0F1E2D3C-4B5A-4978-8695-A4B3C2D1E0FG","kind":"text","preview":"a","pinned":false,"createdAt":1})",
        R"({"kind":"text","preview":"a","pinned":false,"createdAt":1})",
        R"({"id":"0F1E2D3C-4B5A-4978-8695-A4B3C2D1E0F9","kind":"text","preview":"a","fullText":5,"pinned":false,"createdAt":1})",
        R"({"id":"0F1E2D3C-4B5A-4978-8695-A4B3C2D1E0F9","kind":"file","preview":"a","filePaths":["/a",3],"pinned":false,"createdAt":1})",
        R"({"id":"0F1E2D3C-4B5A-4978-8695-A4B3C2D1E0F9","kind":"file","preview":"a","filePaths":"/a","pinned":false,"createdAt":1})",
    };
    for (const char *json : broken)
        EXPECT_FALSE(decodeOne(json)) << json;

    // Anything in the file must be well-formed, used or not; numbers must
    // fit a double, nesting stops at 1024 levels, the history's array being
    // the first.
    const QByteArray entryStart = R"({"id":"0F1E2D3C-4B5A-4978-8695-A4B3C2D1E0F9","kind":"text","preview":"a",)";
    for (const char *member : { R"("x":[tru],)", R"("x":{"a":1,},)", R"("x":"\u12G4",)", R"("x":01,)", R"("x":1e400,)",
             R"("x":1e-400,)", R"("x":"\é",)", R"("x":-,)" })
        EXPECT_FALSE(decodeOne(entryStart + member + R"("pinned":false,"createdAt":1})")) << member;
    const auto nested = [&](int levels) {
        return decodeOne(entryStart + R"("x":)" + QByteArray(levels, '[') + QByteArray(levels, ']')
            + R"(,"pinned":false,"createdAt":1})");
    };
    EXPECT_TRUE(nested(1022));
    EXPECT_FALSE(nested(1023));

    // One bad entry empties the whole list; so does anything but an array.
    const QByteArray good(validText);
    EXPECT_TRUE(HistoryCodec::decode('[' + good + ',' + good + ']'));
    EXPECT_FALSE(HistoryCodec::decode('[' + good + ',' + QByteArray(broken[1]) + ']'));
    for (const char *bytes :
        { "", "{}", "[1]", "[null]", "[{}]", "[] []", "[", "\xEF\xBB\xBF[]x", "[]\xFF", " \xEF\xBB\xBF[]" })
        EXPECT_FALSE(HistoryCodec::decode(bytes)) << bytes;
}

// Long full texts are decoded once the rest is read, two threads sharing
// them when they are many: they must land in their own entries, and a bad
// escape in any of them, used or replaced, still empties the list.
TEST(ClipItemJsonTest, LongTextsReadLaterAreExactAndAllOrNothing)
{
    const QByteArray entryStart = R"({"id":"0F1E2D3C-4B5A-4978-8695-A4B3C2D1E0F9","kind":"text","preview":"a",)";
    const auto entry = [&](const QByteArray &fullTexts) -> QByteArray {
        return entryStart + fullTexts + R"("pinned":false,"createdAt":1})";
    };
    const auto fullText = [](const QByteArray &text) -> QByteArray { return R"("fullText":")" + text + R"(",)"; };
    const auto longText = [](char letter, qsizetype size) { return QByteArray(size, letter); };
    const QByteArray bad = R"(\u12G4)";

    // Three of 3 MiB, a short one after each: the first on a thread of its
    // own, the other two here.
    const auto many = [&](int broken) {
        QByteArray json = "[";
        for (int i = 0; i < 3; ++i) {
            const QByteArray text = longText(char('x' + i), 3 << 20) + (i == broken ? bad : QByteArray());
            json += entry(fullText(text)) + ',' + entry(fullText("court")) + (i < 2 ? ',' : ']');
        }
        return HistoryCodec::decode(json);
    };
    const auto whole = many(-1);
    ASSERT_TRUE(whole);
    ASSERT_EQ(whole->size(), 6);
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(whole->at(2 * i).fullText, QString::fromLatin1(longText(char('x' + i), 3 << 20))) << i;
        EXPECT_EQ(whole->at(2 * i + 1).fullText, QStringLiteral("court")) << i;
    }
    for (int broken : { 0, 2 })
        EXPECT_FALSE(many(broken)) << broken;

    // One long text, read later on this thread; a name given twice.
    const QByteArray longBad = longText('y', 70000) + bad;
    const QByteArray longGood = longText('z', 70000);
    const struct {
        const char *name;
        QByteArray members;
        std::optional<QByteArray> fullText;
    } rows[] = {
        { "long", fullText(longGood), longGood },
        { "long, bad", fullText(longBad), std::nullopt },
        { "long then short", fullText(longGood) + fullText("b"), "b" },
        { "short then long", fullText("b") + fullText(longGood), longGood },
        { "bad long then short", fullText(longBad) + fullText("b"), std::nullopt },
        { "bad long then null", fullText(longBad) + R"("fullText":null,)", std::nullopt },
        { "bad long then long", fullText(longBad) + fullText(longGood), std::nullopt },
        { "long then a number", fullText(longGood) + R"("fullText":1,)", std::nullopt },
    };
    for (const auto &row : rows) {
        const auto items = HistoryCodec::decode('[' + entry(row.members) + ']');
        ASSERT_EQ(items.has_value(), row.fullText.has_value()) << row.name;
        if (items) {
            EXPECT_EQ(items->at(0).fullText, QString::fromLatin1(*row.fullText)) << row.name;
        }
    }
}

TEST(ClipItemEqualityTest, CanonicalTextsAreEqualAndHashAlike)
{
    ClipItem composed = textClip(QStringLiteral("caf\u00e9"));
    ClipItem decomposed = composed;
    decomposed.preview = QStringLiteral("cafe\u0301");
    decomposed.fullText = QStringLiteral("cafe\u0301");
    EXPECT_EQ(composed, decomposed);
    EXPECT_EQ(qHash(composed, 7), qHash(decomposed, 7));

    // No case folding, no trimming; every field takes part, and an absent
    // optional differs from an empty one.
    const std::function<void(ClipItem &)> changes[] = {
        [](ClipItem &item) { item.fullText = QStringLiteral("CAF\u00c9"); },
        [](ClipItem &item) { item.fullText = QStringLiteral("caf\u00e9 "); },
        [](ClipItem &item) { item.id = QUuid::createUuid(); },
        [](ClipItem &item) { item.sourceApp = QString(); },
        [](ClipItem &item) { item.createdAt += 1e-6; },
        [](ClipItem &item) { item.pinned = true; },
    };
    for (const auto &change : changes) {
        ClipItem other = composed;
        change(other);
        EXPECT_FALSE(composed == other) << other.toJson().constData();
        EXPECT_NE(qHash(composed, 0), qHash(other, 0)) << other.toJson().constData();
    }

    ClipItem otherId = composed;
    otherId.id = QUuid::createUuid();
    EXPECT_EQ((QSet<ClipItem> { composed, decomposed, otherId }).size(), 2);
}
