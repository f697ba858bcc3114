#include "app/identity.h"

#include "base/names.h"

#include <QApplication>
#include <QIcon>

// The linker drops the resources of a static library unless the program refers to them. The macro
// works only in the global namespace.
static void takeIconsAlong()
{
    Q_INIT_RESOURCE(icons);
}

namespace outpost
{

namespace
{

QIcon programIcon()
{
    takeIconsAlong();
    QIcon icon;
    for (const int side : {16, 24, 32, 48, 64, 128, 256}) {
        icon.addFile(QStringLiteral(":/icons/kiwi-outpost-%1.png").arg(side));
    }
    return icon;
}
} // namespace

void setIdentity()
{
    setNames();
    QGuiApplication::setDesktopFileName(QStringLiteral("kiwi-outpost"));
    QApplication::setWindowIcon(programIcon());
}

} // namespace outpost
