#pragma once

#include <QDateTime>
#include <QLocale>
#include <QString>

namespace outpost
{

// In the capture folder, by the local time at which the capture began.
inline QString evidenceName(qint64 startMs)
{
    return QStringLiteral("/PELQ_KIWI_STAGE17C_LIVE_SND_EVIDENCE_%1.txt")
        .arg(QLocale::c().toString(QDateTime::fromMSecsSinceEpoch(startMs),
                                   QStringLiteral("yyyyMMdd_HHmmss")));
}

} // namespace outpost
