#pragma once

#include <QSettings>

// The platform's settings store of this program, always by its explicit names: the application
// name that start-up sets ("KiwiOutpost") is the one of the data files, not of the settings.
inline QSettings stationSettings()
{
    return QSettings(QStringLiteral("PELQ"), QStringLiteral("PELQ Kiwi Outpost"));
}
