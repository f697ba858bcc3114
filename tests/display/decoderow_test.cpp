#include "decode/ft8decode.h"
#include "display/decoderow.h"

#include <QtTest>

namespace outpost
{

class DecodeRowTest : public QObject
{
    Q_OBJECT

private slots:
    void headersNameTheFiveColumns();
    void splitsALineIntoCells_data();
    void splitsALineIntoCells();
    void aLineWithoutAMessageGivesNoRow_data();
    void aLineWithoutAMessageGivesNoRow();
    void keepsTheThreePeriodsThatAppearedLast_data();
    void keepsTheThreePeriodsThatAppearedLast();
    void countsTheRowsOfTheLastPeriod_data();
    void countsTheRowsOfTheLastPeriod();
};

namespace
{

const QString label = QStringLiteral("10:15:30");

} // namespace

void DecodeRowTest::headersNameTheFiveColumns()
{
    const QStringList expected{QStringLiteral("Time"), QStringLiteral("SNR"), QStringLiteral("DT"),
                               QStringLiteral("DF"), QStringLiteral("Message")};
    QCOMPARE(decodeHeaders(), expected);
    QCOMPARE(decodeHeaders().size(), static_cast<int>(DecodeColumnCount));
    QCOMPARE(messageHeader(0), QStringLiteral("Message (0)"));
    QCOMPARE(messageHeader(27), QStringLiteral("Message (27)"));
}

void DecodeRowTest::splitsALineIntoCells_data()
{
    QTest::addColumn<QString>("line");
    QTest::addColumn<QStringList>("cells");

    const auto row = [](const char *name, const char *line, const char *cells) {
        QTest::newRow(name) << QString::fromUtf8(line)
                            << QString::fromUtf8(cells).split(QLatin1Char('|'));
    };
    row("the period's label replaces jt9's time", "235959 -12 0.3 1234 ~ CQ K1ABC FN42",
        "10:15:30|-12|0.3|1234|CQ K1ABC FN42");
    row("tokens stay as printed", "101530 +03 -0.0 0012 ~ CQ", "10:15:30|+03|-0.0|0012|CQ");
    row("extra blanks collapse", "  101530   -12\t0.3 1234 ~  CQ   K1ABC \t FN42  \r\n",
        "10:15:30|-12|0.3|1234|CQ K1ABC FN42");
    row("the mark is not checked", "101530 -12 0.3 1234 # CQ", "10:15:30|-12|0.3|1234|CQ");
    row("a mark inside the message stays", "101530 -12 0.3 1234 ~ A ~ B",
        "10:15:30|-12|0.3|1234|A ~ B");
    row("a long message", "101530 -12 0.3 1234 ~ CQ DX K1ABC FN42 a1",
        "10:15:30|-12|0.3|1234|CQ DX K1ABC FN42 a1");
}

void DecodeRowTest::splitsALineIntoCells()
{
    QFETCH(QString, line);
    QFETCH(QStringList, cells);
    const std::optional<DecodeCells> row = decodeCells(label, parseDecodeLine(line));
    QVERIFY(row.has_value());
    QCOMPARE(QStringList(row->begin(), row->end()), cells);
}

void DecodeRowTest::aLineWithoutAMessageGivesNoRow_data()
{
    QTest::addColumn<QString>("line");

    QTest::newRow("empty") << QString();
    QTest::newRow("blanks") << QStringLiteral(" \t ");
    QTest::newRow("summary") << QStringLiteral("<DecodeFinished>   0  17");
    QTest::newRow("exactly five tokens") << QStringLiteral("101530 -12 0.3 1234 ~");
    QTest::newRow("five tokens and blanks") << QStringLiteral(" 101530 -12 0.3 1234 ~   ");
}

void DecodeRowTest::aLineWithoutAMessageGivesNoRow()
{
    QFETCH(QString, line);
    QVERIFY(!decodeCells(label, parseDecodeLine(line)).has_value());
}

namespace
{

QStringList words(const char *text)
{
    return QString::fromLatin1(text).split(QLatin1Char(','));
}

} // namespace

void DecodeRowTest::keepsTheThreePeriodsThatAppearedLast_data()
{
    QTest::addColumn<QStringList>("rowLabels");
    QTest::addColumn<QStringList>("kept");

    QTest::newRow("no rows") << QStringList() << QStringList();
    QTest::newRow("one period") << words("A,A,A") << words("A");
    QTest::newRow("three periods") << words("A,B,B,C") << words("A,B,C");
    QTest::newRow("the topmost of four goes") << words("A,A,B,C,D,D") << words("B,C,D");
    QTest::newRow("the topmost two of five go") << words("A,B,C,D,E") << words("C,D,E");
    QTest::newRow("order of rows, not of the clock")
        << words("10:00:30,10:00:45,10:01:00,10:00:00") << words("10:00:45,10:01:00,10:00:00");
    QTest::newRow("a label that comes again keeps its first place")
        << words("A,B,C,A,D") << words("B,C,D");
    QTest::newRow("empty labels are no period") << words(",A, ,B,C,,D") << words("B,C,D");
    QTest::newRow("empty labels push no period out") << words("A,B,,C, ") << words("A,B,C");
    QTest::newRow("labels are trimmed") << words(" A,A ,B") << words("A,B");
    QTest::newRow("letter case matters") << words("a,A,b") << words("a,A,b");
}

void DecodeRowTest::keepsTheThreePeriodsThatAppearedLast()
{
    QFETCH(QStringList, rowLabels);
    QFETCH(QStringList, kept);
    QCOMPARE(keptPeriodLabels(rowLabels), kept);
}

void DecodeRowTest::countsTheRowsOfTheLastPeriod_data()
{
    QTest::addColumn<QStringList>("rowLabels");
    QTest::addColumn<int>("count");

    QTest::newRow("no rows") << QStringList() << 0;
    QTest::newRow("one") << words("A") << 1;
    QTest::newRow("only the last label counts") << words("A,A,A,B,B") << 2;
    QTest::newRow("rows further up count too") << words("A,B,A,A") << 3;
    QTest::newRow("labels are trimmed") << words("A ,B, A") << 2;
    QTest::newRow("letter case matters") << words("a,A") << 1;
}

void DecodeRowTest::countsTheRowsOfTheLastPeriod()
{
    QFETCH(QStringList, rowLabels);
    QFETCH(int, count);
    QCOMPARE(latestPeriodCount(rowLabels), count);
}

} // namespace outpost

QTEST_GUILESS_MAIN(outpost::DecodeRowTest)
#include "decoderow_test.moc"
