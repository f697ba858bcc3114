#pragma once

#include <QStringList>

namespace outpost
{

inline QString jt9Line(const QString &message, int audioHz = 1234, const QString &snr = {})
{
    return QStringLiteral("101530 %1 0.3 %2 ~ %3")
        .arg(snr.isEmpty() ? QStringLiteral("-12") : snr, QString::number(audioHz), message);
}

// This number of decodes, all different.
inline QStringList jt9Lines(int count)
{
    QStringList lines;
    for (int i = 0; i < count; ++i) {
        lines.append(jt9Line(QStringLiteral("CQ K%1ABC FN42").arg(i % 10), 300 + i));
    }
    return lines;
}

} // namespace outpost
