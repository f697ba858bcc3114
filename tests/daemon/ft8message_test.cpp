#include "daemon/ft8message.h"

#include <QtTest>

namespace outpost
{

namespace
{

struct Case {
    const char *message;
    const char *callsign;
    const char *locator;
};

const Case cases[] = {
    // Calls to everybody.
    {"CQ K1ABC FN42", "K1ABC", "FN42"},
    {"CQ K1ABC", "K1ABC", ""},
    {"CQ DX K1ABC FN42", "K1ABC", "FN42"},
    {"CQ DX K1ABC", "K1ABC", ""},
    {"CQ NA DL2XYZ JO62", "DL2XYZ", "JO62"},
    {"CQ POTA W9XYZ EN37", "W9XYZ", "EN37"},
    {"CQ SOTA HB9ABC JN47", "HB9ABC", "JN47"},
    {"CQ TEST K1ABC FN42", "K1ABC", "FN42"},
    {"CQ RU K1ABC FN42", "K1ABC", "FN42"},
    {"CQ FD K1ABC FN42", "K1ABC", "FN42"},
    {"CQ WW R2022Z KO85", "R2022Z", "KO85"},
    {"CQ 290 K1ABC FN42", "K1ABC", "FN42"},
    {"CQ 000 K1ABC FN42", "K1ABC", "FN42"},
    {"CQ A K1ABC FN42", "K1ABC", "FN42"},
    {"CQ K1ABC/R FN42", "K1ABC/R", "FN42"},
    {"CQ G4ABC/P IO91", "G4ABC/P", "IO91"},
    {"CQ PJ4/K1ABC", "PJ4/K1ABC", ""},
    {"CQ K1ABC/VE3", "K1ABC/VE3", ""},
    {"CQ W1AW/7", "W1AW/7", ""},
    {"CQ HB9/DL1XYZ/P", "HB9/DL1XYZ/P", ""},
    {"CQ YW18FIFA", "YW18FIFA", ""},
    {"CQ <PJ4/K1ABC> FK52", "PJ4/K1ABC", "FK52"},
    {"DE K1ABC FN42", "K1ABC", "FN42"},
    {"QRZ K1ABC", "K1ABC", ""},
    // A contact, step by step.
    {"K1ABC W9XYZ EN37", "W9XYZ", "EN37"},
    {"W9XYZ K1ABC -11", "K1ABC", ""},
    {"K1ABC W9XYZ R-09", "W9XYZ", ""},
    {"K1ABC W9XYZ +05", "W9XYZ", ""},
    {"K1ABC W9XYZ R+12", "W9XYZ", ""},
    {"W9XYZ K1ABC RRR", "K1ABC", ""},
    {"W9XYZ K1ABC RR73", "K1ABC", ""},
    {"K1ABC W9XYZ 73", "W9XYZ", ""},
    {"K1ABC W9XYZ", "W9XYZ", ""},
    {"K1ABC W9XYZ RR72", "W9XYZ", "RR72"},
    {"K1ABC YB0ABC OI33", "YB0ABC", "OI33"},
    // Shapes of callsigns.
    {"CQ 3DA0XYZ KG53", "3DA0XYZ", "KG53"},
    {"CQ 3XY1ABC IJ39", "3XY1ABC", "IJ39"},
    {"CQ 9A1A JN75", "9A1A", "JN75"},
    {"CQ C6AGU FL15", "C6AGU", "FL15"},
    {"CQ E71AB JN94", "E71AB", "JN94"},
    {"CQ T77C JN63", "T77C", "JN63"},
    {"CQ 2E0ABC IO92", "2E0ABC", "IO92"},
    {"CQ 4U1UN FN30", "4U1UN", "FN30"},
    {"CQ LZ1354PM", "LZ1354PM", ""},
    {"CQ 3Z100PZK", "3Z100PZK", ""},
    {"CQ VB19TOKYO", "VB19TOKYO", ""},
    // Contests.
    {"K1ABC W9XYZ R EN37", "W9XYZ", "EN37"},
    {"K1ABC/R W9XYZ/R R EN37", "W9XYZ/R", "EN37"},
    {"W9XYZ K1ABC R 579 MA", "K1ABC", ""},
    {"K1ABC G3AAA 559 0013", "G3AAA", ""},
    {"TU; W9XYZ K1ABC R 579 MA", "K1ABC", ""},
    {"TU; KA0DEF K1ABC R 569 0013", "K1ABC", ""},
    {"W9XYZ K1ABC 529 X05", "K1ABC", ""},
    {"K1ABC W9XYZ 6A WI", "W9XYZ", ""},
    {"W9XYZ K1ABC R 17B EMA", "K1ABC", ""},
    {"W9XYZ K1ABC R 2B DX", "K1ABC", ""},
    {"G4ABC/P PA9XYZ JO22", "PA9XYZ", "JO22"},
    {"PA9XYZ G4ABC/P RR73", "G4ABC/P", ""},
    {"<PA3XYZ> <G4ABC/P> 520093 IO91NP", "G4ABC/P", "IO91"},
    {"<G4ABC/P> <PA3XYZ> R 570007 JO22DI", "PA3XYZ", "JO22"},
    {"<PA3XYZ> <G4ABC/P> R 520093 RR73NP", "G4ABC/P", "RR73"}, // six characters are no "RR73"
    // Two callers at once.
    {"K1ABC RR73; W9XYZ <KH1/KH7Z> -08", "KH1/KH7Z", ""},
    {"K1ABC RR73; W9XYZ <KH1/KH7Z> +03", "KH1/KH7Z", ""},
    {"K1ABC RR73; W9XYZ <...> -08", "", ""},
    // Compound and hashed callsigns.
    {"<W9XYZ> PJ4/K1ABC", "PJ4/K1ABC", ""},
    {"<W9XYZ> PJ4/K1ABC RRR", "PJ4/K1ABC", ""},
    {"PJ4/K1ABC <W9XYZ>", "W9XYZ", ""},
    {"PJ4/K1ABC <W9XYZ> 73", "W9XYZ", ""},
    {"<PJ4/K1ABC> W9XYZ -11", "W9XYZ", ""},
    {"W9XYZ <PJ4/K1ABC> R-11", "PJ4/K1ABC", ""},
    {"W9XYZ <YW18FIFA> RR73", "YW18FIFA", ""},
    {"<YW18FIFA> KA1ABC FN42", "KA1ABC", "FN42"},
    {"<...> W9XYZ -11", "W9XYZ", ""},
    {"<...> PJ4/K1ABC RR73", "PJ4/K1ABC", ""},
    {"W9XYZ <...> RR73", "", ""},
    {"W9XYZ <...> FK52", "", "FK52"},
    {"CQ <...> FK52", "", "FK52"},
    // Marks of a doubtful or a-priori decode, in jt9's columns and with single blanks.
    {"CQ K1ABC FN42                        ? a1", "K1ABC", "FN42"},
    {"CQ K1ABC FN42                          a1", "K1ABC", "FN42"},
    {"CQ K1ABC FN42                        ?", "K1ABC", "FN42"},
    {"CQ K1ABC FN42 ? a1", "K1ABC", "FN42"},
    {"K1ABC W9XYZ EN37 a2", "W9XYZ", "EN37"},
    {"W9XYZ K1ABC RR73                     ? a5", "K1ABC", ""},
    {"CQ K1ABC ? a1", "K1ABC", ""},
    // Free text, telemetry and what is cut off.
    {"TNX BOB 73 GL", "", ""},
    {"73 DE K1ABC FN42", "", ""},
    {"HI K1ABC 73", "", ""},
    {"CQ CQ CQ", "", ""},
    {"CQ", "", ""},
    {"CQ DX", "", ""},
    {"K1ABC", "", ""},
    {"K1ABC RR73", "", ""},
    {"TU 5W DIPOLE", "", ""},
    {"50W DIPOLE 73", "", ""},
    {"3EL YAGI 100W", "", ""},
    {"FN42 K1ABC", "", ""},
    {"RR73 K1ABC -10", "", ""},
    {"123456789ABCDEF012", "", ""},
    {"71ABCDEF0123456789", "", ""},
    {"K1ABC W9XYZ -11 73", "", ""},
    {"K1ABC W9XYZ FN42AA", "", ""},
    {"K1ABC W9XYZ SS42", "", ""},
    {"K1ABC W9XYZ R RR73", "", ""},
    {"CQ K1ABC FN42 A1", "", ""},
    {"CQ 12 K1ABC FN42", "", ""},
    {"CQ TESTS K1ABC FN42", "", ""},
    {"cq k1abc fn42", "", ""},
    {"<> <> -10", "", ""},
    {"? a1", "", ""},
};

} // namespace

class Ft8MessageTest : public QObject
{
    Q_OBJECT

private slots:
    void tellsWhoSendsAndFromWhere_data();
    void tellsWhoSendsAndFromWhere();
    void anEmptyMessageTellsNothing();
    void whiteSpaceAroundDoesNotMatter();
    void aLongMessageTakesNoTime();
};

void Ft8MessageTest::tellsWhoSendsAndFromWhere_data()
{
    QTest::addColumn<QString>("message");
    QTest::addColumn<QString>("callsign");
    QTest::addColumn<QString>("locator");

    for (const Case &each : cases) {
        QTest::addRow("%s", each.message)
            << QString::fromLatin1(each.message) << QString::fromLatin1(each.callsign)
            << QString::fromLatin1(each.locator);
    }
}

void Ft8MessageTest::tellsWhoSendsAndFromWhere()
{
    QFETCH(QString, message);
    const Ft8Sender sender = senderOf(message);
    QTEST(sender.callsign, "callsign");
    QTEST(sender.locator, "locator");
}

void Ft8MessageTest::anEmptyMessageTellsNothing()
{
    QCOMPARE(senderOf(QString()).callsign, QString());
    QCOMPARE(senderOf(QString()).locator, QString());
}

void Ft8MessageTest::whiteSpaceAroundDoesNotMatter()
{
    const Ft8Sender sender = senderOf(QStringLiteral("  CQ\tK1ABC   FN42 \n"));
    QCOMPARE(sender.callsign, QStringLiteral("K1ABC"));
    QCOMPARE(sender.locator, QStringLiteral("FN42"));
}

void Ft8MessageTest::aLongMessageTakesNoTime()
{
    QElapsedTimer timer;
    timer.start();
    for (const char *piece : {"A1", "K1ABC ", "<", "A/", "CQ ", "R ? a1 "}) {
        QCOMPARE(senderOf(QString::fromLatin1(piece).repeated(100000)).callsign, QString());
    }
    QVERIFY(timer.elapsed() < 5000);
}

} // namespace outpost

QTEST_GUILESS_MAIN(outpost::Ft8MessageTest)
#include "ft8message_test.moc"
