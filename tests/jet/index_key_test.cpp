// Keys against those that Access stored, and the text order against the keys.
#include <QFile>
#include <QTest>

#include "data/jet/index_key.h"

#include <cstring>
#include <limits>
#include <random>

using jet::Column;
using jet::ColumnType;
using jet::KeyBytes;
using jet::Version;

Q_DECLARE_METATYPE(Column)
Q_DECLARE_METATYPE(Value)

namespace {

Column columnOf(ColumnType type)
{
    Column column;
    column.name = "Field";
    column.typeCode = static_cast<std::uint8_t>(type);
    column.sortOrder = 0x0409;
    column.codePage = 1252;
    return column;
}

QByteArray keyOf(const Value &value, const Column &column, bool ascending, Version version)
{
    KeyBytes key{0xAB}; // what stands there already must stay
    if (!jet::appendKey(key, value, column, ascending, version))
        return key == KeyBytes{0xAB} ? QByteArray("no key") : QByteArray("output touched");
    QByteArray bytes;
    for (std::size_t i = 1; i < key.size(); ++i)
        bytes.append(static_cast<char>(key[i]));
    return bytes.toHex().toUpper();
}

QByteArray textKey(const std::string &text, Version version, bool ascending = true)
{
    return keyOf(text, columnOf(ColumnType::Text), ascending, version);
}

template <class T>
T fromHex(const QByteArray &hex)
{
    const QByteArray bytes = QByteArray::fromHex(hex);
    T number{};
    std::memcpy(&number, bytes.constData(), sizeof number);
    return number;
}

/// A field of the vector file: stored bytes in hexadecimal, code points of a text, "null".
Value parseValue(const QByteArray &type, const QByteArray &text)
{
    if (text == "null")
        return Null{};
    if (type == "boolean")
        return text == "1";
    if (type == "byte")
        return fromHex<std::uint8_t>(text);
    if (type == "integer")
        return fromHex<std::int16_t>(text);
    if (type == "long")
        return fromHex<std::int32_t>(text);
    if (type == "currency")
        return Currency::fromRaw(fromHex<std::int64_t>(text));
    if (type == "single")
        return fromHex<float>(text);
    if (type == "double")
        return fromHex<double>(text);
    if (type == "datetime")
        return Date::fromSerial(fromHex<double>(text));
    if (type == "guid") {
        Guid guid;
        const QByteArray bytes = QByteArray::fromHex(text);
        std::memcpy(guid.bytes.data(), bytes.constData(), guid.bytes.size());
        return guid;
    }
    QString characters;
    for (const QByteArray &point : text.split(' '))
        if (!point.isEmpty())
            characters.append(QChar(point.toUShort(nullptr, 16)));
    return characters.toStdString();
}

ColumnType parseType(const QByteArray &type)
{
    static const QHash<QByteArray, ColumnType> types{
        {"boolean", ColumnType::Boolean},   {"byte", ColumnType::Byte},
        {"integer", ColumnType::Integer},   {"long", ColumnType::Long},
        {"currency", ColumnType::Currency}, {"single", ColumnType::Single},
        {"double", ColumnType::Double},     {"datetime", ColumnType::DateTime},
        {"guid", ColumnType::Guid},         {"text", ColumnType::Text},
    };
    return types.value(type, ColumnType::Ole);
}

int sign(int order)
{
    return order < 0 ? -1 : order > 0 ? 1 : 0;
}

/// The order that the index gives two texts.
int orderByKeys(const std::string &a, const std::string &b, Version version)
{
    KeyBytes left, right;
    const Column column = columnOf(ColumnType::Text);
    if (!jet::appendKey(left, a, column, true, version) || !jet::appendKey(right, b, column, true, version))
        qFatal("text without a key");
    return left < right ? -1 : left > right ? 1 : 0;
}

KeyBytes orderBytes(const std::string &text, Version version)
{
    KeyBytes bytes;
    jet::appendTextOrder(bytes, text, version);
    return bytes;
}

} // namespace

class IndexKeyTest : public QObject
{
    Q_OBJECT

private slots:
    void keysEqualThoseOfAccess()
    {
        QFile file(QFINDTESTDATA("key_vectors.csv"));
        QVERIFY(file.open(QIODevice::ReadOnly));
        file.readLine();
        int vectors = 0;
        while (!file.atEnd()) {
            const QByteArray line = file.readLine().trimmed();
            const QList<QByteArray> fields = line.split(',');
            QCOMPARE(fields.size(), 5);
            const Version version = fields[0] == "3" ? Version::Jet3 : Version::Jet4;
            const Value value = parseValue(fields[1], fields[3]);
            const QByteArray key = keyOf(value, columnOf(parseType(fields[1])), fields[2] == "asc", version);
            QVERIFY2(key == fields[4], line + " gave " + key);
            ++vectors;
        }
        QCOMPARE(vectors, 378);
    }

    void valuesHaveTheirKey_data()
    {
        QTest::addColumn<Value>("value");
        QTest::addColumn<Column>("column");
        QTest::addColumn<bool>("ascending");
        QTest::addColumn<Version>("version");
        QTest::addColumn<QByteArray>("key");
        const auto row = [](const char *name, Value value, ColumnType type, bool ascending, Version version,
                            const QByteArray &key) {
            QTest::newRow(name) << std::move(value) << columnOf(type) << ascending << version << key;
        };
        const auto bytes = [](std::string_view text) {
            const auto *first = reinterpret_cast<const std::byte *>(text.data());
            return Bytes(first, first + text.size());
        };
        row("accents and hyphens", std::string("~sq_cAAAA-OrdrarOLD~sq_ccboFöretag"), ColumnType::Text, true,
            Version::Jet4,
            "7F2B0F6B682B034D4A4A4A4A64694F694A69645E4F2B0F6B682B034D4D4C64536469516D4A5501" +
                QByteArray("02").repeated(27) + "13010101802B068200");
        row("empty text", std::string(), ColumnType::Text, true, Version::Jet3, "7F00");
        row("empty text is not null", std::string(), ColumnType::Text, true, Version::Jet4, "7F0100");
        row("blanks are an empty text", std::string("  "), ColumnType::Memo, true, Version::Jet4, "7F0100");
        row("descending text, Jet 4", std::string("stuff"), ColumnType::Text, false, Version::Jet4,
            "80949290ACACFEFF00");
        row("binary", bytes("ab"), ColumnType::Binary, true, Version::Jet3, "7F616200000000000002");
        row("binary of several segments", bytes("Some much longer text"), ColumnType::Binary, true,
            Version::Jet4, "7F536F6D65206D75630968206C6F6E67657209207465787400000005");
        row("binary of one whole segment", bytes("12345678"), ColumnType::Binary, true, Version::Jet4,
            "7F313233343536373808");
        row("empty binary", Bytes{}, ColumnType::Binary, true, Version::Jet4, "7F");
        row("minus zero", -0.0, ColumnType::Double, true, Version::Jet3, "7F8000000000000000");
        row("whole number for a date", std::int32_t{1}, ColumnType::DateTime, true, Version::Jet3,
            "7FBFF0000000000000");
        row("whole amount for a long", Currency::fromUnits(903809), ColumnType::Long, true, Version::Jet3,
            "7F800DCA81");
        row("double for a currency", -1.1, ColumnType::Currency, false, Version::Jet3, "808000000000002AF7");
        row("a Boolean is never null", Null{}, ColumnType::Boolean, true, Version::Jet3, "7FFF");
        row("null descending", Null{}, ColumnType::Guid, false, Version::Jet3, "FF");
        row("decimal", Decimal{false, 0, {0, 0, 0, 258}}, ColumnType::Decimal, true, Version::Jet4,
            "7FFF" + QByteArray("00").repeated(14) + "0102");
        row("negative decimal", Decimal{true, 0, {0, 0, 0, 258}}, ColumnType::Decimal, true, Version::Jet4,
            "7F00" + QByteArray("FF").repeated(14) + "FEFD");
    }

    void valuesHaveTheirKey()
    {
        QFETCH(Value, value);
        QFETCH(Column, column);
        QFETCH(bool, ascending);
        QFETCH(Version, version);
        QFETCH(QByteArray, key);
        QCOMPARE(keyOf(value, column, ascending, version), key);
    }

    void valuesWithoutKeyAreRefused_data()
    {
        QTest::addColumn<Value>("value");
        QTest::addColumn<Column>("column");
        QTest::addColumn<Version>("version");
        const auto row = [](const char *name, Value value, ColumnType type, Version version = Version::Jet4) {
            QTest::newRow(name) << std::move(value) << columnOf(type) << version;
        };
        row("not a number", std::numeric_limits<double>::quiet_NaN(), ColumnType::Double);
        row("too large for a byte", std::int32_t{256}, ColumnType::Byte);
        row("too large for an integer", std::int32_t{-32769}, ColumnType::Integer);
        row("fraction for a long", 2.5, ColumnType::Long);
        row("text for a long", std::string("2"), ColumnType::Long);
        row("double that no single holds", 0.1, ColumnType::Single);
        row("amount with five decimals", 0.00001, ColumnType::Currency);
        row("Chinese", std::string("中"), ColumnType::Text);
        row("beyond the basic plane", std::string("😀"), ColumnType::Text);
        row("combining mark", std::string("e\xCC\x81"), ColumnType::Text);
        row("outside the code page", std::string("Ω"), ColumnType::Text, Version::Jet3);
        row("broken UTF-8", std::string("ab\xC3"), ColumnType::Text, Version::Jet3);
        row("long value", Bytes{}, ColumnType::Ole);
        row("decimal in Jet 3", Decimal{}, ColumnType::Decimal, Version::Jet3);
    }

    void valuesWithoutKeyAreRefused()
    {
        QFETCH(Value, value);
        QFETCH(Column, column);
        QFETCH(Version, version);
        QCOMPARE(keyOf(value, column, true, version), QByteArray("no key"));
    }

    void longTextsAreCutAt255Characters()
    {
        for (const Version version : {Version::Jet3, Version::Jet4}) {
            const std::string full(255, 'x');
            QCOMPARE(textKey(full + "y", version), textKey(full, version));
            QVERIFY(textKey(full, version) != textKey(full.substr(1), version));
            std::string accents;
            for (int i = 0; i < 255; ++i)
                accents += "ö";
            QCOMPARE(textKey(accents + "中", version), textKey(accents, version));
            // Blanks at the end of what is left after the cut.
            QCOMPARE(textKey(std::string(250, 'x') + "     yz", version),
                     textKey(std::string(250, 'x'), version));
        }
        std::string ligatures;
        for (int i = 0; i < 127; ++i)
            ligatures += "ßé";
        // Three key bytes and three half bytes of accents for each pair, the list enclosed in two more.
        QCOMPARE(textKey(ligatures, Version::Jet3).size(), 2 * (1 + 127 * 3 + (127 * 3 + 2 + 1) / 2));
    }

    void columnsThatCannotBeKeptAreNamed()
    {
        Column text = columnOf(ColumnType::Text);
        QVERIFY(jet::unkeyableReason(text, false, Version::Jet3).empty());
        text.codePage = 936;
        QVERIFY(jet::unkeyableReason(text, true, Version::Jet4).empty());
        QVERIFY(jet::unkeyableReason(text, true, Version::Jet3).find("Field") != std::string::npos);
        text.sortOrderVersion = 1;
        QVERIFY(!jet::unkeyableReason(text, true, Version::Jet4).empty());
        QCOMPARE(textKey("a", Version::Jet4), QByteArray("7F4A0100"));
        QCOMPARE(keyOf(std::string("a"), text, true, Version::Jet4), QByteArray("no key"));
        QVERIFY(!jet::unkeyableReason(columnOf(ColumnType::Decimal), false, Version::Jet4).empty());
        Column unknown = columnOf(ColumnType::Long);
        unknown.typeCode = 99;
        QVERIFY(!jet::unkeyableReason(unknown, true, Version::Jet4).empty());
    }

    void prefixKeyBeginsEveryLongerKey()
    {
        for (const Version version : {Version::Jet3, Version::Jet4}) {
            for (const std::string prefix : {"", "abc", "ab ", "é", "co-o", "ß"}) {
                const auto begin = jet::textPrefixKey(prefix, version);
                QVERIFY(begin);
                for (const std::string rest : {"", " ", "x", "é", "-", " -x", "ä-ä"}) {
                    KeyBytes key;
                    QVERIFY(jet::appendKey(key, prefix + rest, columnOf(ColumnType::Text), true, version));
                    QVERIFY2(key.starts_with(*begin), (prefix + "|" + rest).c_str());
                }
            }
            QVERIFY(!jet::textPrefixKey("中", version));
        }
    }

    void textOrderAgreesWithKeys()
    {
        std::mt19937 random(7);
        const std::vector<std::string> letters{"a", "A", "b", "é", "E",  "ß", "-", "'",
                                               " ", "_", "~", "1", "\t", "ö", "z"};
        const auto text = [&] {
            std::string result;
            for (auto i = random() % 6; i > 0; --i)
                result += letters[random() % letters.size()];
            return result;
        };
        for (const Version version : {Version::Jet3, Version::Jet4}) {
            // Every pair of ASCII characters, alone and before another one.
            for (char a = 1; a != 127; ++a) {
                for (char b = 1; b != 127; ++b) {
                    const std::string left{a, 'm'};
                    const std::string right{b};
                    QCOMPARE(sign(jet::compareText(left, right, version)), orderByKeys(left, right, version));
                    QCOMPARE(sign(jet::compareText(right, right + left, version)),
                             orderByKeys(right, right + left, version));
                }
            }
            for (int i = 0; i < 50'000; ++i) {
                const std::string left = text();
                const std::string right = text();
                const int order = orderByKeys(left, right, version);
                QVERIFY2(sign(jet::compareText(left, right, version)) == order, (left + "|" + right).c_str());
                QVERIFY2(sign(orderBytes(left, version).compare(orderBytes(right, version))) == order,
                         (left + "|" + right).c_str());
            }
        }
    }

    void textOrderBeyondTheKeys()
    {
        for (const Version version : {Version::Jet3, Version::Jet4}) {
            QVERIFY(jet::compareText("zzz", "中", version) < 0);
            QVERIFY(jet::compareText("文", "中", version) > 0);
            QCOMPARE(jet::compareText("中a ", "中A", version), 0);
            const std::string full(255, 'x');
            QVERIFY(jet::compareText(full + "a", full + "b", version) < 0);
            QVERIFY(jet::compareText(full, full + "b", version) < 0);
            QCOMPARE(jet::compareText(full + "a", full + "A  ", version), 0);
            // The bytes order them likewise, and none are the beginning of others.
            QVERIFY(orderBytes("zzz", version) < orderBytes("中", version));
            QVERIFY(orderBytes("文", version) > orderBytes("中", version));
            QCOMPARE(orderBytes("中a ", version), orderBytes("中A", version));
            QVERIFY(orderBytes("中", version) + KeyBytes{9} < orderBytes("中a", version) + KeyBytes{1});
        }
        QVERIFY(jet::compareText("co-op", "coop", Version::Jet3) < 0);
        QVERIFY(jet::compareText("co-op", "coop", Version::Jet4) > 0);
        QVERIFY(jet::compareText("co-op", "coopx", Version::Jet4) < 0);
    }
};

QTEST_GUILESS_MAIN(IndexKeyTest)
#include "index_key_test.moc"
