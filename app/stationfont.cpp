#include "app/stationfont.h"

#include <QApplication>
#include <QFont>
#include <QFontDatabase>

namespace outpost
{

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

} // namespace outpost
