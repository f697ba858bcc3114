#include "daemon/decoderlookup.h"
#include "tests/fixture/logtrace.h"

#include <QTemporaryDir>
#include <QtTest>

namespace outpost
{

namespace
{
const QString none = QStringLiteral("There is no decoder that can run: install WSJT-X, or name its "
                                    "jt9 in the configuration. It is looked for each minute.");

void makeProgram(const QString &path)
{
    QFile program(path);
    if (!program.open(QIODevice::WriteOnly)) {
        qFatal("cannot write %s", qPrintable(path));
    }
    program.setPermissions(QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
}
} // namespace

class DecoderLookupTest : public QObject
{
    Q_OBJECT

private slots:
    void saysOnceThatThereIsNoneAndLooksAgainEachMinute()
    {
        const LogTrace log;
        DecoderLookup lookup([this] { return find(); }, [this] { return nowMs; });
        for (nowMs = 0; nowMs < 180000; nowMs += 500) {
            QCOMPARE(lookup.path(), QString());
        }
        QCOMPARE(looks, 3);
        QCOMPARE(log.lines(), QStringList(none));
    }

    void saysWhenItIsThereAndWhenItHasGone()
    {
        const LogTrace log;
        const QTemporaryDir folder;
        const QString jt9 = folder.filePath(QStringLiteral("jt9"));
        DecoderLookup lookup([this] { return find(); }, [this] { return nowMs; });
        makeProgram(jt9);
        installed = jt9;
        QCOMPARE(lookup.path(), jt9);
        nowMs += 600000;
        QCOMPARE(lookup.path(), jt9);
        QCOMPARE(looks, 1);
        QFile::remove(jt9);
        installed.clear();
        QCOMPARE(lookup.path(), QString()); // at once
        makeProgram(jt9);
        installed = jt9;
        nowMs += 59999;
        QCOMPARE(lookup.path(), QString());
        nowMs += 1;
        QCOMPARE(lookup.path(), jt9);
        const QString there = QStringLiteral("Decoder: ") + jt9;
        QCOMPARE(log.lines(), QStringList({there, none, there}));
    }

    void aConfiguredDecoderIsTheOnlyOne()
    {
        const QTemporaryDir folder;
        const QString jt9 = folder.filePath(QStringLiteral("jt9"));
        QCOMPARE(usableDecoder(jt9), QString());
        makeProgram(jt9);
        makeProgram(folder.filePath(QStringLiteral("wsjtx")));
        QCOMPARE(usableDecoder(jt9), jt9);
    }

    void init()
    {
        nowMs = 0;
        looks = 0;
        installed.clear();
    }

private:
    QString find()
    {
        ++looks;
        return installed;
    }

    qint64 nowMs = 0;
    int looks = 0;
    QString installed;
};

} // namespace outpost

QTEST_GUILESS_MAIN(outpost::DecoderLookupTest)
#include "decoderlookup_test.moc"
