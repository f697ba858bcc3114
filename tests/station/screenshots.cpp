// Takes the pictures for the user guide: operates the real windows while the real decoder decodes
// the simulated receiver's band.
// Usage: kiwi-outpost-screenshots FOLDER [--dark]; QT_SCALE_FACTOR scales the pictures.

#include "app/mainwindow.h"
#include "app/startup.h"
#include "base/settings.h"
#include "display/highlightcalls.h"
#include "fixture/home.h"
#include "fixture/operator.h"
#include "sim/kiwisim.h"

#include <QAbstractButton>
#include <QApplication>
#include <QDialog>
#include <QDialogButtonBox>
#include <QDir>
#include <QJsonObject>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QPalette>
#include <QStandardPaths>
#include <QStyleFactory>
#include <QTableWidget>
#include <QTcpSocket>
#include <QTest>

namespace outpost
{

namespace
{
QString folder;
constexpr int periodsToShow = 3;
constexpr int longestWaitMs = 120000;

void save(QWidget *widget, const QString &name)
{
    QApplication::processEvents();
    const QString path = QDir(folder).filePath(name + QStringLiteral(".png"));
    if (!widget->grab().save(path)) {
        qFatal("cannot write %s", qPrintable(path));
    }
}

void useDarkPalette()
{
    QPalette palette;
    const QColor base(0x23, 0x26, 0x29);
    const QColor window(0x31, 0x36, 0x3b);
    const QColor text(0xef, 0xf0, 0xf1);
    for (const auto role : {QPalette::Window, QPalette::Button, QPalette::AlternateBase}) {
        palette.setColor(role, window);
    }
    palette.setColor(QPalette::Base, base);
    for (const auto role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText}) {
        palette.setColor(role, text);
    }
    for (const auto role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText}) {
        palette.setColor(QPalette::Disabled, role, QColor(0x7f, 0x83, 0x87));
    }
    palette.setColor(QPalette::Highlight, QColor(0x3d, 0xae, 0xe9));
    QApplication::setPalette(palette);
}

void press(QWidget *dialog, const QString &text)
{
    for (QAbstractButton *button : dialog->findChildren<QAbstractButton *>()) {
        if (button->text().remove(QLatin1Char('&')) == text) {
            return button->click();
        }
    }
    qFatal("no button %s", qPrintable(text));
}

// Connects to the profile's receiver; if `name` is given, saves a picture of the live link.
void connectReceiver(const MainWindow &window, const QString &name)
{
    whenDialogOpens([&](QWidget *dialog) {
        press(dialog, QStringLiteral("Apply and Connect"));
        const auto connected = [dialog] {
            const auto labels = dialog->findChildren<QLabel *>();
            return std::any_of(labels.begin(), labels.end(), [](const QLabel *label) {
                return label->text().startsWith(QStringLiteral("Connected —")) &&
                       !label->text().contains(QStringLiteral("SND: 1 "));
            });
        };
        if (!QTest::qWaitFor(connected, longestWaitMs)) {
            qFatal("not connected");
        }
        if (!name.isEmpty()) {
            save(dialog, name);
        }
        press(dialog, QStringLiteral("Close"));
    });
    choose(window, {QStringLiteral("Settings"), QStringLiteral("Kiwi Receiver...")});
}

void showModal(const MainWindow &window, const QStringList &entry, const QString &name)
{
    whenDialogOpens([&](QWidget *dialog) {
        save(dialog, name);
        QTest::keyClick(dialog, Qt::Key_Escape);
    });
    choose(window, entry);
}

void showModeless(const MainWindow &window, const QString &entry, const QString &title,
                  const QString &name)
{
    choose(window, {QStringLiteral("Settings"), QStringLiteral("View"), entry});
    save(openDialog(title), name);
}

void showMenu(const MainWindow &window, const QStringList &path, const QString &name)
{
    QMenu *menu = menuEntry(window, path)->menu();
    menu->popup(QPoint(0, 0));
    save(menu, name);
    menu->close();
}

// Waits until the table has rows of this number of periods.
void waitForPeriods(const QTableWidget &table, int periods)
{
    const auto enough = [&] {
        QStringList labels;
        for (int row = 0; row < table.rowCount(); ++row) {
            labels.append(table.item(row, 0)->text());
        }
        labels.removeDuplicates();
        return labels.size() >= periods;
    };
    if (!QTest::qWaitFor(enough, longestWaitMs)) {
        qFatal("no decodes");
    }
}
} // namespace

} // namespace outpost

using namespace outpost;

int main(int argc, char **argv)
{
    const QString cache = QStandardPaths::writableLocation(QStandardPaths::GenericCacheLocation);
    testHome();
    const auto application = startApplication(argc, argv);
    QApplication::setQuitOnLastWindowClosed(false);
    QApplication::setStyle(QStyleFactory::create(QStringLiteral("Fusion")));
    const QStringList arguments = QCoreApplication::arguments();
    if (arguments.size() < 2) {
        qFatal("usage: kiwi-outpost-screenshots FOLDER [--dark]");
    }
    folder = arguments.at(1);
    QDir().mkpath(folder);
    if (arguments.contains(QStringLiteral("--dark"))) {
        useDarkPalette();
    }

    SimConfig config;
    config.syntheticBand = true;
    config.cacheFolder = cache + QStringLiteral("/kiwi-sim");
    KiwiSim receiver;
    QString error;
    if (!receiver.listen(config, &error)) {
        qFatal("%s", qPrintable(error));
    }
    const int bridgePort = freePort();
    testHome().writeProfile({{QStringLiteral("Host"), config.host},
                             {QStringLiteral("Port"), receiver.port()},
                             {QStringLiteral("BridgePort"), bridgePort}});
    stationSettings().setValue(QStringLiteral("highlight/calls"),
                               QStringList{QStringLiteral("K1ABC"), QStringLiteral("LU8XGZ")});

    MainWindow window;
    window.show();
    QTcpSocket client;
    client.connectToHost(config.host, static_cast<quint16>(bridgePort));

    const QStringList settings = {QStringLiteral("Settings")};
    connectReceiver(window, QStringLiteral("kiwi-receiver"));
    waitForPeriods(*decodeTableOf(window), periodsToShow);
    window.resize(window.width(), 420);
    QApplication::processEvents();
    save(&window, QStringLiteral("main-window"));
    showModeless(window, QStringLiteral("Station Display"),
                 QStringLiteral("PELQ Kiwi Outpost Station Display"),
                 QStringLiteral("station-display"));
    showModeless(window, QStringLiteral("Bridge Status"),
                 QStringLiteral("PELQ Kiwi Outpost Bridge Status"),
                 QStringLiteral("bridge-status"));
    showModal(window,
              settings +
                  QStringList{QStringLiteral("Bridge"), QStringLiteral("Test WSJT Attachment")},
              QStringLiteral("bridge-attachment"));
    choose(window, settings + QStringList{QStringLiteral("Disconnect Receiver")});
    connectReceiver(window, QString());
    showModeless(window, QStringLiteral("Status Log"),
                 QStringLiteral("PELQ Kiwi Outpost Status Log"), QStringLiteral("status-log"));
    showModal(window, settings + QStringList{QStringLiteral("Highlight Calls...")},
              QStringLiteral("highlight-calls"));
    showModal(window, {QStringLiteral("Help"), QStringLiteral("Help / About PELQ Kiwi Outpost")},
              QStringLiteral("help"));
    showMenu(window, {QStringLiteral("File")}, QStringLiteral("menu-file"));
    showMenu(window, settings, QStringLiteral("menu-settings"));
    showMenu(window, settings + QStringList{QStringLiteral("Decoder")},
             QStringLiteral("menu-decoder"));
    return 0;
}
