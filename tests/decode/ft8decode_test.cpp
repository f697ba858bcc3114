#include "decode/ft8decode.h"
#include "tests/decode/decodelines.h"

#include <QRegularExpression>
#include <QtTest>

namespace outpost
{

namespace
{
QStringList asList(const std::optional<Ft8Fields> &fields)
{
    return fields ? QStringList{fields->time, fields->snr, fields->dt, fields->frequency,
                                fields->message}
                  : QStringList();
}

QStringList groups(const QRegularExpressionMatch &match)
{
    return match.hasMatch() ? match.capturedTexts().mid(1) : QStringList();
}
} // namespace

class Ft8DecodeTest : public QObject
{
    Q_OBJECT

private slots:
    void readsEveryFieldOfADecodeLine()
    {
        const Ft8Decode decode =
            parseDecodeLine(QStringLiteral("  142315 -12 -0.3 1234 ~  cq  k1abc   FN42  \n"));
        QVERIFY(decode.valid);
        QCOMPARE(decode.line, QStringLiteral("142315 -12 -0.3 1234 ~  cq  k1abc   FN42"));
        QCOMPARE(decode.key, QStringLiteral("CQ K1ABC FN42"));
        QCOMPARE(decode.snr, -12);
        QCOMPARE(decode.dt, -0.3);
        QCOMPARE(decode.freq, 1234);
        const QStringList parts = {QStringLiteral("142315"), QStringLiteral("-12"),
                                   QStringLiteral("-0.3"), QStringLiteral("1234"),
                                   QStringLiteral("cq k1abc FN42")};
        QCOMPARE(asList(decode.fields), parts);
        QCOMPARE(asList(decode.words), parts);
    }

    // The table shows lines that the pattern rejects, and numbers stay as printed.
    void readsALineByItsWordsAndByThePattern_data()
    {
        QTest::addColumn<QString>("line");
        QTest::addColumn<QString>("words"); // joined by bars; empty: none
        QTest::addColumn<QString>("fields");
        const auto row = [](const char *name, const char *line, const char *words,
                            const char *fields) {
            QTest::newRow(name) << QString::fromUtf8(line) << QString::fromUtf8(words)
                                << QString::fromUtf8(fields);
        };
        row("numbers as printed", "000001 +04 -0.30 0700 ~ CQ A", "000001|+04|-0.30|0700|CQ A",
            "000001|+04|-0.30|0700|CQ A");
        row("no decode but six words", "one two three four five six seven",
            "one|two|three|four|six seven", "");
        row("no message", "000001 4 0.1 1234 ~", "", "");
        row("a message of blanks that the pattern knows as none",
            "000001 4 0.1 1234 ~ \u00a0 \u00a0 x", "000001|4|0.1|1234|x", "000001|4|0.1|1234|x");
        row("other blanks between the numbers", "000001\u00a04 0.1 1234 ~ CQ",
            "000001|4|0.1|1234|CQ", "");
        row("too large to be a number", "000001 99999999999 0.1 1234 ~ CQ",
            "000001|99999999999|0.1|1234|CQ", "000001|99999999999|0.1|1234|CQ");
    }

    void readsALineByItsWordsAndByThePattern()
    {
        QFETCH(QString, line);
        QFETCH(QString, words);
        QFETCH(QString, fields);
        const Ft8Decode decode = parseDecodeLine(line);
        QCOMPARE(asList(decode.words).join(QLatin1Char('|')), words);
        QCOMPARE(asList(decode.fields).join(QLatin1Char('|')), fields);
    }

    void runsOfBlanksDoNotChangeWhatMatches_data()
    {
        QTest::addColumn<QString>("line");
        QTest::newRow("vertical tabs") << QStringLiteral("000001\v4 \v0.1 1234\v\v~ \vCQ\v\vA");
        QTest::newRow("form feeds") << QStringLiteral("000001\f4 \f0.1 1234\f\f~ \fCQ\f\fA");
        QTest::newRow("no-break spaces between the numbers")
            << QStringLiteral("000001\u00a04 0.1 1234 ~ CQ A");
        QTest::newRow("no-break spaces in the message")
            << QStringLiteral("000001 4 0.1 1234 ~ CQ\u00a0\u00a0A");
    }

    void runsOfBlanksDoNotChangeWhatMatches()
    {
        QFETCH(QString, line);
        const QRegularExpression run(QStringLiteral("[ \\t\\v\\f]+"));
        QStringList expected = groups(decodeLinePattern().match(line));
        QCOMPARE(groups(matchDecodeLine(line)),
                 expected.replaceInStrings(run, QStringLiteral(" ")));
    }

    void everyLineGivesARecord()
    {
        const QStringList lines = {QStringLiteral("a ~ odd"), QString(), QStringLiteral("a ~ odd")};
        QCOMPARE(linesOf(parseDecodeLines(lines)), lines);
    }

    void tellsDecodeLinesFromOthers_data()
    {
        QTest::addColumn<QString>("line");
        QTest::addColumn<bool>("valid");
        const auto row = [](const char *name, const char *line, bool valid) {
            QTest::newRow(name) << QString::fromLatin1(line) << valid;
        };
        row("as jt9 prints it", "000001  24  0.0 1234 ~  CQ K1ABC FN42", true);
        row("signs and a whole DT", "000001 +4 +1 +1234 ~ CQ", true);
        row("five digits of time", "00001 4 0.1 1234 ~ CQ", false);
        row("seven digits of time", "0000001 4 0.1 1234 ~ CQ", false);
        row("no mode marker", "000001 4 0.1 1234 CQ", false);
        row("another mode marker", "000001 4 0.1 1234 # CQ", false);
        row("no message", "000001 4 0.1 1234 ~   ", false);
        row("no blank after the marker", "000001 4 0.1 1234 ~CQ", false);
        row("SNR with a fraction", "000001 4.5 0.1 1234 ~ CQ", false);
        row("DT without digits after the point", "000001 4 0. 1234 ~ CQ", false);
        row("frequency with a fraction", "000001 4 0.1 1234.5 ~ CQ", false);
        row("SNR too large to be a number", "000001 99999999999 0.1 1234 ~ CQ", false);
        row("frequency too large to be a number", "000001 4 0.1 99999999999 ~ CQ", false);
        row("text before the time", "x 000001 4 0.1 1234 ~ CQ", false);
        row("empty", "", false);
    }

    void tellsDecodeLinesFromOthers()
    {
        QFETCH(QString, line);
        QFETCH(bool, valid);
        QCOMPARE(parseDecodeLine(line).valid, valid);
    }

    void aLineThatDoesNotMatchHasNoNumbers()
    {
        const Ft8Decode decode = parseDecodeLine(QStringLiteral(" nothing ~ here "));
        QVERIFY(!decode.valid);
        QCOMPARE(decode.line, QStringLiteral("nothing ~ here"));
        QCOMPARE(decode.snr, -99);
    }

    void dtTooLargeForANumberIsNotADecode()
    {
        const QString digits(400, QLatin1Char('9'));
        const QString line = QStringLiteral("000001 4 %1 1234 ~ CQ").arg(digits);
        QVERIFY(!parseDecodeLine(line).valid);
    }

    void merges_data()
    {
        QTest::addColumn<QStringList>("lines");
        QTest::addColumn<QStringList>("merged");
        const auto row = [](const char *name, const char *lines, const char *merged) {
            const auto split = [](const char *text) {
                return QString::fromLatin1(text).split(QLatin1Char('|'), Qt::SkipEmptyParts);
            };
            QTest::newRow(name) << split(lines) << split(merged);
        };
        row("empty input", "", "");
        row("the stronger of two, second", "000001 -10 0.1 1012 ~ CQ A|000001 -8 0.1 1015 ~ CQ A",
            "000001 -8 0.1 1015 ~ CQ A");
        row("the stronger of two, first", "000001 -8 0.1 1015 ~ CQ A|000001 -10 0.1 1012 ~ CQ A",
            "000001 -8 0.1 1015 ~ CQ A");
        row("equal SNR: DT nearer zero", "000001 -8 0.4 1000 ~ CQ A|000001 -8 -0.3 1000 ~ CQ A",
            "000001 -8 -0.3 1000 ~ CQ A");
        row("equal SNR and distance of DT: the first",
            "000001 -8 0.3 1000 ~ CQ A|000001 -8 -0.3 1001 ~ CQ A", "000001 -8 0.3 1000 ~ CQ A");
        row("DT does not count against SNR", "000001 -8 2.0 1000 ~ CQ A|000001 -9 0.0 1000 ~ CQ A",
            "000001 -8 2.0 1000 ~ CQ A");
        row("12 Hz apart is one", "000001 -8 0.1 1000 ~ CQ A|000001 -9 0.1 1012 ~ CQ A",
            "000001 -8 0.1 1000 ~ CQ A");
        row("13 Hz apart are two", "000001 -9 0.1 1013 ~ CQ A|000001 -8 0.1 1000 ~ CQ A",
            "000001 -8 0.1 1000 ~ CQ A|000001 -9 0.1 1013 ~ CQ A");
        row("frequencies at both ends of the numbers",
            "000001 -8 0.1 2147483647 ~ CQ A|000001 -8 0.1 -2147483648 ~ CQ A",
            "000001 -8 0.1 -2147483648 ~ CQ A|000001 -8 0.1 2147483647 ~ CQ A");
        row("case and inner blanks do not matter",
            "000001 -8 0.1 1000 ~ CQ A|000001 -7 0.1 1000 ~ cq   a", "000001 -7 0.1 1000 ~ cq   a");
        row("the first known one is compared",
            "000001 -9 0.1 1000 ~ CQ A|000001 -9 0.1 1020 ~ CQ A|000001 -5 0.1 1010 ~ CQ A",
            "000001 -5 0.1 1010 ~ CQ A|000001 -9 0.1 1020 ~ CQ A");
        row("the stronger takes the place of the one that it beats",
            "000001 -9 0.1 1000 ~ CQ A|000001 -9 0.1 1020 ~ CQ A|000001 -5 0.1 1010 ~ CQ A|"
            "000001 -4 0.1 1015 ~ CQ A",
            "000001 -4 0.1 1015 ~ CQ A|000001 -9 0.1 1020 ~ CQ A");
        row("by frequency as a number, then by message",
            "000001 1 0.1 1000 ~ CQ B|000001 2 0.1 1000 ~ CQ A|000001 3 0.1 900 ~ CQ C",
            "000001 3 0.1 900 ~ CQ C|000001 2 0.1 1000 ~ CQ A|000001 1 0.1 1000 ~ CQ B");
        row("messages by code unit, not by a language's alphabet",
            "000001 1 0.1 1000 ~ CQ _|000001 2 0.1 1000 ~ CQ A|000001 3 0.1 1000 ~ CQ 9",
            "000001 3 0.1 1000 ~ CQ 9|000001 2 0.1 1000 ~ CQ A|000001 1 0.1 1000 ~ CQ _");
        row("other lines once, last, in the order seen",
            "zz ~ odd|000001 1 0.1 1000 ~ CQ B| ZZ  ~  ODD|aa ~ odd|000001 1 0.1 900 ~ CQ A|zz ~ "
            "odd",
            "000001 1 0.1 900 ~ CQ A|000001 1 0.1 1000 ~ CQ B|zz ~ odd|aa ~ odd");
        row("other lines keep their inner blanks", " a  ~   odd |A ~ ODD", "a  ~   odd");
        row("blank lines vanish, lines are trimmed", "  |  000001 1 0.1 1000 ~ CQ B  | x ",
            "000001 1 0.1 1000 ~ CQ B|x");
    }

    void merges()
    {
        QFETCH(QStringList, lines);
        QFETCH(QStringList, merged);
        QCOMPARE(linesOf(mergeDecodes(parseDecodeLines(lines))), merged);
    }
};

} // namespace outpost

QTEST_GUILESS_MAIN(outpost::Ft8DecodeTest)
#include "ft8decode_test.moc"
