#include "app/startup.h"

#include "app/identity.h"
#include "app/stationfont.h"

#include <QApplication>

namespace outpost
{

std::unique_ptr<QApplication> startApplication(int &argc, char **argv)
{
    QCoreApplication::setAttribute(Qt::AA_EnableHighDpiScaling);
    QCoreApplication::setAttribute(Qt::AA_UseHighDpiPixmaps);
    auto application = std::make_unique<QApplication>(argc, argv);
    setStationFont();
    setIdentity();
    return application;
}

} // namespace outpost
