#include "store/textchanges.h"
#include "tests/fixture/text.h"

#include <QRandomGenerator>
#include <QStringList>
#include <QTest>

namespace outpost
{

namespace
{

QString changed(QString from, const QVector<TextChange> &changes)
{
    for (const TextChange &change : changes) {
        from.replace(change.position, change.length, change.text);
    }
    return from;
}

// Few different lines, so that many occur repeatedly, some of them empty.
QString anyText(QRandomGenerator *random)
{
    QStringList lines;
    const int count = 1 + random->bounded(8);
    for (int i = 0; i < count; ++i) {
        lines.append(QString(random->bounded(3), QLatin1Char('a')));
    }
    return lines.join(QLatin1Char('\n'));
}

// "[" and "]" mark the start and the end of a selection and are removed.
struct MarkedText {
    QString text;
    int start = -1;
    int end = -1;
};

MarkedText marked(QString text)
{
    MarkedText result;
    result.start = text.indexOf(QLatin1Char('['));
    text.remove(QLatin1Char('['));
    result.end = text.indexOf(QLatin1Char(']'));
    text.remove(QLatin1Char(']'));
    result.text = text;
    return result;
}

} // namespace

class TextChangesTest : public QObject
{
    Q_OBJECT

private slots:
    void onlyWhatDiffersChanges_data();
    void onlyWhatDiffersChanges();
    void theChangesMakeTheNewText();
    void aSelectionStaysOnWhatItWasOn_data();
    void aSelectionStaysOnWhatItWasOn();
    void everyPositionStaysInTheText();
    void longTextsTakeNoLongerPerLine();
};

void TextChangesTest::onlyWhatDiffersChanges_data()
{
    QTest::addColumn<QString>("from");
    QTest::addColumn<QString>("to");
    QTest::addColumn<QString>("changes"); // "position,length,text" of each

    const auto row = [](const char *name, const char *from, const char *to, const char *changes) {
        QTest::newRow(name) << text(from) << text(to) << text(changes);
    };
    row("nothing", "a\nb", "a\nb", "");
    row("a digit", "a\nb 00:05\nc", "a\nb 00:06\nc", "8,1,6");
    row("two lines, each for itself", "a 9\nb 1\nc", "a 10\nb 2\nc", "6,1,2;2,1,10");
    row("the last digit of all", "a 1", "a 2", "2,1,2");
    row("a line comes in", "a\nc", "a\nb\nc", "2,0,b\n");
    row("a line goes", "a\nb\nc", "a\nc", "2,2,");
    row("a line comes at the end", "a", "a\nb", "1,0,\nb");
    row("a line goes at the end", "a\nb", "a", "1,2,");
    row("a line comes at the begin", "b", "a\nb", "0,0,a\n");
    row("lines around one that stays", "a\nx\nb", "c\nd\nx\ne", "4,1,e;0,1,c\nd");
    row("from an empty text", "", "a", "0,0,a");
    row("to an empty text", "a", "", "0,1,");
}

void TextChangesTest::onlyWhatDiffersChanges()
{
    QFETCH(QString, from);
    QFETCH(QString, to);
    QStringList changes;
    for (const TextChange &change : textChanges(from, to)) {
        changes.append(QStringLiteral("%1,%2,%3")
                           .arg(QString::number(change.position), QString::number(change.length),
                                change.text));
    }
    QTEST(changes.join(QLatin1Char(';')), "changes");
    QCOMPARE(changed(from, textChanges(from, to)), to);
}

void TextChangesTest::theChangesMakeTheNewText()
{
    QRandomGenerator random(1);
    for (int round = 0; round < 20000; ++round) {
        const QString from = anyText(&random);
        const QString to = anyText(&random);
        QCOMPARE(changed(from, textChanges(from, to)), to);
    }
}

void TextChangesTest::aSelectionStaysOnWhatItWasOn_data()
{
    QTest::addColumn<QString>("from");
    QTest::addColumn<QString>("to");

    const auto row = [](const char *name, const char *from, const char *to) {
        QTest::newRow(name) << text(from) << text(to);
    };
    row("before the change", "[ab]\nTime: 05\nc", "[ab]\nTime: 06\nc");
    row("after the change", "a\nTime: 9\n[c]d", "a\nTime: 10\n[c]d");
    row("around it", "a[\nTime: 9\n]c", "a[\nTime: 10\n]c");
    row("all", "[a\nTime: 9]", "[a\nTime: 10]");
    row("the number that counts on", "Count: [9]\nc", "Count: [10]\nc");
    row("up to the number", "[Count: ]9\nc", "[Count: ]10\nc");
    row("from the number on", "Count: 9[\nc]", "Count: 10[\nc]");
    row("a digit is added at its end", "Count: [1]\nc", "Count: [1]2\nc");
    row("a digit is added before it", "Count: 1[\nc]", "Count: 12[\nc]");
    row("the line above which one comes", "a\n[c]", "a\nb\n[c]");
    row("up to the line that comes", "[a\n]c", "[a\n]b\nc");
    row("a line goes above", "a\nb\n[c]", "a\n[c]");
    row("a line goes in it", "[a\nb\nc]", "[a\nc]");
    row("a line comes in it", "[a\nc]", "[a\nb\nc]");
    row("its own line goes", "a\n[b]\nc", "a\n[]c");
    row("half of it goes", "a\nx[y\nc]", "a\n[c]");
    row("one of two changed lines", "Time: 05\n[Count]: 9", "Time: 06\n[Count]: 10");
    row("lines give way to fewer", "x\n[Receiver\nElapsed]\nc", "x\n[Off]\nc");
}

void TextChangesTest::aSelectionStaysOnWhatItWasOn()
{
    QFETCH(QString, from);
    QFETCH(QString, to);
    const MarkedText before = marked(from);
    const MarkedText after = marked(to);
    const QVector<TextChange> changes = textChanges(before.text, after.text);
    QCOMPARE(changedPosition(changes, before.start, Edge::Start), after.start);
    QCOMPARE(changedPosition(changes, before.end, Edge::End), after.end);
}

void TextChangesTest::everyPositionStaysInTheText()
{
    QRandomGenerator random(2);
    for (int round = 0; round < 5000; ++round) {
        const QString from = anyText(&random);
        const QString to = anyText(&random);
        const QVector<TextChange> changes = textChanges(from, to);
        int before = 0; // of a selection from the previous position to this one
        for (int position = 0; position <= from.size(); ++position) {
            const int start = changedPosition(changes, position, Edge::Start);
            const int end = changedPosition(changes, position, Edge::End);
            QVERIFY(end <= start && start <= to.size());
            QVERIFY(position == 0 || before <= end);
            before = start;
        }
    }
}

// 100,000 lines, first all different, then all equal but one.
void TextChangesTest::longTextsTakeNoLongerPerLine()
{
    QStringList lines;
    QStringList others;
    for (int i = 0; i < 100000; ++i) {
        lines.append(QStringLiteral("line %1").arg(i));
        others.append(QStringLiteral("other %1").arg(i));
    }
    const QString from = lines.join(QLatin1Char('\n'));
    QCOMPARE(textChanges(from, others.join(QLatin1Char('\n'))).size(), 100000);
    others = lines;
    others.insert(3, QStringLiteral("new"));
    QCOMPARE(textChanges(from, others.join(QLatin1Char('\n'))).size(), 1);
    const QString blank(100000, QLatin1Char('\n'));
    QCOMPARE(textChanges(blank, blank + QLatin1Char('a')).size(), 1);
}

} // namespace outpost

QTEST_APPLESS_MAIN(outpost::TextChangesTest)
#include "textchanges_test.moc"
