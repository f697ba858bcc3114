// The application font. Each case runs in a process of its own, with fontconfig rules that rename
// the installed fonts.

#include "app/stationfont.h"
#include "tests/fixture/home.h"

#include <QApplication>
#include <QFontDatabase>
#include <QProcess>
#include <QTextStream>
#include <QtTest>

namespace outpost
{

namespace
{
// Shows fonts of the family `real` as `shown`; other fonts keep their names.
QByteArray renaming(const QByteArray &real, const QByteArray &shown)
{
    return "<match target=\"scan\"><test name=\"family\"><string>" + real +
           "</string></test><edit name=\"family\" mode=\"assign\"><string>" + shown +
           "</string></edit></match>";
}

QByteArray describe(const QFont &font)
{
    return QStringLiteral("%1|%2|%3|%4")
        .arg(font.family(), QString::number(font.pixelSize()), QString::number(font.weight()),
             QString::number(font.style()))
        .toUtf8();
}

// The font of a program that starts with these rules; without rules, with this machine's fonts.
QString fontWith(const QByteArray &rules)
{
    const QTemporaryDir folder; // the font cache, too, must have only the names of one case
    const QString config = folder.filePath(QStringLiteral("fonts.conf"));
    putFile(config, "<?xml version=\"1.0\"?><fontconfig><dir>/usr/share/fonts</dir><cachedir>" +
                        QFile::encodeName(folder.filePath(QStringLiteral("cache"))) +
                        "</cachedir>" + rules + "</fontconfig>");
    QProcess program;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    if (!rules.isEmpty()) {
        environment.insert(QStringLiteral("FONTCONFIG_FILE"), config);
    }
    program.setProcessEnvironment(environment);
    program.start(QCoreApplication::applicationFilePath(), {QStringLiteral("--describe")});
    program.waitForFinished();
    return QString::fromUtf8(program.readAllStandardOutput()).trimmed();
}
} // namespace

class StationFontTest : public QObject
{
    Q_OBJECT

private slots:
    void thePreferredFamilyIsTheFirstOneThere_data();
    void thePreferredFamilyIsTheFirstOneThere();
    void withoutAnyTheSystemsFamilyStays();
    void sizeWeightAndStyleAreFixed();
};

void StationFontTest::thePreferredFamilyIsTheFirstOneThere_data()
{
    QTest::addColumn<QByteArray>("rules");
    QTest::addColumn<QString>("family");
    const QByteArray plain = renaming("DejaVu Sans Mono", "Segoe UI");
    const QByteArray variable = renaming("DejaVu Sans", "SEGOE UI variable");
    const QByteArray small = renaming("DejaVu Serif", "Segoe UI Variable Small");
    QTest::newRow("the third") << plain << QStringLiteral("Segoe UI");
    QTest::newRow("the second, in another case")
        << plain + variable << QStringLiteral("Segoe UI Variable");
    QTest::newRow("the first") << plain + variable + small
                               << QStringLiteral("Segoe UI Variable Small");
}

void StationFontTest::thePreferredFamilyIsTheFirstOneThere()
{
    QFETCH(QByteArray, rules);
    QFETCH(QString, family);
    QCOMPARE(fontWith(rules), family + QStringLiteral("|12|50|0"));
}

void StationFontTest::withoutAnyTheSystemsFamilyStays()
{
    const QString family = QFontDatabase::systemFont(QFontDatabase::GeneralFont).family();
    QVERIFY(!family.startsWith(QLatin1String("Segoe")));
    QCOMPARE(fontWith({}), family + QStringLiteral("|12|50|0"));
}

void StationFontTest::sizeWeightAndStyleAreFixed()
{
    QFont loud(QStringLiteral("Courier"), 30, QFont::Black, true);
    QApplication::setFont(loud);
    setStationFont();
    QCOMPARE(QApplication::font().pixelSize(), 12);
    QCOMPARE(QApplication::font().weight(), 50);
    QCOMPARE(QApplication::font().style(), QFont::StyleNormal);
}

} // namespace outpost

using namespace outpost;

int main(int argc, char **argv)
{
    testHome();
    QApplication application(argc, argv);
    if (QCoreApplication::arguments().contains(QStringLiteral("--describe"))) {
        setStationFont();
        QTextStream(stdout) << describe(QApplication::font());
        return 0;
    }
    StationFontTest test;
    return QTest::qExec(&test, argc, argv);
}
#include "stationfont_test.moc"
