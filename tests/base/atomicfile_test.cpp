#include "base/atomicfile.h"
#include "base/datafile.h"

#include <QDir>
#include <QTemporaryDir>
#include <QtTest>

namespace outpost
{

class AtomicFileTest : public QObject
{
    Q_OBJECT

private slots:
    void init() { QVERIFY(folder.isValid()); }
    void writesTheWholeContent_data();
    void writesTheWholeContent();
    void replacesALongerFile();
    void leavesNothingElseInTheFolder();
    void cannotOpenInAMissingFolder();
    void cannotOpenOverADirectory();
    void aFileThatCannotBeOpenedReadsAsNothing();

private:
    QString path(const QString &name) const { return folder.filePath(name); }

    QTemporaryDir folder;
};

void AtomicFileTest::writesTheWholeContent_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<bool>("text");
    QTest::newRow("binary") << QByteArray("a\0b\r\n\xff", 6) << false;
    QTest::newRow("empty") << QByteArray("") << false;
    QTest::newRow("more than any buffer") << QByteArray(1 << 20, 'x') << false;
    QTest::newRow("text without a line end") << QByteArray("14.074000") << true;
}

void AtomicFileTest::writesTheWholeContent()
{
    QFETCH(QByteArray, content);
    QFETCH(bool, text);
    const SaveResult saved =
        saveAtomically(path(QStringLiteral("file")), content,
                       text ? QIODevice::OpenMode(QIODevice::Text) : QIODevice::OpenMode());
    QVERIFY(saved);
    QCOMPARE(saved.outcome, SaveResult::Saved);
    QCOMPARE(saved.error, QString());
    const auto read = readFile(path(QStringLiteral("file")));
    QVERIFY(read.has_value());
    QCOMPARE(*read, content);
}

void AtomicFileTest::replacesALongerFile()
{
    const QString target = path(QStringLiteral("longer"));
    QVERIFY(saveAtomically(target, "a long first content"));
    QVERIFY(saveAtomically(target, "short"));
    QCOMPARE(readFile(target).value(), QByteArray("short"));
}

void AtomicFileTest::leavesNothingElseInTheFolder()
{
    const QDir own(path(QStringLiteral("own")));
    QVERIFY(own.mkpath(QStringLiteral(".")));
    QVERIFY(saveAtomically(own.filePath(QStringLiteral("only")), "content"));
    QCOMPARE(own.entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot),
             QStringList(QStringLiteral("only")));
}

void AtomicFileTest::cannotOpenInAMissingFolder()
{
    const SaveResult saved = saveAtomically(path(QStringLiteral("missing/file")), "content");
    QVERIFY(!saved);
    QCOMPARE(saved.outcome, SaveResult::NotOpened);
    QFile plain(path(QStringLiteral("missing/file")));
    QVERIFY(!plain.open(QIODevice::WriteOnly));
    QCOMPARE(saved.error, plain.errorString());
    QVERIFY(!QDir(path(QStringLiteral("missing"))).exists());
}

void AtomicFileTest::cannotOpenOverADirectory()
{
    const QDir target(path(QStringLiteral("directory")));
    QVERIFY(target.mkpath(QStringLiteral("kept")));
    const SaveResult saved = saveAtomically(target.path(), "content");
    QCOMPARE(saved.outcome, SaveResult::NotOpened);
    QCOMPARE(saved.error, QStringLiteral("Filename refers to a directory"));
    QVERIFY(target.exists(QStringLiteral("kept")));
}

void AtomicFileTest::aFileThatCannotBeOpenedReadsAsNothing()
{
    QVERIFY(!readFile(path(QStringLiteral("never written"))).has_value());
    QVERIFY(!readFile(folder.path()).has_value());
}

} // namespace outpost

QTEST_GUILESS_MAIN(outpost::AtomicFileTest)
#include "atomicfile_test.moc"
