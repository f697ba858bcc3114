#include "app/mainwindow.h"
#include "app/stationfont.h"
#include "app/termination.h"

#include <QApplication>

int main(int argc, char *argv[])
{
    ignoreBrokenPipes();
    QCoreApplication::setAttribute(Qt::AA_EnableHighDpiScaling);
    QCoreApplication::setAttribute(Qt::AA_UseHighDpiPixmaps);
    QApplication application(argc, argv);
    setStationFont();
    QCoreApplication::setOrganizationName(QStringLiteral("PELQ"));
    QCoreApplication::setApplicationName(QStringLiteral("KiwiOutpost"));

    quitOnTermination();
    MainWindow window;
    window.show();
    return QApplication::exec();
}
