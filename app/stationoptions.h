#pragma once

#include "app/startoptions.h"
#include "base/datapaths.h"
#include "base/settings.h"
#include "decode/jt9runner.h"
#include "kiwi/linktimeouts.h"

#include <QCoreApplication>
#include <QDateTime>
#include <QStandardPaths>
#include <functional>

namespace outpost
{

// The environment of a station: its clock, folders, settings and limits. Tests replace them.
// Requires the application object and its names.
struct StationOptions {
    // UTC, ms since the epoch. Used for every decision that depends on the time.
    std::function<qint64()> clock = QDateTime::currentMSecsSinceEpoch;
    StartOptions start{};
    QString dataFolder = outpost::dataFolder();
    QString captureFolder =
        outpost::captureFolder(QCoreApplication::applicationDirPath(),
                               QStandardPaths::writableLocation(QStandardPaths::CacheLocation));
    SettingsStore settings{};
    LinkTimeouts linkTimeouts{};
    Jt9Limits decoderLimits{};
};

} // namespace outpost
