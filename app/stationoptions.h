#pragma once

#include "app/startoptions.h"
#include "base/datapaths.h"
#include "base/settings.h"
#include "decode/jt9runner.h"

#include <QCoreApplication>
#include <QDateTime>
#include <QStandardPaths>
#include <functional>

namespace outpost
{

// What a station is made of besides its parts: the real things unless a test says otherwise.
// Needs the application object and its names.
struct StationOptions {
    // UTC, milliseconds since the epoch. Every decision that depends on the time of day asks it.
    std::function<qint64()> clock = QDateTime::currentMSecsSinceEpoch;
    StartOptions start{};
    QString dataFolder = outpost::dataFolder();
    QString captureFolder =
        outpost::captureFolder(QCoreApplication::applicationDirPath(),
                               QStandardPaths::writableLocation(QStandardPaths::CacheLocation));
    SettingsStore settings{};
    Jt9Limits decoderLimits{};
};

} // namespace outpost
