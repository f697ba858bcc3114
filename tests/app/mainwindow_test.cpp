// The window after its start, and how it ends.

#include "base/settings.h"
#include "decode/ft8decode.h"
#include "tests/fixture/teststation.h"

#include <QDialog>
#include <QLabel>
#include <QMenuBar>
#include <QPushButton>
#include <QStatusBar>
#include <QTableWidget>
#include <QTcpSocket>
#include <QtTest>

namespace outpost
{

namespace
{
const QString longestSummary =
    QStringLiteral("Kiwi Disconnected | Bridge Disconnected | TDecodes 999999");
const QString cqLine = QStringLiteral("142315 -10  0.1  500 ~  CQ W1ABC FN42");

QLabel *summaryLabel(const MainWindow &window)
{
    return window.findChild<QStatusBar *>()->findChild<QLabel *>();
}

int summaryWidth(const QFont &font)
{
    return QFontMetrics(font).horizontalAdvance(longestSummary);
}

// Records which receiver's posted event makes a condition true.
class TurnWatch : public QObject
{
public:
    explicit TurnWatch(std::function<bool()> conditionToWatch)
        : condition(std::move(conditionToWatch))
    {
        QCoreApplication::instance()->installEventFilter(this);
    }

    bool isOver() const { return over; }
    QObject *receiver() const { return latest; }

    bool eventFilter(QObject *watched, QEvent *event) override
    {
        if (!over && event->type() == QEvent::MetaCall) {
            over = condition();
            latest = over ? latest : watched;
        }
        return false;
    }

private:
    const std::function<bool()> condition;
    bool over = false;
    QObject *latest = nullptr;
};

QPushButton *clearButton(const MainWindow &window)
{
    const auto *bar = qobject_cast<QMenuBar *>(window.menuWidget());
    return qobject_cast<QPushButton *>(bar->cornerWidget(Qt::TopRightCorner));
}
} // namespace

class MainWindowTest : public QObject
{
    Q_OBJECT

private slots:
    void titleAndSizes();
    void theTableFillsTheWindow();
    void theClearButtonStandsInTheMenuBarsCorner();
    void theClearButtonIs20PixelsHighAtLeast();
#ifdef OUTPOST_STREAMS
    void theClearButtonClearsTheTableAndNothingElse();
#endif
    void theStatusBarHoldsOneLabel();
    void theSummaryIsFittedInto335Pixels_data();
    void theSummaryIsFittedInto335Pixels();
    void aSummaryOf335PixelsIsNotMadeSmaller_data();
    void aSummaryOf335PixelsIsNotMadeSmaller();
    void aSummaryThatCannotFitIsWrittenIn6Point5_data();
    void aSummaryThatCannotFitIsWrittenIn6Point5();
    void startsTheBridgeAtOnceAndFindsTheDecoderFromTheEventLoop();
#ifdef OUTPOST_STREAMS
    void theDecodersDepthComesFromTheSettings_data();
    void theDecodersDepthComesFromTheSettings();
#endif
    void highlightsTheCallsOfTheLastRun();
#ifdef OUTPOST_STREAMS
    void decodesAreTakenInTurnsOfTheWindowsOwn();
    void endsSilentlyWithTheBridgeFirst();
    void endsWhileAPeriodIsDecoded();
    void endsWhileConnecting();
#endif
    void endsWithEveryWindowOpen();
};

void MainWindowTest::titleAndSizes()
{
    const TestStation station;
    QCOMPARE(station.window->windowTitle(), QStringLiteral("PELQ Kiwi Outpost"));
    QCOMPARE(station.window->size(), QSize(345, 245));
    QCOMPARE(station.window->minimumSize(), QSize(345, 175));
    station.window->resize(10, 10);
    QCOMPARE(station.window->size(), QSize(345, 175));
}

void MainWindowTest::theTableFillsTheWindow()
{
    const TestStation station;
    QVERIFY(qobject_cast<QTableWidget *>(station.window->centralWidget()) != nullptr);
}

void MainWindowTest::theClearButtonStandsInTheMenuBarsCorner()
{
    const TestStation station;
    auto *bar = qobject_cast<QMenuBar *>(station.window->menuWidget());
    const QPushButton *clear = clearButton(*station.window);
    QVERIFY(clear != nullptr);
    QVERIFY(clear->isVisible());
    QCOMPARE(clear->text(), QStringLiteral("Clear"));
    QCOMPARE(clear->toolTip(), QStringLiteral("Clear the displayed decode list"));
    QCOMPARE(clear->focusPolicy(), Qt::NoFocus);
    QCOMPARE(clear->minimumWidth(), 52);
    bar->setCornerWidget(nullptr, Qt::TopRightCorner); // a corner widget makes the bar higher
    const int height = qMax(20, bar->sizeHint().height() - 2);
    QCOMPARE(clear->minimumHeight(), height);
    QCOMPARE(clear->maximumHeight(), height);
}

void MainWindowTest::theClearButtonIs20PixelsHighAtLeast()
{
    const QFont before = QApplication::font();
    QFont font = before;
    font.setPixelSize(12);
    QApplication::setFont(font);
    const TestStation station;
    QApplication::setFont(before);
    QCOMPARE(clearButton(*station.window)->minimumHeight(), 20);
    QCOMPARE(clearButton(*station.window)->maximumHeight(), 20);
}

#ifdef OUTPOST_STREAMS
void MainWindowTest::theClearButtonClearsTheTableAndNothingElse()
{
    const PuppetReceiver receiver;
    TestStation station;
    station.hear(receiver);
    station.window->appendDecodes(QStringLiteral("14:23:15"), parseDecodeLines({cqLine, cqLine}));
    station.window->onDecodesDelivered(QStringLiteral("14:23:15"), parseDecodeLines({cqLine}));
    const QTableWidget *table = decodeTableOf(*station.window);
    QCOMPARE(table->rowCount(), 2);
    QCOMPARE(table->horizontalHeaderItem(4)->text(), QStringLiteral("Message (2)"));
    const QString good = listFile();
    const QByteArray goodBefore = fileBytes(good);
    station.trace.clear();

    QTest::mouseClick(clearButton(*station.window), Qt::LeftButton);
    QCOMPARE(table->rowCount(), 0);
    QCOMPARE(table->horizontalHeaderItem(4)->text(), QStringLiteral("Message (0)"));
    QCOMPARE(summaryLine(*station.window),
             QStringLiteral("Kiwi Connected | Bridge Disconnected | TDecodes 2"));
    QCOMPARE(fileBytes(good), goodBefore);
    QCOMPARE(station.trace.lines(), QStringList());
}
#endif

void MainWindowTest::theStatusBarHoldsOneLabel()
{
    const TestStation station;
    const auto *bar = station.window->findChild<QStatusBar *>();
    QVERIFY(bar->isVisible());
    QVERIFY(bar->currentMessage().isEmpty());
    QVERIFY(!bar->isSizeGripEnabled());
    QCOMPARE(bar->contentsMargins(), QMargins(2, 0, 2, 0));
    QCOMPARE(bar->styleSheet(), QStringLiteral("QStatusBar::item { border: 0px; }"));
    QCOMPARE(bar->findChildren<QLabel *>().size(), 1);

    const QLabel *label = summaryLabel(*station.window);
    QCOMPARE(label->text(), QStringLiteral("Kiwi Disconnected | Bridge Disconnected | TDecodes 0"));
    QCOMPARE(label->alignment(), Qt::AlignCenter);
    QCOMPARE(label->contentsMargins(), QMargins());
    QCOMPARE(label->margin(), 0);
    QCOMPARE(label->minimumWidth(), 0);
    QVERIFY(!label->wordWrap());
    QCOMPARE(label->sizePolicy().horizontalPolicy(), QSizePolicy::Ignored);
    QCOMPARE(label->sizePolicy().verticalPolicy(), QSizePolicy::Fixed);
    QVERIFY2(label->width() > 300, "it takes the bar's width");
}

void MainWindowTest::theSummaryIsFittedInto335Pixels_data()
{
    QTest::addColumn<QFont>("font");
    QTest::addColumn<qreal>("startPoints");
    const QString family = QStringLiteral("DejaVu Sans");
    QFont pixels(family);
    pixels.setPixelSize(12);
    QTest::newRow("a size in pixels starts at 9") << pixels << 9.0;
    pixels.setLetterSpacing(QFont::AbsoluteSpacing, -4);
    QTest::newRow("and stays there where it fits") << pixels << 9.0;
    QTest::newRow("large and bold") << QFont(family, 24, QFont::Bold) << 24.0;
    QTest::newRow("7.5 points") << [&] {
        QFont font(family);
        font.setPointSizeF(7.5);
        return font;
    }() << 7.5;
    QTest::newRow("already small") << QFont(family, 5) << 5.0;
    QTest::newRow("wide letters") << QFont(QStringLiteral("DejaVu Sans Mono"), 12) << 12.0;
}

void MainWindowTest::theSummaryIsFittedInto335Pixels()
{
    QFETCH(QFont, font);
    QFETCH(qreal, startPoints);
    const QFont before = QApplication::font();
    QApplication::setFont(font);
    const TestStation station;
    QApplication::setFont(before);

    const QFont fitted = summaryLabel(*station.window)->font();
    QCOMPARE(fitted.weight(), static_cast<int>(QFont::Normal));
    const qreal points = fitted.pointSizeF();
    QVERIFY(points <= startPoints);
    QVERIFY(points >= qMin(6.5, startPoints));
    QVERIFY2(points <= 6.5 || summaryWidth(fitted) <= 335, "it does not fit");
    QFont larger = fitted;
    larger.setPointSizeF(points + 0.25);
    QVERIFY2(points == startPoints || summaryWidth(larger) > 335, "a larger one would fit");
    QCOMPARE(std::fmod(startPoints - points, 0.25), 0.0);

    const auto *bar = station.window->findChild<QStatusBar *>();
    const int height = qMax(18, QFontMetrics(fitted).height() + 6);
    QCOMPARE(bar->minimumHeight(), height);
    QCOMPARE(bar->maximumHeight(), height);
}

void MainWindowTest::aSummaryOf335PixelsIsNotMadeSmaller_data()
{
    QTest::addColumn<int>("width");
    QTest::addColumn<bool>("fits");
    QTest::newRow("334") << 334 << true;
    QTest::newRow("335") << 335 << true;
    QTest::newRow("336") << 336 << false;
}

void MainWindowTest::aSummaryOf335PixelsIsNotMadeSmaller()
{
    QFETCH(int, width);
    QFETCH(bool, fits);
    QFont font(QStringLiteral("DejaVu Sans"), 9);
    const double spacing = double(width - summaryWidth(font)) / longestSummary.size();
    for (int step = -100; summaryWidth(font) != width && step <= 100; ++step) {
        font.setLetterSpacing(QFont::AbsoluteSpacing, spacing + step / 100.0);
    }
    QCOMPARE(summaryWidth(font), width);
    const QFont before = QApplication::font();
    QApplication::setFont(font);
    const TestStation station;
    QApplication::setFont(before);
    const qreal points = summaryLabel(*station.window)->font().pointSizeF();
    QVERIFY2(fits ? points == 9.0 : points < 9.0, qPrintable(QString::number(points)));
}

void MainWindowTest::aSummaryThatCannotFitIsWrittenIn6Point5_data()
{
    QTest::addColumn<qreal>("startPoints");
    QTest::newRow("in whole steps") << 9.0;
    QTest::newRow("the last step cut short") << 7.6;
}

void MainWindowTest::aSummaryThatCannotFitIsWrittenIn6Point5()
{
    QFETCH(qreal, startPoints);
    QFont font(QStringLiteral("DejaVu Sans"));
    font.setPointSizeF(startPoints);
    font.setLetterSpacing(QFont::AbsoluteSpacing, 10);
    const QFont before = QApplication::font();
    QApplication::setFont(font);
    const TestStation station;
    QApplication::setFont(before);
    QCOMPARE(summaryLabel(*station.window)->font().pointSizeF(), 6.5);
}

void MainWindowTest::startsTheBridgeAtOnceAndFindsTheDecoderFromTheEventLoop()
{
    TestStation station;
    station.window.reset();
    station.trace.clear();
    const MainWindow window;
    const QString listening =
        QStringLiteral("Local WSJT bridge listening on 127.0.0.1:%1.").arg(station.bridgePort);
    QCOMPARE(station.trace.lines(), QStringList{listening});
    const QString found = QStringLiteral("JT9 decoder ready: ") + station.decoder.path();
    QTRY_COMPARE(station.trace.lines(), QStringList({listening, found}));
}

#ifdef OUTPOST_STREAMS
void MainWindowTest::theDecodersDepthComesFromTheSettings_data()
{
    QTest::addColumn<QVariant>("stored");
    QTest::addColumn<QByteArray>("depth");
    QTest::newRow("nothing") << QVariant() << QByteArray("2");
    QTest::newRow("0") << QVariant(0) << QByteArray("2");
    QTest::newRow("1") << QVariant(1) << QByteArray("1");
    QTest::newRow("2") << QVariant(2) << QByteArray("2");
    QTest::newRow("3") << QVariant(3) << QByteArray("3");
    QTest::newRow("4") << QVariant(4) << QByteArray("2");
    QTest::newRow("not a number") << QVariant(QStringLiteral("deep")) << QByteArray("2");
}

void MainWindowTest::theDecodersDepthComesFromTheSettings()
{
    QFETCH(QVariant, stored);
    QFETCH(QByteArray, depth);
    const QTemporaryDir seen;
    const PuppetReceiver receiver;
    TestStation station("echo $3 >> '" +
                        QFile::encodeName(seen.filePath(QStringLiteral("depths"))) + "'");
    if (stored.isValid()) {
        stationSettings().setValue(QStringLiteral("decoder/depth"), stored);
    }
    station.restart();
    station.hearPeriod(receiver);
    QTRY_COMPARE(fileBytes(seen.filePath(QStringLiteral("depths"))), (depth + "\n").repeated(4));
}
#endif

void MainWindowTest::highlightsTheCallsOfTheLastRun()
{
    TestStation station;
    stationSettings().setValue(QStringLiteral("highlight/calls"),
                               QStringList{QStringLiteral("W1ABC")});
    const auto isHighlighted = [&station] {
        station.window->appendDecodes(QStringLiteral("14:23:15"), parseDecodeLines({cqLine}));
        return decodeTableOf(*station.window)->item(0, 4)->background() == QBrush(Qt::yellow);
    };
    QVERIFY(!isHighlighted());
    station.restart();
    QVERIFY(isHighlighted());
}

#ifdef OUTPOST_STREAMS
// Not in the event of the capture in which a worker's result arrives.
void MainWindowTest::decodesAreTakenInTurnsOfTheWindowsOwn()
{
    const PuppetReceiver receiver;
    TestStation station(ScriptedDecoder::printing(0, {cqLine.toLatin1()}));
    const QString good = listFile();
    const QTableWidget *table = decodeTableOf(*station.window);
    TurnWatch rows([table] { return table->rowCount() > 0; });
    TurnWatch receivers([good] { return QFile::exists(good); });
    station.hearPeriod(receiver);
    QTRY_VERIFY(rows.isOver() && receivers.isOver());
    QCOMPARE(rows.receiver(), station.window.get());
    QCOMPARE(receivers.receiver(), station.window.get());
}

void MainWindowTest::endsSilentlyWithTheBridgeFirst()
{
    const PuppetReceiver receiver;
    TestStation station;
    QTcpSocket client;
    client.connectToHost(QHostAddress::LocalHost, static_cast<quint16>(station.bridgePort));
    QTRY_VERIFY(client.canReadLine());
    station.hear(receiver);
    // The session cannot be saved; the log line about it shows when the link is disconnected.
    putFile(testHome().dataFile(QStringLiteral("receiver-status-log.json/in-the-way")), {});
    station.trace.clear();
    QTimer::singleShot(0, qApp, [] { QCoreApplication::quit(); });
    QCOMPARE(QCoreApplication::exec(), 0);
    QCOMPARE(station.trace.lines(), QStringList());
    station.window.reset();
    const QStringList lines = station.trace.lines();
    QCOMPARE(lines.size(), 2);
    QCOMPARE(lines.at(0), QStringLiteral("Local WSJT bridge stopped."));
    QVERIFY2(lines.at(1).startsWith(QLatin1String("Status log save failed: ")),
             qPrintable(lines.at(1)));
    QTRY_COMPARE(client.state(), QAbstractSocket::UnconnectedState);
    QTRY_COMPARE(receiver.liveLinks(), 0);
}

void MainWindowTest::endsWhileAPeriodIsDecoded()
{
    const QTemporaryDir seen;
    const QString begun = seen.filePath(QStringLiteral("begun"));
    const PuppetReceiver receiver;
    const QString ended = seen.filePath(QStringLiteral("ended"));
    TestStation station("touch '" + QFile::encodeName(begun) + "'; sleep 2; echo '" +
                        cqLine.toLatin1() + "'; touch '" + QFile::encodeName(ended) + "'");
    station.hearPeriod(receiver);
    QTRY_VERIFY(QFile::exists(begun));
    station.trace.clear();
    QVERIFY(!QFile::exists(ended));
    station.window.reset();
    QCOMPARE(station.trace.lines(), QStringList{QStringLiteral("Local WSJT bridge stopped.")});
    QCoreApplication::processEvents(); // nothing more is delivered
    const QJsonObject log = jsonFile(logFile());
    QCOMPARE(log.value(QLatin1String("Sessions")).toArray().size(), 1);
}

void MainWindowTest::endsWhileConnecting()
{
    const PuppetReceiver receiver;
    TestStation station;
    station.connectTo(receiver.port());
    station.trace.clear();
    station.window.reset();
    QCOMPARE(station.trace.lines(), QStringList{QStringLiteral("Local WSJT bridge stopped.")});
    QCoreApplication::processEvents(); // a queued probe has no effect
    QTRY_COMPARE(receiver.liveLinks(), 0);
}
#endif

void MainWindowTest::endsWithEveryWindowOpen()
{
    TestStation station;
    const QStringList entries{QStringLiteral("Status Log"), QStringLiteral("Station Display"),
                              QStringLiteral("Bridge Status")};
    int before = 0;
    for (const QWidget *widget : QApplication::topLevelWidgets()) {
        before += qobject_cast<const QDialog *>(widget) != nullptr ? 1 : 0;
    }
    QCOMPARE(before, 0);
    for (const QString &entry : entries) {
        choose(*station.window, {QStringLiteral("Settings"), QStringLiteral("View"), entry});
    }
    QCOMPARE(station.window->findChildren<QDialog *>().size(), 3);
    station.window->hide();
    station.window.reset();
    for (const QWidget *widget : QApplication::topLevelWidgets()) {
        QVERIFY(qobject_cast<const QDialog *>(widget) == nullptr);
    }
}

} // namespace outpost

OUTPOST_WINDOW_TEST_MAIN(outpost::MainWindowTest)
#include "mainwindow_test.moc"
