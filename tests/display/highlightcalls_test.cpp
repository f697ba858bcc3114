#include "display/highlightcalls.h"

#include <QtTest>

namespace outpost
{

class HighlightCallsTest : public QObject
{
    Q_OBJECT

private slots:
    void aStoredListIsCleanedSilently_data();
    void aStoredListIsCleanedSilently();
    void onlyTheFirstTenStoredCallsLoad();
    void dropsDoNotCountTowardsTheTenStored();
    void typedTextBecomesAList_data();
    void typedTextBecomesAList();
    void anInvalidEntryIsNamedInUpperCase_data();
    void anInvalidEntryIsNamedInUpperCase();
    void readingEndsAtTheInvalidEntry();
    void elevenDistinctCallsAreMoreThanTheLimit();
    void repeatsDoNotCountTowardsTheLimit();
    void aCallMatchesStandingAlone_data();
    void aCallMatchesStandingAlone();
    void anyCallOfTheListMatches();
};

namespace
{

QStringList words(const char *text)
{
    return QString::fromUtf8(text).split(QLatin1Char(','), Qt::SkipEmptyParts);
}

QStringList distinctCalls(int count)
{
    QStringList calls;
    for (int i = 0; i < count; ++i) {
        calls.append(QStringLiteral("K%1ABC").arg(i));
    }
    return calls;
}

} // namespace

void HighlightCallsTest::aStoredListIsCleanedSilently_data()
{
    QTest::addColumn<QStringList>("stored");
    QTest::addColumn<QStringList>("calls");

    QTest::newRow("absent") << QStringList() << QStringList();
    QTest::newRow("order stays") << words("W1AW,K1ABC") << words("W1AW,K1ABC");
    QTest::newRow("trimmed, upper case") << words(" k1abc/p\t") << words("K1ABC/P");
    QTest::newRow("empty entries go")
        << QStringList{QString(), QStringLiteral("  ")} << QStringList();
    QTest::newRow("invalid entries go") << words("K1-ABC,W1AW,K1 ABC,Ä1B") << words("W1AW");
    QTest::newRow("15 characters") << words("ABCDEFGHIJKLMNO") << words("ABCDEFGHIJKLMNO");
    QTest::newRow("16 characters") << words("ABCDEFGHIJKLMNOP") << QStringList();
    QTest::newRow("repeats in any case") << words("W1AW,w1aw,K1ABC,W1Aw") << words("W1AW,K1ABC");
}

void HighlightCallsTest::aStoredListIsCleanedSilently()
{
    QFETCH(QStringList, stored);
    QFETCH(QStringList, calls);
    QCOMPARE(validHighlightCalls(stored), calls);
}

void HighlightCallsTest::onlyTheFirstTenStoredCallsLoad()
{
    QCOMPARE(validHighlightCalls(distinctCalls(12)), distinctCalls(10));
}

void HighlightCallsTest::dropsDoNotCountTowardsTheTenStored()
{
    const QStringList stored = words("?,K0ABC,k0abc") + distinctCalls(12);
    QCOMPARE(validHighlightCalls(stored), distinctCalls(10));
}

void HighlightCallsTest::typedTextBecomesAList_data()
{
    QTest::addColumn<QString>("typed");
    QTest::addColumn<QStringList>("calls");

    const auto row = [](const char *name, const char *typed, const char *calls) {
        QTest::newRow(name) << QString::fromLatin1(typed) << words(calls);
    };
    row("nothing", "", "");
    row("blank lines", "\n  \n\t\n", "");
    row("lower case", "k1abc", "K1ABC");
    row("one call in three forms", "  W1AW  \nw1aw\nW1AW", "W1AW");
    row("every kind of line end", "K1ABC\r\nW1AW\rN0CALL\n\nG4X/P", "K1ABC,W1AW,N0CALL,G4X/P");
    row("order of entry", "B2B\nA1A\nB2B\nC3C", "B2B,A1A,C3C");
    row("15 characters", "ABCDEFGHIJKLMNO", "ABCDEFGHIJKLMNO");
}

void HighlightCallsTest::typedTextBecomesAList()
{
    QFETCH(QString, typed);
    QFETCH(QStringList, calls);
    const HighlightEdit edit = parseHighlightCalls(typed);
    QCOMPARE(edit.calls, calls);
    QVERIFY(edit.invalidEntry.isEmpty());
}

void HighlightCallsTest::anInvalidEntryIsNamedInUpperCase_data()
{
    QTest::addColumn<QString>("typed");
    QTest::addColumn<QString>("entry");

    const auto row = [](const char *name, const char *typed, const char *entry) {
        QTest::newRow(name) << QString::fromUtf8(typed) << QString::fromUtf8(entry);
    };
    row("a space inside", "W1AW\nk1 abc\n", "K1 ABC");
    row("a hyphen", "k1-abc", "K1-ABC");
    row("a letter beyond A-Z", "ä1b", "Ä1B");
    row("16 characters", "abcdefghijklmnop", "ABCDEFGHIJKLMNOP");
    row("the first of two", "a?\nb?", "A?");
}

void HighlightCallsTest::anInvalidEntryIsNamedInUpperCase()
{
    QFETCH(QString, typed);
    QFETCH(QString, entry);
    QCOMPARE(parseHighlightCalls(typed).invalidEntry, entry);
}

void HighlightCallsTest::readingEndsAtTheInvalidEntry()
{
    const HighlightEdit edit = parseHighlightCalls(QStringLiteral("W1AW\n?\nK1ABC"));
    QCOMPARE(edit.invalidEntry, QStringLiteral("?"));
    QCOMPARE(edit.calls, words("W1AW"));
}

void HighlightCallsTest::elevenDistinctCallsAreMoreThanTheLimit()
{
    QCOMPARE(maxHighlightCalls, 10);
    const QString typed = distinctCalls(11).join(QLatin1Char('\n'));
    QVERIFY(parseHighlightCalls(typed).calls.size() > maxHighlightCalls);
}

void HighlightCallsTest::repeatsDoNotCountTowardsTheLimit()
{
    const QString typed = (distinctCalls(10) + distinctCalls(10)).join(QLatin1Char('\n'));
    QCOMPARE(parseHighlightCalls(typed.toLower()).calls, distinctCalls(10));
}

void HighlightCallsTest::aCallMatchesStandingAlone_data()
{
    QTest::addColumn<QString>("call");
    QTest::addColumn<QString>("text");
    QTest::addColumn<bool>("matches");

    const auto row = [](const char *call, const char *text, bool matches) {
        QTest::addRow("%s in \"%s\"", call, text)
            << QString::fromLatin1(call) << QString::fromLatin1(text) << matches;
    };
    row("K1ABC", "CQ K1ABC FN42", true);
    row("K1ABC", "K1ABC", true);
    row("K1ABC", "cq k1abc fn42", true);
    row("K1ABC", "CQ <K1ABC> FN42", true);
    row("K1ABC", "W1AW K1ABC", true);
    row("K1ABC", "CQ K1ABC/P FN42", false);
    row("K1ABC", "CQ P/K1ABC FN42", false);
    row("K1ABC", "CQ K1ABCD FN42", false);
    row("K1ABC", "CQ AK1ABC FN42", false);
    row("K1ABC", "CQ K1ABC7 FN42", false);
    row("K1ABC", "CQ 7K1ABC FN42", false);
    row("K1ABC", "CQ k1abcd fn42", false);
    row("K1ABC", "K1ABC/P K1ABC", true);
    row("K1ABC/P", "CQ K1ABC/P FN42", true);
    row("K1ABC/P", "CQ K1ABC FN42", false);
    row("K1ABC", "", false);
    row("K1ABC", "   ", false);
}

void HighlightCallsTest::aCallMatchesStandingAlone()
{
    QFETCH(QString, call);
    QFETCH(QString, text);
    QFETCH(bool, matches);
    QCOMPARE(containsCall(text, {call}), matches);
}

void HighlightCallsTest::anyCallOfTheListMatches()
{
    const QString text = QStringLiteral("CQ K1ABC FN42");
    QVERIFY(containsCall(text, words("W1AW,N0CALL,K1ABC")));
    QVERIFY(!containsCall(text, words("W1AW,N0CALL")));
    QVERIFY(!containsCall(text, {}));
}

} // namespace outpost

QTEST_GUILESS_MAIN(outpost::HighlightCallsTest)
#include "highlightcalls_test.moc"
