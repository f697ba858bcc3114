#include "base/frequency.h"

#include <QtTest>

namespace outpost
{

class FrequencyTest : public QObject
{
    Q_OBJECT

private slots:
    void textHasSixDecimals_data();
    void textHasSixDecimals();
    void parsesWhatIsInRange_data();
    void parsesWhatIsInRange();
    void readsTheFrequencyFile_data();
    void readsTheFrequencyFile();
    void sameWithinHalfAHertz_data();
    void sameWithinHalfAHertz();
    void presetsAreTheTwelveBands();
    void presetTextsShowTheirFrequency();
    void noTwoPresetsAreTheSame();
    void findsThePresetOfAFrequency_data();
    void findsThePresetOfAFrequency();
};

namespace
{

const double refused = -1;

} // namespace

void FrequencyTest::textHasSixDecimals_data()
{
    QTest::addColumn<double>("mhz");
    QTest::addColumn<QString>("text");
    QTest::newRow("the default") << 14.074 << QStringLiteral("14.074000");
    QTest::newRow("whole") << 3000.0 << QStringLiteral("3000.000000");
    QTest::newRow("lowest") << 0.001 << QStringLiteral("0.001000");
    QTest::newRow("rounded") << 7.0740000001 << QStringLiteral("7.074000");
    QTest::newRow("one hertz") << 7.074001 << QStringLiteral("7.074001");
}

void FrequencyTest::textHasSixDecimals()
{
    QFETCH(double, mhz);
    QTEST(frequencyText(mhz), "text");
}

void FrequencyTest::parsesWhatIsInRange_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<double>("mhz");
    QTest::newRow("plain") << QStringLiteral("7.074") << 7.074;
    QTest::newRow("blanks and line end") << QStringLiteral("  7.074 \r\n") << 7.074;
    QTest::newRow("all its digits") << QStringLiteral("7.0740000001") << 7.0740000001;
    QTest::newRow("lowest") << QStringLiteral("0.001") << 0.001;
    QTest::newRow("highest") << QStringLiteral("3000") << 3000.0;
    QTest::newRow("exponent") << QStringLiteral("1e1") << 10.0;
    QTest::newRow("too low") << QStringLiteral("0.0005") << refused;
    QTest::newRow("just too low") << QStringLiteral("0.000999") << refused;
    QTest::newRow("too high") << QStringLiteral("3000.5") << refused;
    QTest::newRow("just too high") << QStringLiteral("3000.000001") << refused;
    QTest::newRow("zero") << QStringLiteral("0") << refused;
    QTest::newRow("negative") << QStringLiteral("-7.074") << refused;
    QTest::newRow("letters") << QStringLiteral("seven") << refused;
    QTest::newRow("with its unit") << QStringLiteral("7.074 MHz") << refused;
    QTest::newRow("decimal comma") << QStringLiteral("7,074") << refused;
    QTest::newRow("group separator") << QStringLiteral("1,000.5") << refused;
    QTest::newRow("not a number") << QStringLiteral("nan") << refused;
    QTest::newRow("infinite") << QStringLiteral("inf") << refused;
    QTest::newRow("blank") << QStringLiteral("   ") << refused;
    QTest::newRow("empty") << QString() << refused;
}

void FrequencyTest::parsesWhatIsInRange()
{
    QFETCH(QString, text);
    QTEST(parseFrequency(text).value_or(refused), "mhz");
}

void FrequencyTest::readsTheFrequencyFile_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<double>("mhz");
    QTest::newRow("as written") << QByteArray("14.074000") << 14.074;
    QTest::newRow("blanks around and a line end") << QByteArray(" 7.074 \n") << 7.074;
    QTest::newRow("no-break spaces around") << QByteArray("\u00a07.074\u00a0") << 7.074;
    QTest::newRow("up to the first NUL") << QByteArray("7.074\0garbage", 13) << 7.074;
    QTest::newRow("NUL first") << QByteArray("\0"
                                             "7.074",
                                             6)
                               << refused;
    QTest::newRow("with a byte order mark") << QByteArray("\xef\xbb\xbf"
                                                          "7.074")
                                            << 7.074;
    QTest::newRow("not UTF-8") << QByteArray("\xff\xfe") << refused;
    QTest::newRow("two lines") << QByteArray("7.074\n14.074") << refused;
    QTest::newRow("empty") << QByteArray() << refused;
}

void FrequencyTest::readsTheFrequencyFile()
{
    QFETCH(QByteArray, content);
    QTEST(parseFrequencyFile(content).value_or(refused), "mhz");
}

void FrequencyTest::sameWithinHalfAHertz_data()
{
    QTest::addColumn<double>("left");
    QTest::addColumn<double>("right");
    QTest::addColumn<bool>("same");
    QTest::newRow("equal") << 14.074 << 14.074 << true;
    QTest::newRow("a little above") << 14.074 << 14.0740004 << true;
    QTest::newRow("a little below") << 14.074 << 14.0739996 << true;
    QTest::newRow("exactly half a hertz") << 0.0 << 5e-07 << false;
    QTest::newRow("just under half a hertz") << 0.0 << 4.999e-07 << true;
    QTest::newRow("more above") << 14.074 << 14.0740006 << false;
    QTest::newRow("more below") << 14.074 << 14.0739994 << false;
}

void FrequencyTest::sameWithinHalfAHertz()
{
    QFETCH(double, left);
    QFETCH(double, right);
    QTEST(sameFrequency(left, right), "same");
}

void FrequencyTest::presetsAreTheTwelveBands()
{
    QStringList texts;
    for (const BandPreset &preset : bandPresets()) {
        texts.append(preset.text);
    }
    const QString expected = QStringLiteral(
        "160 m FT8 \u2014 1.840000|80 m FT8 \u2014 3.573000|60 m FT8 \u2014 5.357000|"
        "40 m FT8 \u2014 7.074000|30 m FT8 \u2014 10.136000|20 m FT8 \u2014 14.074000|"
        "17 m FT8 \u2014 18.100000|15 m FT8 \u2014 21.074000|12 m FT8 \u2014 24.915000|"
        "10 m FT8 \u2014 28.074000|6 m FT8 \u2014 50.313000|2 m FT8 \u2014 144.174000");
    QCOMPARE(texts, expected.split(QLatin1Char('|')));
}

void FrequencyTest::presetTextsShowTheirFrequency()
{
    for (const BandPreset &preset : bandPresets()) {
        QCOMPARE(preset.text.section(QLatin1Char(' '), -1), frequencyText(preset.mhz));
    }
}

void FrequencyTest::noTwoPresetsAreTheSame()
{
    int index = 0;
    for (const BandPreset &preset : bandPresets()) {
        QCOMPARE(bandPresetIndex(preset.mhz), index++);
    }
    QCOMPARE(index, 12);
}

void FrequencyTest::findsThePresetOfAFrequency_data()
{
    QTest::addColumn<double>("mhz");
    QTest::addColumn<int>("index");
    QTest::newRow("20 m") << 14.074 << 5;
    QTest::newRow("off by half a kilohertz") << 14.0745 << -1;
    QTest::newRow("off by less than half a hertz") << 7.0740000001 << 3;
    QTest::newRow("no band") << 10.1 << -1;
}

void FrequencyTest::findsThePresetOfAFrequency()
{
    QFETCH(double, mhz);
    QTEST(bandPresetIndex(mhz), "index");
}

} // namespace outpost

QTEST_GUILESS_MAIN(outpost::FrequencyTest)
#include "frequency_test.moc"
