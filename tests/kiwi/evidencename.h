#pragma once

#include <QDateTime>
#include <QLocale>
#include <QString>

namespace outpost
{

// The path of a report below the capture folder, named after the local start time.
inline QString evidenceName(qint64 startMs)
{
    return QStringLiteral("/PELQ_KIWI_STAGE17C_LIVE_SND_EVIDENCE_%1.txt")
        .arg(QLocale::c().toString(QDateTime::fromMSecsSinceEpoch(startMs),
                                   QStringLiteral("yyyyMMdd_HHmmss")));
}

} // namespace outpost
