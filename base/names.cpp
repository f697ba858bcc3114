#include "base/names.h"

#include <QCoreApplication>

namespace outpost
{

void setNames()
{
    QCoreApplication::setOrganizationName(QStringLiteral("PELQ"));
    QCoreApplication::setApplicationName(QStringLiteral("KiwiOutpost"));
}

} // namespace outpost
