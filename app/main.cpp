#include "app/identity.h"
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
    setIdentity();
    quitOnTermination();
    MainWindow window;
    window.show();
    return QApplication::exec();
}
