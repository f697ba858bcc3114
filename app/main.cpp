#include "app/mainwindow.h"

#include <QApplication>
#include <QFont>
#include <QFontDatabase>

namespace
{
// The platform's own interface face where it is installed, else the system's general family.
void setStationFont()
{
    const QStringList preferred = {QStringLiteral("Segoe UI Variable Small"),
                                   QStringLiteral("Segoe UI Variable"), QStringLiteral("Segoe UI")};
    QFont font = QFontDatabase::systemFont(QFontDatabase::GeneralFont);
    const QStringList families = QFontDatabase().families();
    for (const QString &family : preferred) {
        if (families.contains(family, Qt::CaseInsensitive)) {
            font.setFamily(family);
            break;
        }
    }
    font.setPixelSize(12);
    font.setWeight(QFont::Normal);
    font.setStyle(QFont::StyleNormal);
    QApplication::setFont(font);
}
} // namespace

int main(int argc, char *argv[])
{
    QCoreApplication::setAttribute(Qt::AA_EnableHighDpiScaling);
    QCoreApplication::setAttribute(Qt::AA_UseHighDpiPixmaps);
    QApplication application(argc, argv);
    setStationFont();
    QCoreApplication::setOrganizationName(QStringLiteral("PELQ"));
    QCoreApplication::setApplicationName(QStringLiteral("KiwiOutpost"));

    MainWindow window;
    window.show();
    return QApplication::exec();
}
