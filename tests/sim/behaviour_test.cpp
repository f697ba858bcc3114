#include "sim/behaviour.h"

#include <QSet>
#include <QtTest>

namespace outpost
{

using namespace sim;

class BehaviourTest : public QObject
{
    Q_OBJECT

private slots:
    void everyNameInTheTableParses()
    {
        QSet<QString> names;
        for (const BehaviourInfo &info : behaviourTable()) {
            const QString name = QString::fromLatin1(info.name);
            Behaviour behaviour;
            QString error;
            QVERIFY2(parseBehaviour(name, &behaviour, &error), qPrintable(error));
            QCOMPARE(behaviour.fault, info.behaviour.fault);
            QCOMPARE(behaviour.parameter, info.behaviour.parameter);
            QCOMPARE(behaviour.text, info.behaviour.text);
            QVERIFY2(behaviourHelp().contains(QStringLiteral("  %1").arg(name)), info.name);
            names.insert(name);
        }
        QCOMPARE(names.size(), behaviourTable().size());
    }

    void helpIsOneLineEach()
    {
        QCOMPARE(behaviourHelp().count(QLatin1Char('\n')), behaviourTable().size());
    }

    void parameterReplacesTheDefault()
    {
        Behaviour behaviour;
        QString error;
        QVERIFY(parseBehaviour(QStringLiteral("kick:0.5"), &behaviour, &error));
        QCOMPARE(behaviour.fault, Fault::Kick);
        QCOMPARE(behaviour.parameter, 0.5);
    }

    void refusesWithASentence_data()
    {
        QTest::addColumn<QString>("option");
        QTest::addColumn<QString>("sentence");
        const auto row = [](const char *option, const char *sentence) {
            QTest::newRow(option) << QString::fromLatin1(option) << QString::fromLatin1(sentence);
        };
        row("0=nonsense", "unknown behaviour \"nonsense\"");
        row("0=", "unknown behaviour \"\"");
        row("0=KICK", "unknown behaviour \"KICK\"");
        row("0=kick:", "behaviour \"kick:\" is written kick[:seconds]");
        row("0=kick:x", "behaviour \"kick:x\" is written kick[:seconds]");
        row("0=kick:-1", "behaviour \"kick:-1\" is written kick[:seconds]");
        row("0=kick:1e9", "behaviour \"kick:1e9\" is written kick[:seconds]");
        row("0=kick:nan", "behaviour \"kick:nan\" is written kick[:seconds]");
        row("0=bursty:0", "behaviour \"bursty:0\" is written bursty[:seconds]");
        row("0=stream:1", "behaviour \"stream:1\" is written stream");
        row("4=stream", "endpoint \"4\" is neither 0, 1, 2, 3 nor all");
        row("-1=stream", "endpoint \"-1\" is neither 0, 1, 2, 3 nor all");
        row("=stream", "endpoint \"\" is neither 0, 1, 2, 3 nor all");
        row("stream", "\"stream\" is not written K=BEHAVIOUR");
    }

    void refusesWithASentence()
    {
        QFETCH(QString, option);
        EndpointBehaviours endpoints;
        QString error;
        QVERIFY(!endpoints.apply(option, &error));
        QTEST(error, "sentence");
        QVERIFY(endpoints.byNumber.isEmpty());
    }

    void endpointsFallBackToStream()
    {
        EndpointBehaviours endpoints;
        QString error;
        QVERIFY(endpoints.apply(QStringLiteral("2=monitor"), &error));
        QCOMPARE(endpoints.of(2).fault, Fault::Monitor);
        QCOMPARE(endpoints.of(0).fault, Fault::Stream);
        QCOMPARE(endpoints.of(1700000000000).fault, Fault::Stream);
    }

    void allReplacesWhatWasSetBefore()
    {
        EndpointBehaviours endpoints;
        QString error;
        QVERIFY(endpoints.apply(QStringLiteral("2=monitor"), &error));
        QVERIFY(endpoints.apply(QStringLiteral("all=refuse"), &error));
        QVERIFY(endpoints.areAll(Fault::Refuse));
        QVERIFY(!endpoints.areAll(Fault::NoConnect));
        QCOMPARE(endpoints.of(2).fault, Fault::Refuse);
        QVERIFY(endpoints.apply(QStringLiteral("3=stream"), &error));
        QVERIFY(!endpoints.areAll(Fault::Refuse));
        QCOMPARE(endpoints.of(3).fault, Fault::Stream);
    }
};

} // namespace outpost

QTEST_GUILESS_MAIN(outpost::BehaviourTest)
#include "behaviour_test.moc"
