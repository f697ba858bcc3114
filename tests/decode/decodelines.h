#pragma once

#include "decode/ft8decode.h"

namespace outpost
{

inline QStringList linesOf(const QVector<Ft8Decode> &decodes)
{
    QStringList lines;
    for (const Ft8Decode &decode : decodes) {
        lines.append(decode.line);
    }
    return lines;
}

} // namespace outpost
