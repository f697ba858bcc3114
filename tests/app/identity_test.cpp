// The program's names, as the desktop and its data folder use them.

#include "app/identity.h"
#include "tests/fixture/home.h"

#include <QApplication>
#include <QIcon>
#include <QTest>
#include <algorithm>

namespace outpost
{

class IdentityTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        QCoreApplication::setOrganizationName(QString());
        QCoreApplication::setApplicationName(QString());
        setIdentity();
    }

    void names()
    {
        QCOMPARE(QCoreApplication::organizationName(), QStringLiteral("PELQ"));
        QCOMPARE(QCoreApplication::applicationName(), QStringLiteral("KiwiOutpost"));
    }

    void theDesktopFileIsTheInstalledOne()
    {
        const QString name = QGuiApplication::desktopFileName();
        const QByteArray entry = fileBytes(QStringLiteral(DESKTOP_FILES "/%1.desktop").arg(name));
        QVERIFY(entry.startsWith("[Desktop Entry]\n"));
        QVERIFY(entry.contains("\nStartupWMClass=KiwiOutpost\n"));
    }

    void everyWindowHasTheIconInItsSizes()
    {
        QList<QSize> sizes = QWidget().windowIcon().availableSizes();
        std::sort(sizes.begin(), sizes.end(),
                  [](QSize left, QSize right) { return left.width() < right.width(); });
        QCOMPARE(sizes,
                 QList<QSize>(
                     {{16, 16}, {24, 24}, {32, 32}, {48, 48}, {64, 64}, {128, 128}, {256, 256}}));
    }

    void theIconIsTheInstalledOne()
    {
        const QImage shown = QApplication::windowIcon().pixmap(48, 48).toImage();
        const QImage installed(QStringLiteral(DESKTOP_FILES "/icons/kiwi-outpost-48.png"));
        const QImage::Format format = QImage::Format_ARGB32_Premultiplied;
        QCOMPARE(shown.convertToFormat(format), installed.convertToFormat(format));
    }
};

} // namespace outpost

OUTPOST_WINDOW_TEST_MAIN(outpost::IdentityTest)
#include "identity_test.moc"
